#include "Media/MediaLength.h"

#include <cmath>
#include <random>

#include "Core/ProgramNumber.h"
#include "Media/MediaFiles.h"

namespace {

constexpr double kNone = -1;
constexpr double kFrame = 0.05;         // a frame of sound, or two; priming that some containers count
constexpr double kWindowsMedia = 0.1;   // tells the time until its last packet was sent
constexpr double kPadding = 0.08;       // of MP3: heard by nobody, but counted by ffprobe
constexpr double kPictures = 0.2;       // the last one's own time may not be told

std::string ExtensionOf(std::string_view name) { return std::string(name.substr(name.rfind('.') + 1)); }

double Seconds(MemorySource& source, std::string_view extension, MediaKind kind = MediaKind::kSound) {
    std::uint32_t length300 = 0;
    return Failed(FindMediaLength(source, extension, kind, length300)) ? kNone : length300 / 300.0;
}
double Seconds(const std::string& bytes, std::string_view extension, MediaKind kind = MediaKind::kSound) {
    MemorySource source(bytes);
    return Seconds(source, extension, kind);
}
std::string Times(const std::string& bytes, int countL) {
    std::string all;
    for (int n = 0; n < countL; ++n) all += bytes;
    return all;
}
std::string Noise(std::mt19937& random, std::size_t bytesL) {
    std::string noise(bytesL, '\0');
    for (char& c : noise) c = static_cast<char>(random());
    return noise;
}

TEST(MediaLength, IsWhatFfprobeTellsAndWhatIsHeard) {
    const MediaFiles& files = MediaFiles::Get();
    for (const MediaFile& file : kMedia_Files) {
        SCOPED_TRACE(file.nameZ);
        const std::string bytes = files.Bytes(file), extension = ExtensionOf(file.nameZ);
        const double seconds = Seconds(bytes, extension);
        const double heard = static_cast<double>(files.Witness(file).size()) / 2 / 44100;
        EXPECT_NEAR(seconds, heard, extension.starts_with("wm") ? kWindowsMedia : kFrame);
        if (std::string_view(file.encodingZ).find("-c:v") != std::string_view::npos) {
            EXPECT_NEAR(Seconds(bytes, extension, MediaKind::kPicture), 2.3, kPictures);
        }
        if (extension == "pcm" || extension == "aac") continue;   // ffprobe guesses those
        const auto told = files.Folder() / "told";
        MediaFiles::Run("ffprobe -v error -show_entries format=duration -of csv=p=0 '" +
                        (files.Folder() / file.nameZ).string() + "' > '" + told.string() + "'");
        EXPECT_NEAR(seconds, ProgramNumber(files.Bytes(told)), extension == "mp3" ? kPadding : kFrame);
    }
}

TEST(MediaLength, OfMPEGAudioIsCountedWhereNobodyTellsIt) {
    const MediaFiles& files = MediaFiles::Get();
    const auto bytes = [&](const char* nameZ) { return files.Bytes(files.Folder() / nameZ); };
    const std::string quick = bytes("plain.mp3"), slow = bytes("mono.mp3"), told = bytes("vbr.mp3");
    const double one = 90 * 1152 / 44100.0, near = 1 / 300.0;   // ffprobe -count_packets: 90 frames each
    const std::string tag = "ID3\x04" + std::string(2, '\0') + std::string("\0\x01\x00\x00", 4) +   // 16 KB
                            std::string(1 << 14, '\xFF');
    const struct {
        const char* nameZ;
        std::string bytes;
        double seconds;
        bool allReadB;
    } kCases[] = {
        {"one bit rate", Times(quick, 40), 40 * one, false},
        {"never padded", Times("\xFF\xFB\x90" + std::string(414, '\0'), 1000), 1000 * 1152 / 44100.0, false},
        {"a tag in front", tag + Times(quick, 40), 40 * one, false},
        {"tags behind",
         Times(quick, 40) + std::string("APETAGEX") + std::string(3000, 'x') + "TAG" + std::string(125, ' '), 40 * one,
         false},
        {"two bit rates", Times(slow, 3) + Times(quick, 30), 33 * one, true},
        {"the other one in the middle", Times(quick, 30) + Times(slow, 40) + Times(quick, 30), 100 * one, true},
        {"the end is missing", Times(quick, 10) + quick.substr(0, quick.size() / 2), 10.5 * one, false},
        {"told, but the end is missing", told.substr(0, told.size() / 2), kNone, true},
        {"told, but another follows", told + Times(quick, 10), 2.3 + 10 * one, true},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.nameZ);
        MemorySource source(c.bytes);
        const double seconds = Seconds(source, "mp3");
        const bool cutB = c.seconds == kNone;
        EXPECT_NEAR(seconds, cutB ? 1.2 : c.seconds, cutB ? 0.4 : c.allReadB ? 0.06 : 0.03 + near);
        EXPECT_EQ(source.i_readL >= c.bytes.size(), c.allReadB) << source.i_readL << " of " << c.bytes.size();
    }
    EXPECT_NEAR(Seconds(Times(quick, 2), "wav"), 2 * one, near);   // names lie
    // A hole of noise costs what it hides, and no more.
    std::mt19937 random(1);
    std::string holed = Times(slow, 5) + Times(quick, 20);
    holed.replace(holed.size() / 2, 20000, Noise(random, 20000));
    EXPECT_NEAR(Seconds(holed, "mp3"), 25 * one - 20000 / 24000.0, 0.1);
}

