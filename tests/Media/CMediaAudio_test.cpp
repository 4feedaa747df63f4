#include "Media/CMediaAudio.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "Media/CMediaFrames.h"
#include "Media/MediaFiles.h"

namespace {

using Samples = std::vector<std::int16_t>;

std::string Extension(const MediaFile& file) {
    const std::string name = file.nameZ;
    return name.substr(name.rfind('.') + 1);
}

Samples ReadAll(CMediaAudio& audio, std::mt19937* randomP = nullptr) {
    Samples all, block(5000);
    for (;;) {
        const std::size_t askL = randomP != nullptr ? (*randomP)() % 2500 * 2 + 2 : block.size();
        std::size_t gotL = 0;
        const OSErr err = audio.Read(std::span(block).first(askL), gotL);
        all.insert(all.end(), block.begin(), block.begin() + static_cast<std::ptrdiff_t>(gotL));
        if (Failed(err)) {
            EXPECT_EQ(gotL, 0U);
            EXPECT_EQ(err, eofErr);
            return all;
        }
    }
}

int Difference(std::span<const std::int16_t> a, std::span<const std::int16_t> b) {
    int most = 0;
    for (std::size_t n = 0; n < std::min(a.size(), b.size()); ++n) most = std::max(most, std::abs(a[n] - b[n]));
    return most;
}

class CMediaAudioFiles : public testing::TestWithParam<MediaFile> {
protected:
    void SetUp() override { MediaFiles::Get(); }
};

TEST_P(CMediaAudioFiles, GivesTheSamplesThatTheFfmpegProgramGives) {
    const MediaFile& file = GetParam();
    MemorySource source(MediaFiles::Bytes(file));
    CMediaAudio audio;
    ASSERT_EQ(audio.Open(source, Extension(file)), noErr);
    EXPECT_EQ(audio.Facts().rate, file.rate);
    EXPECT_EQ(audio.Facts().channels, file.channels);
    EXPECT_NEAR(static_cast<double>(audio.TotalFrames()), 2.3 * 44100, 0.15 * 44100);
    std::mt19937 random(7);
    const Samples got = ReadAll(audio, &random), wanted = MediaFiles::Witness(file);
    ASSERT_GT(wanted.size(), 2U * 44100);
    EXPECT_EQ(got.size(), wanted.size());
    EXPECT_LE(Difference(got, wanted), file.within);
    EXPECT_TRUE(audio.IsTotalExact());
    EXPECT_EQ(audio.TotalFrames(), got.size() / 2);
    EXPECT_EQ(audio.DamagedPackets(), 0U);
}

/** Where `part` lies in `all` near `frame`: the shift at which they differ least. */
int ShiftOf(std::span<const std::int16_t> part, std::span<const std::int16_t> all, std::size_t frame) {
    double least = 1e300;
    int best = 1 << 20;
    for (int shift = -40; shift <= 40; ++shift) {
        const std::int64_t from = (static_cast<std::int64_t>(frame) + shift) * 2;
        if (from < 0 || static_cast<std::size_t>(from) + part.size() > all.size()) continue;
        double sum = 0;
        for (std::size_t n = 0; n < part.size(); ++n)
            sum += std::pow(double{1} * part[n] - all[static_cast<std::size_t>(from) + n], 2);
        if (sum < least) least = sum, best = shift;
    }
    return best;
}

TEST_P(CMediaAudioFiles, IsAfterASeekWhereAStraightReadingIs) {
    const MediaFile& file = GetParam();
    MemorySource source(MediaFiles::Bytes(file)), again(source.i_bytes);
    CMediaAudio straight;
    ASSERT_EQ(straight.Open(again, Extension(file)), noErr);
    const Samples all = ReadAll(straight);
    std::mt19937 random(11);
    for (int round = 0; round < 3; ++round) {   // each begins with a seek into what was never read
        CMediaAudio audio;
        ASSERT_EQ(audio.Open(source, Extension(file)), noErr);
        for (int seek = 0; seek < 10; ++seek) {
            // The very first one goes behind the end: what is learned of it is true all the same.
            const std::size_t frame =
                all.size() / 2 + 200 - (round + seek == 0 ? 50 : random() % (all.size() / 2 + 200));
            SCOPED_TRACE(testing::Message() << "round " << round << ", seek " << seek << " to " << frame);
            ASSERT_EQ(audio.Seek(frame), noErr);
            Samples part(random() % 3000 * 2 + 400);
            std::size_t gotL = 0;
            const OSErr err = audio.Read(part, gotL);
            part.resize(gotL);
            if (frame * 2 >= all.size()) {
                ASSERT_EQ(err, eofErr);
                ASSERT_EQ(gotL, 0U);
                ASSERT_EQ(audio.TotalFrames(), all.size() / 2);
                continue;
            }
            ASSERT_EQ(err, noErr);
            ASSERT_EQ(audio.Position(), frame + gotL / 2);
            const auto wanted = std::span<const std::int16_t>(all).subspan(frame * 2);
            ASSERT_EQ(gotL, std::min(part.capacity(), wanted.size()));
            if (!file.noisyB) {
                ASSERT_EQ(Difference(part, wanted), 0);
            } else if (frame > 50 && gotL > 500 && frame * 2 + gotL + 100 < all.size()) {
                ASSERT_EQ(ShiftOf(part, all, frame), 0);
            }
        }
    }
}

TEST_P(CMediaAudioFiles, CutDamagedAndMisnamedFilesEndWithAStatus) {
    const MediaFile& file = GetParam();
    const std::string whole = MediaFiles::Bytes(file);
    std::mt19937 random(3);
    for (int round = 0; round < 12; ++round) {
        SCOPED_TRACE(testing::Message() << "round " << round);
        std::string bytes = whole;
        if (round % 2 == 0) bytes.resize(random() % bytes.size());
        if (round > 3)
            for (int n = 0; n < 40; ++n)
                if (!bytes.empty()) bytes[random() % bytes.size()] = static_cast<char>(random());
        if (round > 9) bytes.erase(0, bytes.size() / 3);
        MemorySource source(bytes);
        CMediaAudio audio;
        const OSErr opened = audio.Open(source, round % 3 == 0 ? "txt" : Extension(file));
        if (Failed(opened)) continue;
        std::size_t totalL = 0;
        for (int blocks = 0; blocks < 100; ++blocks) {
            Samples block(8192);
            std::size_t gotL = 0;
            if (Failed(audio.Read(block, gotL))) break;
            totalL += gotL;
        }
        const OSErr sought = audio.Seek(totalL / 4);
        EXPECT_TRUE(!Failed(sought) || sought == paramErr) << Number(sought);
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, CMediaAudioFiles, testing::ValuesIn(kMedia_Files), [](const auto& tested) {
    std::string name = tested.param.nameZ;
    std::ranges::replace(name, '.', '_');
    return name;
});

TEST(CMediaAudio, PlaysAMRWhichItsEncoderIsMissingFor) {
    std::mt19937 random(5);
    std::string bytes = "#!AMR\n";
    for (int frame = 0; frame < 60; ++frame) {   // 12.2 kbit/s; any bits are a sound
        bytes += '\x3C';
        for (int n = 0; n < 31; ++n) bytes += static_cast<char>(random());
    }
    MediaFiles::Get();
    const auto path = MediaFiles::Folder() / ("voice" + std::to_string(::getpid()) + ".amr");
    std::ofstream(path, std::ios::binary) << bytes;
    MediaFiles::Run("ffmpeg -nostdin -v error -y -i " + path.string() +
                    " -af 'pan=stereo|c0=c0|c1=c0' -f s16le -ar 44100 " + path.string() + ".out");
    const Samples wanted = MediaFiles::Samples(MediaFiles::Bytes(path.string() + ".out"));
    std::filesystem::remove(path);
    std::filesystem::remove(path.string() + ".out");
    MemorySource source(bytes);
    CMediaAudio audio;
    ASSERT_EQ(audio.Open(source, "amr"), noErr);
    const Samples all = ReadAll(audio);
    EXPECT_EQ(all.size(), wanted.size());
    EXPECT_LE(Difference(all, wanted), 1);
}

TEST(CMediaAudio, GoesOnWhenTheStreamChangesItsForm) {
    MediaFiles::Get();
    const std::string first = MediaFiles::Bytes(MediaFiles::Folder() / "plain.mp3");
    MemorySource source(first + MediaFiles::Bytes(MediaFiles::Folder() / "low.mp3") + first);
    CMediaAudio audio;
    ASSERT_EQ(audio.Open(source, "mp3"), noErr);
    const Samples all = ReadAll(audio);
    EXPECT_NEAR(static_cast<double>(all.size()) / 2, 3 * 2.3 * 44100, 3 * 4000.0);
    for (const std::size_t frame : {200000U, 50000U, 260000U, 0U}) {   // over the joints, both ways
        ASSERT_EQ(audio.Seek(frame), noErr);
        Samples part(4000);
        std::size_t gotL = 0;
        ASSERT_EQ(audio.Read(part, gotL), noErr);
        ASSERT_EQ(gotL, part.size());
        EXPECT_EQ(Difference(part, std::span(all).subspan(frame * 2)), 0)
            << frame << " shift " << ShiftOf(part, all, frame) << " damaged " << audio.DamagedPackets();
    }
}

TEST(CMediaAudio, ReadsBackOverAChangeOfTheChannels) {
    MediaFiles::Get();
    const std::pair<const char*, const char*> kPairs[] = {{"plain.mp3", "mono.mp3"}, {"adts.aac", "mono.aac"}};
    for (const auto& [wideZ, narrowZ] : kPairs) {   // one rate: the table stays
        const std::string wide = MediaFiles::Bytes(MediaFiles::Folder() / wideZ);
        MemorySource source(wide + MediaFiles::Bytes(MediaFiles::Folder() / narrowZ) + wide);
        CMediaAudio straight;
        ASSERT_EQ(straight.Open(source, ""), noErr);
        const Samples all = ReadAll(straight);
        EXPECT_NEAR(static_cast<double>(all.size()) / 2, 3 * 2.3 * 44100, 3 * 4000.0);
        const std::size_t readL = source.i_readL;
        std::mt19937 random(1);
        for (int seek = 0; seek < 40; ++seek) {
            std::size_t frame = random() % (all.size() / 2 - 2500);
            if (seek % 2 == 0) frame = all.size() / 6 * (1 + random() % 2) - random() % 4000;   // at a joint
            ASSERT_EQ(straight.Seek(frame), noErr);
            Samples part(5000);
            std::size_t gotL = 0;
            ASSERT_EQ(straight.Read(part, gotL), noErr);
            ASSERT_EQ(gotL, part.size());
            // Back in stereo, the AAC decoder still has what it held of the first part: it is no use to go so far back.
            const std::size_t joint = all.size() / 3;
            if (wideZ[0] == 'a' && frame + 2500 > joint && frame < joint + 4096) continue;
            ASSERT_EQ(Difference(part, std::span(all).subspan(frame * 2)), 0) << wideZ << ' ' << frame;
        }
        EXPECT_LT(source.i_readL - readL, 40 * source.i_bytes.size() / 2) << "read from the start each time";
    }
}

TEST(CMediaAudio, ASeekBehindTheEndFindsTheEndOfAStraightReading) {
    MediaFiles::Get();
    const std::string whole = MediaFiles::Bytes(MediaFiles::Folder() / "s48.wav");
    for (const std::size_t cut : {0U, 8U, 40U, 100U, 150U, 159U}) {   // 160 frames become 147
        MemorySource source(whole.substr(0, whole.size() - cut * 4)), again(source.i_bytes);
        CMediaAudio straight, audio;
        ASSERT_EQ(straight.Open(source, "wav"), noErr);
        const Samples all = ReadAll(straight);
        ASSERT_EQ(audio.Open(again, "wav"), noErr);
        ASSERT_EQ(audio.Seek(all.size() / 2 + 5000), noErr);
        EXPECT_TRUE(ReadAll(audio).empty());
        EXPECT_EQ(audio.TotalFrames(), all.size() / 2) << cut;
    }
}

TEST(CMediaAudio, KeepsTheTimeWherePacketsAreDamaged) {
    MediaFiles::Get();
    std::string bytes = MediaFiles::Bytes(MediaFiles::Folder() / "song.m4a");
    MemorySource good(bytes);
    CMediaAudio clean;
    ASSERT_EQ(clean.Open(good, "m4a"), noErr);
    const Samples wanted = ReadAll(clean);
    const std::size_t dataL = bytes.find("mdat") + 4;
    for (std::size_t n = dataL + 9000; n < dataL + 12000; ++n) bytes[n] = static_cast<char>(0xFF);
    MemorySource source(bytes);
    CMediaAudio audio;
    ASSERT_EQ(audio.Open(source, "m4a"), noErr);
    const Samples all = ReadAll(audio);
    EXPECT_GT(audio.DamagedPackets(), 0U);
    ASSERT_EQ(all.size(), wanted.size());
    const std::size_t tailL = 2 * 44100;
    EXPECT_EQ(Difference(std::span(all).last(tailL), std::span(wanted).last(tailL)), 0);
}

/** Where the frames of an ADTS stream begin, and where the last one ends. */
std::vector<std::size_t> FramesOfADTS(const std::string& bytes) {
    std::vector<std::size_t> starts{0};
    while (starts.back() + 7 < bytes.size()) {
        const auto at = [&](std::size_t n) {
            return std::uint32_t{static_cast<unsigned char>(bytes[starts.back() + n])};
        };
        starts.push_back(starts.back() + ((at(3) & 3U) << 11U | at(4) << 3U | at(5) >> 5U));
    }
    return starts;
}

/** A frame that goes into the stream `good`: a pair of channels, cut after its head. */
std::string DamagedADTS(const std::string& good) {
    std::string bad = good.substr(0, 7) + std::string("\x20\xFF", 2);
    bad[3] = static_cast<char>(bad[3] & 0xFC);
    bad[4] = static_cast<char>(bad.size() >> 3U);
    bad[5] = static_cast<char>((bad.size() & 7U) << 5U | (static_cast<unsigned char>(bad[5]) & 0x1FU));
    return bad;
}

TEST(CMediaAudio, DamagedPacketsKeepTheirTimeHoweverTheyAreReached) {
    MediaFiles::Get();
    std::string bytes = MediaFiles::Bytes(MediaFiles::Folder() / "adts.aac");
    const std::string bad = DamagedADTS(bytes);
    bytes.insert(FramesOfADTS(bytes).at(90), bad);   // and one in the middle, which is silence
    for (int n = 0; n < 3; ++n) bytes += bad;
    MemorySource source(bytes), again(bytes);
    CMediaAudio straight, audio;
    ASSERT_EQ(straight.Open(source, "aac"), noErr);
    const Samples all = ReadAll(straight);
    ASSERT_EQ(audio.Open(again, "aac"), noErr);
    for (const std::size_t frame : {all.size() / 2 + 9000, all.size() / 2 - 3000, all.size() / 2 + 9000}) {
        ASSERT_EQ(audio.Seek(frame), noErr);
        EXPECT_EQ(ReadAll(audio).size(), all.size() - std::min(all.size(), frame * 2)) << frame;
        EXPECT_EQ(audio.TotalFrames(), all.size() / 2) << frame;
    }
    for (const std::size_t frame : {90U * 1024 + 500, 90U * 1024}) {   // into the silence
        ASSERT_EQ(audio.Seek(frame), noErr);
        Samples part(6000);
        std::size_t gotL = 0;
        ASSERT_EQ(audio.Read(part, gotL), noErr);
        EXPECT_EQ(Difference(part, std::span(all).subspan(frame * 2)), 0) << frame;
    }
}

TEST(CMediaFrames, SilenceForDamagedPacketsComesInPieces) {
    MediaFiles::Get();
    const std::string good = MediaFiles::Bytes(MediaFiles::Folder() / "adts.aac");
    const std::string bad = DamagedADTS(good);
    constexpr std::size_t kBad = 3000;
    std::string bytes = good;
    for (std::size_t n = 0; n < kBad; ++n) bytes += bad;
    MemorySource source(bytes + good);
    CMediaPackets packets;
    CMediaFrames frames(packets);
    ASSERT_EQ(packets.Open(source, "aac"), noErr);
    ASSERT_EQ(frames.Open(), noErr);
    for (int reading = 0; reading < 2; ++reading) {   // as it is met, and from the table
        std::size_t mostL = 0, silentL = 0;
        OSErr err = noErr;
        for (MediaPiece piece; !Failed(err = frames.Next(piece));) {
            if (piece.frameP != nullptr) continue;
            mostL = std::max(mostL, piece.countL);
            silentL += piece.countL;
        }
        EXPECT_EQ(err, eofErr);
        EXPECT_LE(mostL, 65536U);
        EXPECT_EQ(silentL, kBad * 1024);
        ASSERT_EQ(frames.Restart(), noErr);
    }
}

TEST(CMediaAudio, ASeekThatOutgrowsTheTableFindsItsPlace) {
    std::string bytes(CMediaPackets::kMediaPackets_MostHeld, '\0');   // its packets are held, and they are more
    const auto sampleAt = [](std::size_t n) { return static_cast<std::int16_t>(n * 40503U >> 7U); };
    for (std::size_t n = 0; n < bytes.size() / 2; ++n) {
        const std::int16_t sample = sampleAt(n);
        std::memcpy(bytes.data() + n * 2, &sample, sizeof(sample));
    }
    const std::size_t placeL = bytes.size() / 4 - 3000;
    MemorySource source(std::move(bytes));
    CMediaAudio audio;
    ASSERT_EQ(audio.Open(source, "pcm"), noErr);
    ASSERT_EQ(audio.Seek(placeL), noErr);
    EXPECT_EQ(audio.Position(), placeL);
    Samples part(4000), wanted(4000);
    std::size_t gotL = 0;
    ASSERT_EQ(audio.Read(part, gotL), noErr);
    ASSERT_EQ(gotL, part.size());
    for (std::size_t n = 0; n < wanted.size(); ++n) wanted[n] = sampleAt(placeL * 2 + n);
    EXPECT_EQ(part, wanted);
}

/** Tones and noise, made by ffmpeg. */
std::string LongFlac(const std::string& nameZ, const std::string& form, int seconds = 20) {
    MediaFiles::Get();
    const auto path = MediaFiles::Folder() / (std::to_string(::getpid()) + nameZ);
    MediaFiles::Run(
        "ffmpeg -nostdin -v error -y -f lavfi -i \"aevalsrc='0.4*sin(2*PI*(200*t+90*t*t))+0.1*(random(0)-0.5)|"
        "0.3*sin(2*PI*(3000*t-50*t*t))+0.05*(random(1)-0.5)':s=44100:d=" +
        std::to_string(seconds) + "\" " + form + " " + path.string());
    std::string bytes = MediaFiles::Bytes(path);
    std::filesystem::remove(path);
    return bytes;
}

void ExpectSeeksAsStraight(const std::string& bytes, std::size_t& readOfFirst) {
    MemorySource again(bytes);
    CMediaAudio straight;
    ASSERT_EQ(straight.Open(again, "flac"), noErr);
    const Samples all = ReadAll(straight);
    std::mt19937 random(5);
    readOfFirst = 0;
    for (int round = 0; round < 3; ++round) {
        MemorySource source(bytes);
        CMediaAudio audio;
        ASSERT_EQ(audio.Open(source, "flac"), noErr);
        const std::size_t opened = source.i_readL;
        for (int seek = 0; seek < 12; ++seek) {
            std::size_t frame = random() % (all.size() / 2 + 2000);
            if (seek == 0) frame = all.size() / 2 - (round == 0 ? 7 : 5000 + random() % 200000);
            SCOPED_TRACE(testing::Message() << "round " << round << ", seek " << seek << " to " << frame);
            ASSERT_EQ(audio.Seek(frame), noErr);
            Samples part(random() % 20000 * 2 + 2);
            std::size_t gotL = 0;
            const OSErr err = audio.Read(part, gotL);
            if (seek == 0) readOfFirst = std::max(readOfFirst, source.i_readL - opened);
            if (frame * 2 >= all.size()) {
                ASSERT_EQ(err, eofErr);
                ASSERT_EQ(audio.TotalFrames(), all.size() / 2);
                continue;
            }
            ASSERT_EQ(err, noErr);
            ASSERT_EQ(gotL, std::min(part.size(), all.size() - frame * 2));
            ASSERT_EQ(Difference(std::span(part).first(gotL), std::span(all).subspan(frame * 2)), 0);
        }
    }
}

TEST(CMediaAudio, AFarJumpIntoFlacReadsOnlyWhatLiesThere) {
    for (const char* formZ : {"", "-ar 96000 -sample_fmt s32"}) {
        SCOPED_TRACE(formZ);
        const std::string bytes = LongFlac(".flac", formZ, 50);
        std::size_t readL = 0;
        ExpectSeeksAsStraight(bytes, readL);
        EXPECT_LT(readL, bytes.size() / 2);
    }
}

TEST(CMediaAudio, AFarJumpIntoFlacThatIsNotAsItSaysIsAsAStraightReading) {
    const std::string whole = LongFlac(".flac", ""), other = LongFlac(".flac", "-t 9");
    std::string damaged = whole;
    for (std::size_t n = damaged.size() * 9 / 10; n < damaged.size(); ++n) damaged[n] = '\x55';
    std::string holed = whole;
    for (std::size_t n = holed.size() / 2; n < holed.size() / 2 + 40000; ++n) holed[n] = '\x55';
    std::string unknown = whole;   // its length is not told
    for (std::size_t n = 22; n < 26; ++n) unknown[n] = '\0';
    unknown[21] = static_cast<char>(unknown[21] & 0xF0);
    const std::pair<const char*, std::string> kCases[] = {
        {"joined", whole + other},
        {"joined, the short one first", other + whole},
        {"cut off", whole.substr(0, whole.size() * 4 / 5)},
        {"damaged end", damaged},
        {"a hole", holed},
        {"no length", unknown},
        {"begins late", whole.substr(0, 8288) + whole.substr(whole.size() / 4)}};
    for (const auto& [nameZ, bytes] : kCases) {
        SCOPED_TRACE(nameZ);
        std::size_t readL = 0;
        ExpectSeeksAsStraight(bytes, readL);
    }
}

TEST(CMediaAudio, ATagAmidAnADTSStreamDoesNotMoveWhatIsSought) {
    MediaFiles::Get();
    std::string bytes = MediaFiles::Bytes(MediaFiles::Folder() / "adts.aac");
    const auto starts = FramesOfADTS(bytes);
    ASSERT_GT(starts.size(), 60U);
    bytes.insert(starts[20], std::string("ID3\x04\0\0\0\0\x02\0", 10) + std::string(256, '\0'));
    MemorySource source(bytes);
    CMediaAudio audio;
    ASSERT_EQ(audio.Open(source, "aac"), noErr);
    const Samples all = ReadAll(audio);
    for (const std::size_t frame : {60000U, 30000U, 22000U}) {
        ASSERT_EQ(audio.Seek(frame), noErr);
        Samples part(4000);
        std::size_t gotL = 0;
        ASSERT_EQ(audio.Read(part, gotL), noErr);
        ASSERT_EQ(gotL, part.size());
        EXPECT_EQ(Difference(part, std::span(all).subspan(frame * 2)), 0) << frame;
    }
}

TEST(CMediaAudio, OpensALongFileByItsHead) {
    MediaFiles::Get();
    for (const char* nameZ : {"plain.mp3", "adts.aac", "movie.mpg"}) {
        const std::string once = MediaFiles::Bytes(MediaFiles::Folder() / nameZ);
        std::string bytes;
        while (bytes.size() < (24U << 20)) bytes += once;
        MemorySource source(bytes);
        CMediaAudio audio;
        ASSERT_EQ(audio.Open(source), noErr) << nameZ;
        EXPECT_LT(source.i_readL, 8U << 20) << nameZ;
    }
}

TEST(CMediaAudio, TellsWhatIsNoSoundAndWhatWasAborted) {
    MediaFiles::Get();
    for (const std::string& bytes : {std::string(), std::string("text, no sound"), std::string(100000, '\0'),
                                     std::string("#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:1,\n/etc/passwd\n")}) {
        MemorySource source(bytes);
        CMediaAudio audio;
        EXPECT_EQ(audio.Open(source, "mp3"), paramErr);
        std::size_t gotL = 1;
        Samples block(100);
        EXPECT_EQ(audio.Read(block, gotL), paramErr);
        EXPECT_EQ(gotL, 0U);
        EXPECT_EQ(audio.Seek(3), paramErr);
    }
    MemorySource source(MediaFiles::Bytes(MediaFiles::Folder() / "cbr.mp3"));
    CMediaAudio audio;
    ASSERT_EQ(audio.Open(source, "mp3"), noErr);
    audio.Abort();
    Samples block(100000);
    std::size_t gotL = 0;
    EXPECT_EQ(audio.Read(block, gotL), abortErr);
    EXPECT_EQ(audio.Seek(50000), abortErr);
}

TEST(CMediaAudio, GivesWhatItHasBeforeItTellsThatTheDiscFailed) {
    MediaFiles::Get();
    class BrokenSource final : public CByteSource {
    public:
        explicit BrokenSource(MemorySource& under) : i_under(under) {}
        OSErr Read(std::span<std::byte> to, std::size_t& got) override {
            got = 0;
            return i_under.Position() > 20000 ? ioErr
                                              : i_under.Read(to.first(std::min<std::size_t>(to.size(), 4000)), got);
        }
        OSErr Seek(std::uint64_t position) override { return i_under.Seek(position); }
        [[nodiscard]] std::uint64_t Position() const override { return i_under.Position(); }
        [[nodiscard]] std::uint64_t Size() const override { return i_under.Size(); }
        MemorySource& i_under;
    };
    for (const char* nameZ : {"plain.mp3", "adts.aac"}) {   // packets found by their place, and held ones
        MemorySource under(MediaFiles::Bytes(MediaFiles::Folder() / nameZ));
        BrokenSource broken(under);
        CMediaAudio other;
        ASSERT_EQ(other.Open(broken, std::string(nameZ).substr(std::string(nameZ).size() - 3)), noErr);
        for (int reading = 0; reading < 2; ++reading) {   // a seek does not make a failure an end
            std::size_t totalL = 0, gotL = 0;
            OSErr err = noErr;
            for (Samples block(4000); !Failed(err = other.Read(block, gotL));) totalL += gotL;
            EXPECT_EQ(err, ioErr) << nameZ << reading;
            EXPECT_GT(totalL, 40000U) << nameZ << reading;
            EXPECT_FALSE(other.IsTotalExact()) << nameZ << reading;
            ASSERT_EQ(other.Seek(0), noErr);
        }
    }
}

}   // namespace
