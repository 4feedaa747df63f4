#pragma once
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <span>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "Files/MemorySource.h"

/** One sound file that ffmpeg makes, and how near its own decoding we must be. */
struct MediaFile {
    const char* nameZ;
    const char* encodingZ;
    int channels = 2, rate = 44100;
    int within = 0;        // steps of the least bit
    bool noisyB = false;   // its decoder adds noise of its own: a seek gives the place, not the very samples
    friend void PrintTo(const MediaFile& file, std::ostream* outP) { *outP << file.nameZ; }
};

inline constexpr MediaFile kMedia_Files[] = {
    {"u8.wav", "-c:a pcm_u8"},
    {"s16.wav", "-c:a pcm_s16le"},
    {"s24.wav", "-c:a pcm_s24le"},
    {"s32.wav", "-c:a pcm_s32le"},
    {"float.wav", "-c:a pcm_f32le"},
    {"mono.wav", "-c:a pcm_s16le", 1},
    {"mono22.wav", "-c:a pcm_s16le", 1, 22050, 1},
    {"s48.wav", "-c:a pcm_s16le", 2, 48000, 1},
    {"s96.wav", "-c:a pcm_s24le", 2, 96000, 1},
    {"odd.wav", "-c:a pcm_s16le", 2, 44056, 1},
    {"six.wav", "-c:a pcm_s16le", 6, 48000, 2},   // the other program rounds twice
    {"cbr.mp3", "-c:a libmp3lame -b:a 128k"},
    {"vbr.mp3", "-c:a libmp3lame -q:a 4"},
    {"low.mp3", "-c:a libmp3lame -b:a 8k", 1, 22050, 1},
    {"plain.mp3", "-c:a libmp3lame -b:a 192k -write_xing 0 -id3v2_version 0"},
    {"mono.mp3", "-c:a libmp3lame -b:a 64k -write_xing 0 -id3v2_version 0", 1},
    {"mono.aac", "-c:a aac -aac_pns 0", 1},
    {"movie.mp4", "-c:a aac -aac_pns 0 -c:v mpeg4"},
    {"song.m4a", "-c:a aac -b:a 128k -aac_pns 0"},
    {"pns.m4a", "-c:a aac -b:a 48k", 2, 44100, 0, true},
    {"a48.m4a", "-c:a aac -aac_pns 0", 2, 48000, 1},
    {"adts.aac", "-c:a aac -aac_pns 0"},
    {"alac.m4a", "-c:a alac"},
    {"vorbis.ogg", "-c:a libvorbis"},
    {"mono.opus", "-c:a libopus", 1, 48000, 1, true},
    {"song.opus", "-c:a libopus", 2, 48000, 1, true},
    {"song.flac", "-c:a flac"},
    {"s24.flac", "-c:a flac -sample_fmt s32", 2, 96000, 1},
    {"song.wma", "-c:a wmav2 -b:a 128k", 2, 44100, 0, true},
    {"song.aiff", "-c:a pcm_s16be"},
    {"song.w64", "-c:a pcm_s16le"},
    {"song.ac3", "-c:a ac3", 2, 48000, 1, true},
    {"movie.mkv", "-c:a libvorbis -c:v mpeg4"},
    {"movie.avi", "-c:a libmp3lame -c:v mpeg4"},
    {"movie.mpg", "-c:a mp2 -c:v mpeg1video -f mpeg", 2, 44100, 0, true},
    {"dvd.mpg", "-c:a mp2 -c:v mpeg2video -f vob", 2, 48000, 1, true},
    {"movie.wmv", "-c:a wmav2 -c:v wmv2", 2, 44100, 0, true},
    {"movie.mov", "-c:a pcm_s16be -c:v mpeg4"},
    {"movie.webm", "-c:a libopus -c:v libvpx -deadline realtime -cpu-used 8", 2, 48000, 1, true},
    {"movie.flv", "-c:a libmp3lame -c:v flv"},
    {"song.pcm", "-c:a pcm_s16le -f s16le"},
};