TEST(MediaLength, OfNoiseIsNoneAndCostsLittle) {
    std::mt19937 random(2);
    const std::string pool = Noise(random, 2 << 20);
    for (const char* extensionZ : {"mp3", "mp2", "wav", "m4a", "mp4",  "ogg", "aac", "ac3", "wma", "mpg", "avi", "flac",
                                   "mov", "mkv", "amr", "dts", "aiff", "flv", "ape", "mpc", "wv",  "x",   ""})
        for (int n = 0; n < 5; ++n) {
            MemorySource source(pool.substr(random() % (pool.size() / 2), pool.size() / 2));
            EXPECT_EQ(Seconds(source, extensionZ), kNone) << extensionZ << ", " << n;
            EXPECT_LT(source.i_readL, 512U << 10) << extensionZ;
            EXPECT_EQ(Seconds(source.i_bytes, extensionZ, MediaKind::kPicture), kNone) << extensionZ << ", " << n;
        }
    for (int n = 0; n < 100; ++n) EXPECT_EQ(Seconds(pool.substr(random() % pool.size(), 1 << 17), "mp3"), kNone) << n;
    for (const char fill : {'\0', '\xFF', 'x'}) EXPECT_EQ(Seconds(std::string(1 << 20, fill), "mp3"), kNone);
    EXPECT_EQ(Seconds(std::string(), "mp3"), kNone);
}

TEST(MediaLength, OfADamagedFileIsNeverMoreThanItHas) {
    const MediaFiles& files = MediaFiles::Get();
    std::mt19937 random(3);
    for (const MediaFile& file : kMedia_Files) {
        const std::string whole = files.Bytes(file), extension = ExtensionOf(file.nameZ);
        for (int n = 0; n < 24; ++n) {
            std::string bytes = whole;
            if (n % 2 == 0) bytes.resize(random() % bytes.size());
            const std::size_t at =
                bytes.empty() ? 0 : random() % std::min<std::size_t>(bytes.size(), n < 12 ? 200 : bytes.size());
            bytes.replace(at, 64, Noise(random, 64));
            MemorySource source(bytes);
            // Some heads hold the length, and nothing beside it: then it is what its bytes could hold.
            EXPECT_LE(Seconds(source, extension), std::max(2.5, static_cast<double>(bytes.size()) / 100))
                << file.nameZ << ", " << n;
            EXPECT_LT(source.i_readL, 8 * whole.size() + (1U << 20)) << file.nameZ << ", " << n;
        }
    }
}

TEST(GraphicsLength, IsThePacketsOfGraphicsAlone) {
    const auto units = [](std::string bytes) {
        MemorySource source(std::move(bytes));
        std::uint32_t length300 = 0;
        return Failed(FindGraphicsLength(source, length300)) ? 0U : length300;
    };
    std::string packet(24, '\x3F');
    packet[0] = static_cast<char>(9 | 0xC0);   // the two bits above are the other channels'
    std::mt19937 random(4);
    EXPECT_EQ(units(Times(packet, 1000) + "short"), 1000U);
    EXPECT_EQ(units(Times(std::string(24, '\0'), 50)), 50U);
    EXPECT_EQ(units(Noise(random, 240000)), 0U);
    EXPECT_EQ(units("short"), 0U);
}

}   // namespace
