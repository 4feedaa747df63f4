#pragma once
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "Core/ProgramNumber.h"

/** One movie that ffmpeg makes of its moving test picture, 96 x 72, 25 pictures a second, 2 s. */
struct MovieFile {
    const char* nameZ;
    const char* encodingZ;
    int within = 0;   // steps of a colour that ours may differ from ffmpeg's own picture
    friend void PrintTo(const MovieFile& file, std::ostream* outP) { *outP << file.nameZ; }
};

inline constexpr MovieFile kMovie_Files[] = {
    {"b.mp4", "-c:v libx264 -bf 2 -g 12 -c:a aac"},
    {"open.mkv", "-c:v libx264 -bf 3 -g 15 -x264-params open-gop=1 -c:a libmp3lame"},
    {"plain.mov", "-c:v mpeg4 -g 10 -c:a pcm_s16le"},
    {"ipod.m4v", "-c:v libx264 -profile:v baseline -g 25 -c:a aac -f ipod"},
    {"xvid.avi", "-c:v mpeg4 -bf 2 -g 12 -vtag XVID -c:a libmp3lame"},
    {"old.divx", "-c:v msmpeg4v2 -g 10 -c:a libmp3lame -f avi"},
    {"mjpeg.avi", "-c:v mjpeg -q:v 3 -c:a pcm_s16le"},
    {"vcd.mpg", "-c:v mpeg1video -bf 2 -g 12 -c:a mp2 -f mpeg"},
    {"dvd.mpeg", "-c:v mpeg2video -bf 2 -g 12 -c:a mp2 -ar 48000 -f vob"},
    {"interlaced.mpg", "-c:v mpeg2video -flags +ilme+ildct -top 1 -g 12 -c:a mp2 -ar 48000 -f vob"},
    {"song.wmv", "-c:v wmv2 -g 10 -c:a wmav2"},
    {"song.webm", "-c:v libvpx -deadline realtime -cpu-used 8 -g 20 -c:a libopus -ar 48000"},
    {"song.flv", "-c:v flv -g 10 -c:a libmp3lame -ar 44100"},
    {"silent.mp4", "-an -c:v libx264 -bf 2 -g 50"},
    {"vfr.mkv", "-vf setpts='(N+N*N/40)/25/TB' -fps_mode vfr -c:v libx264 -bf 2 -g 12 -c:a libmp3lame"},
    {"late.mp4", "-vf setpts=PTS+0.3/TB -fps_mode passthrough -c:v libx264 -g 12 -c:a aac"},
    {"deep.mkv", "-pix_fmt yuv444p10le -c:v ffv1 -c:a pcm_s16le"},
    {"hd.mkv",
     "-vf scale=1280:720,setsar=1,scale=out_color_matrix=bt709 -colorspace bt709 -r 5 -c:v libx264 -preset ultrafast "
     "-c:a "
     "libmp3lame",
     1},
    {"stream.ts", "-c:v mpeg2video -bf 2 -g 12 -c:a mp2"},
};

/** The files of the table, others of one purpose, and what ffmpeg decodes, in a folder of the build; made once. */
class MovieFiles {
public:
    static const MovieFiles& Get() {
        static const MovieFiles s_files;
        return s_files;
    }
    [[nodiscard]] static std::filesystem::path Folder() {
        return std::filesystem::path(VOPLA_BINARY_DIR) / "movie_files";
    }
    [[nodiscard]] static std::filesystem::path Path(const std::string& name) { return Folder() / name; }
    [[nodiscard]] static std::string Bytes(const std::string& name) {
        std::stringstream all;
        all << std::ifstream(Path(name), std::ios::binary).rdbuf();
        return all.str();
    }
    /** Times of the pictures of the stream, as ffprobe tells them, less where the sound (or else the picture) begins;
        NaN where it tells none. */
    [[nodiscard]] static std::vector<double> Times(const std::string& name) {
        std::istringstream in(Bytes(name + ".times"));
        double origin = 0;
        in >> origin;
        std::vector<double> times;
        for (std::string text; in >> text;) times.push_back(text == "N/A" ? NAN : ProgramNumber(text) - origin);
        return times;
    }
    static void Run(const std::string& command) {
        if (std::system(("set -e; " + command).c_str()) != 0)
            throw std::runtime_error("failed: " + command.substr(0, 300));
    }

private:
    MovieFiles() {
        const auto folder = Folder();
        std::filesystem::create_directories(folder);
        const int lock = ::open((folder / "lock").c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0666);
        ::flock(lock, LOCK_EX);
        const std::string key = Recipe();
        if (Bytes("recipe") != key) {
            Run(key);
            std::ofstream(folder / "recipe") << key;
        }
        ::close(lock);
    }