/** The files of the table and what ffmpeg decodes from each, in a folder of the build, made once for all programs. */
class MediaFiles {
public:
    static const MediaFiles& Get() {
        static const MediaFiles s_files;
        return s_files;
    }
    [[nodiscard]] static std::filesystem::path Folder() {
        return std::filesystem::path(VOPLA_BINARY_DIR) / "media_files";
    }
    [[nodiscard]] static std::string Bytes(const std::filesystem::path& file) {
        std::stringstream all;
        all << std::ifstream(file, std::ios::binary).rdbuf();
        return all.str();
    }
    [[nodiscard]] static std::string Bytes(const MediaFile& file) { return Bytes(Folder() / file.nameZ); }
    [[nodiscard]] static std::vector<std::int16_t> Samples(const std::string& bytes) {
        std::vector<std::int16_t> samples(bytes.size() / 2);
        if (!samples.empty()) std::memcpy(samples.data(), bytes.data(), samples.size() * 2);
        return samples;
    }
    /** As ffmpeg decodes it. */
    [[nodiscard]] static std::vector<std::int16_t> Witness(const MediaFile& file) {
        return Samples(Bytes(Folder() / (std::string(file.nameZ) + ".witness")));
    }
    /** What ffmpeg makes of any file now: 44.1 kHz stereo. */
    [[nodiscard]] static std::vector<std::int16_t> Decode(const std::filesystem::path& file) {
        const auto out = file.string() + ".decoded";
        Run("ffmpeg -nostdin -v error -y -i '" + file.string() + "' -vn -f s16le -ac 2 -ar 44100 '" + out + "'");
        return Samples(Bytes(out));
    }
    static void Run(const std::string& command) {
        if (std::system(command.c_str()) != 0) throw std::runtime_error("failed: " + command.substr(0, 200));
    }

private:
    MediaFiles() {
        const auto folder = Folder();
        std::filesystem::create_directories(folder);
        const int lock = ::open((folder / "lock").c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0666);
        ::flock(lock, LOCK_EX);
        const std::string key = Recipe();
        if (Bytes(folder / "recipe") != key) {
            Run(key);
            std::ofstream(folder / "recipe") << key;
        }
        ::close(lock);
    }
    /** Tones that sweep, with noise and silence, differing left and right; and a small picture for the movies. */
    static std::string Recipe() {
        const std::string sound =
            "aevalsrc='0.4*sin(2*PI*(200*t+900*t*t))+0.1*(random(0)-0.5)|"
            "0.3*sin(2*PI*(3000*t-500*t*t))*gt(mod(t\\,0.5)\\,0.2)+0.05*(random(1)-0.5)':s=44100:d=2.3";
        std::string make = "cd '" + Folder().string() + "' && ffmpeg -nostdin -v error -y -f lavfi -i \"" + sound +
                           "\" -f lavfi -i testsrc=s=64x48:r=25:d=2.3";
        std::string in = " && ffmpeg -nostdin -v error -y", out;
        int number = 0;
        for (const MediaFile& file : kMedia_Files) {
            const bool pictureB = std::string(file.encodingZ).find("-c:v") != std::string::npos;
            make += std::string(" -map 0:a") + (pictureB ? " -map 1:v" : "") + " -ac " + std::to_string(file.channels) +
                    " -ar " + std::to_string(file.rate) + " " + file.encodingZ + " " + file.nameZ;
            const bool rawB = std::string(file.nameZ).ends_with(".pcm");
            in += std::string(rawB ? " -f s16le -ac 2 -ar 44100" : "") + " -i " + file.nameZ;
            out +=
                " -map " + std::to_string(number++) + ":a" +
                (file.channels == 1   ? " -af 'pan=stereo|c0=c0|c1=c0'"
                 : file.channels == 6 ? " -af 'pan=stereo|FL=FL+0.707107*FC+0.707107*BL|FR=FR+0.707107*FC+0.707107*BR'"
                                      : "") +
                " -f s16le -ac 2 -ar 44100 " + file.nameZ + ".witness";
        }
        return make + in + out;
    }
};