    static std::string Recipe() {
        const std::string tool = "ffmpeg -nostdin -v error -y ";
        std::string make = "cd '" + Folder().string() + "'; " + tool +
                           "-f lavfi -i testsrc2=s=96x72:r=25:d=2 -f lavfi -i sine=f=440:d=2:r=44100 ";
        for (const MovieFile& file : kMovie_Files) make += std::string(file.encodingZ) + " " + file.nameZ + " ";
        for (const MovieFile& file : kMovie_Files) {
            const std::string name = file.nameZ;
            make += "; " + tool + "-i " + name + " -map 0:v -fps_mode passthrough -f rawvideo -pix_fmt bgr0 " + name +
                    ".raw; (ffprobe -v error -select_streams a:0 -show_entries stream=start_time -of csv=p=0 " + name +
                    " | head -1 | grep . || ffprobe -v error -select_streams v:0 -show_entries stream=start_time -of "
                    "csv=p=0 " +
                    name +
                    "; ffprobe -v error -select_streams v:0 -show_entries frame=best_effort_timestamp_time -of "
                    "csv=p=0 " +
                    name + ") | tr -d ',' > " + name + ".times";
        }
        const std::string picture = tool + "-f lavfi -i testsrc2=s=96x72:r=25:d=1 ";
        // Shapes: pixels twice as wide as high, a phone held upright, a size that changes in the middle.
        make += "; " + picture + "-c:v libx264 -aspect 8:3 wide.mp4; " + tool +
                "-i b.mp4 -c copy -metadata:s:v rotate=90 turned.mov; " + picture + "-c:v mpeg2video one.ts; " + tool +
                "-f lavfi -i testsrc2=s=64x64:r=25:d=1 -output_ts_offset 1 -c:v mpeg2video two.ts; cat one.ts two.ts > "
                "grows.ts";
        // Times: one picture under a long sound; sound that begins late; two recordings joined, whose times begin anew
        // or jump by an hour; a last picture without a time.
        const std::string sound = " -f lavfi -i sine=d=4 ", movie = tool + "-f lavfi -i testsrc2=s=96x72:r=25:d=3 ";
        const std::string vob = "-c:v mpeg2video -bf 2 -c:a mp2 -f vob ";
        make += "; " + picture + "-frames:v 1 cover.png; " + tool + "-i cover.png" + sound +
                "-pix_fmt yuv420p -c:v libx264 -c:a libmp3lame held.mkv; " + movie + "-itsoffset 2.5" + sound + vob +
                "latesound.mpg; " + movie + "-itsoffset 2.5" + sound + "-c:v libx264 -c:a libmp3lame latesound.mkv; " +
                movie + sound + "-t 3 " + vob + "part.vob; cat part.vob part.vob > again.mpg; " + movie + sound +
                "-t 3 -c:v mpeg2video -bf 2 -c:a mp2 part.ts; " + tool +
                "-i part.ts -c copy -output_ts_offset 3600 later.ts; cat part.ts later.ts > ahead.ts; " + tool +
                "-f lavfi -i testsrc2=s=96x72:r=25:d=3.4" + sound + vob + "lastkey.mpg";
        // A cover is no movie; neither is sound alone.
        make += "; " + tool +
                "-f lavfi -i sine=d=1 -i cover.png -map 0 -map 1 -c:a libmp3lame -c:v copy -disposition:v attached_pic "
                "cover.mp3; " +
                tool + "-i cover.mp3 -map 0:a -c:a aac bare.m4a";
        // Three hours, a picture a second, a key picture every five minutes; an AVI of it whose index is gone.
        make += "; " + tool + "-f lavfi -i testsrc2=s=32x32:r=1:d=10800 -c:v mpeg4 -g 300 long.mp4; " + tool +
                "-i long.mp4 -c copy long.avi; python3 -c \"d=open('long.avi','rb').read(); "
                "open('noindex.avi','wb').write(d[:d.rindex(b'idx1')])\"";
        return make;
    }
};
