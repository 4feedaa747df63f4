#include <cmath>
#include <random>

#include "Files/FileTest.h"
#include "Meta/TempoSteps.h"
#include "Storage/CSongFileReader.h"
#include "Storage/CSongFileWriter.h"
#include "Storage/LibraryWitness.h"

namespace {

/** One song a line, as library_witness.py prints it. */
std::string Show(const SongRecord& song) {
    const auto signedText = [](auto value) { return std::to_string(static_cast<long long>(value)) + " "; };
    std::string line = signedText(song.songID) + signedText(song.duration) + signedText(song.track) +
                       signedText(song.timesSung) + signedText(song.date) + signedText(song.size) +
                       signedText(song.rating) + signedText(song.vocalChannel) + signedText(song.pitch) +
                       signedText(song.tempo) + signedText(song.year) + signedText(song.flags) +
                       signedText(song.graphicChannels) + signedText(song.format) + signedText(song.start) +
                       std::to_string(song.dateAdded);
    for (const std::string_view text : song.texts) {
        line += text.empty() ? " -" : " ";
        for (const char c : text) {
            constexpr std::string_view kDigits = "0123456789abcdef";
            const auto byte = static_cast<unsigned char>(c);
            line += {kDigits[byte >> 4], kDigits[byte & 15U]};
        }
    }
    return line + "\n";
}

class CSongFile : public FileTest {
protected:
    struct Seen {
        OSErr opened = noErr, finished = noErr;
        std::string text;
        std::uint32_t countL = 0;
    };
    static Seen ReadAll(const Path& file) {
        Seen seen;
        CSongFileReader reader;
        seen.opened = reader.Open(CFileRef(file));
        for (SongRecord song; reader.Next(song);) seen.text += Show(song);
        seen.finished = reader.Finish();
        seen.countL = reader.Count();
        return seen;
    }
    Path File() const { return i_root / "Songs.vlb"; }
};

TEST_F(CSongFile, ReadsWhatAnotherProgramWroteInBothOrders) {
    for (const char* orderZ : {"", " little"}) {
        const std::string expected = Witness("make " + File().string() + orderZ);
        const Seen seen = ReadAll(File());
        EXPECT_EQ(seen.opened, noErr);
        EXPECT_EQ(seen.finished, noErr);
        EXPECT_EQ(seen.text, expected);
        EXPECT_EQ(seen.countL, 12U);
    }
    EXPECT_TRUE(Logged("Songs In Library: 12"));
    EXPECT_TRUE(Logged("Biggest record: a long comment"));
}

TEST_F(CSongFile, WritesTheSameBytesAsAnotherProgram) {
    const std::string expected = Witness("make " + File().string());
    const Path ours = i_root / "songs" / "Songs.vlb";
    CSongFileReader reader;
    ASSERT_EQ(reader.Open(CFileRef(File())), noErr);
    CSongFileWriter writer;
    ASSERT_EQ(writer.Start(CFileRef(ours), reader.Header().songsL), noErr);
    for (SongRecord song; reader.Next(song);) EXPECT_EQ(writer.Add(song), noErr);
    ASSERT_EQ(writer.Finish(), noErr);
    EXPECT_TRUE(Read(ours) == Read(File()));   // 80 KB: not for a printed difference
    EXPECT_EQ(Witness("show " + ours.string()), expected);
}

TEST_F(CSongFile, AMisreadOffsetHarmsOnlyItsOwnText) {
    const std::string expected = Witness("misread " + File().string());
    const Seen seen = ReadAll(File());
    EXPECT_EQ(seen.finished, noErr);
    EXPECT_EQ(seen.text, expected);
    EXPECT_TRUE(Logged("### Error reading song 5: the end of its zip path is wrong"));
}

TEST_F(CSongFile, EndsOfTheLastStringsInTheMachinesOrderAreSeen) {
    SongRecord song;
    song.songID = 7;
    song.Text(SongText::kName) = "seven";
    song.Text(SongText::kLaunchPath) = "start.sh";
    std::string bytes;
    ASSERT_EQ(song.Encode(bytes), noErr);
    for (const std::ptrdiff_t at : {88, 92}) std::reverse(bytes.begin() + at, bytes.begin() + at + 4);
    const auto all = std::as_bytes(std::span<const char>(bytes));
    SongRecord back;
    EXPECT_EQ(back.Decode(all.first<100>(), all.subspan(100), SongFileOrder::kBig), 0U);
    EXPECT_EQ(back, song);
}

TEST_F(CSongFile, AnEmptyLibraryIsAHeaderAndASongWithoutFilesEndsInSevenNULs) {
    CSongFileWriter writer;
    ASSERT_EQ(writer.Start(CFileRef(File()), 0, 1), noErr);
    ASSERT_EQ(writer.Finish(), noErr);
    EXPECT_EQ(Read(File()), std::string("\0\1\0\1\0\12\0\1", 8) + std::string(16, '\0'));
    EXPECT_EQ(ReadAll(File()).finished, noErr);

    SongRecord song;
    song.songID = 1;
    song.graphicChannels = 3;
    song.Text(SongText::kComment) = "c";
    std::string bytes;
    ASSERT_EQ(song.Encode(bytes), noErr);
    EXPECT_EQ(bytes.size(), 100U + 13U);
    EXPECT_EQ(bytes.substr(bytes.size() - 9), "c" + std::string(8, '\0'));
    EXPECT_EQ(bytes.substr(36, 2), std::string(2, '\0'));
}

TEST_F(CSongFile, EveryCutIsNoticedAndTheSongsBeforeItStay) {
    Witness("make " + File().string());
    const std::string whole = Read(File()), wholeText = ReadAll(File()).text;
    std::mt19937 random(1);
    for (std::size_t cutL = 0; cutL < whole.size(); cutL += cutL < 3000 ? 1 : 1 + random() % 500) {
        Write(File(), whole.substr(0, cutL));
        const Seen seen = ReadAll(File());
        ASSERT_EQ(FirstOf(seen.opened, seen.finished), eofErr) << cutL;
        ASSERT_TRUE(wholeText.starts_with(seen.text)) << cutL;
    }
}

TEST_F(CSongFile, RandomBytesNeverReachOutsideTheirBlock) {
    std::mt19937 random(2);
    for (int round = 0; round < 20'000; ++round) {
        SongRecord song;
        song.songID = 1;
        const std::string name(random() % 40, 'n');
        song.texts.fill(name);
        std::string bytes;
        ASSERT_EQ(song.Encode(bytes), noErr);
        for (unsigned n = random() % 8; n-- > 0;) bytes[random() % bytes.size()] = static_cast<char>(random());
        const std::vector<std::byte> block(std::as_bytes(std::span<const char>(bytes)).begin() + 100,
                                           std::as_bytes(std::span<const char>(bytes)).end());   // its end is guarded
        const auto order = random() % 2 != 0 ? SongFileOrder::kBig : SongFileOrder::kLittle;
        SongRecord got;
        static_cast<void>(got.Decode(std::as_bytes(std::span<const char>(bytes)).first<100>(), block, order));
        for (const std::string_view text : got.texts) ASSERT_EQ(text.find('\0'), std::string_view::npos);
    }
}

TEST_F(CSongFile, VersionsThatCannotBeReadAreRefused) {
    struct Row {
        unsigned char major, minor;
        bool readB, newB;
    };
    for (const auto& [major, minor, readB, newB] :
         {Row{1, 10, true, false}, Row{1, 6, true, false}, Row{1, 5, false, false}, Row{1, 0, false, false},
          Row{1, 11, false, true}, Row{2, 0, false, true}, Row{3, 1, false, true}}) {
        Write(File(), std::string("\0\1\0", 3) + static_cast<char>(major) + '\0' + static_cast<char>(minor) +
                          std::string(18, '\0'));
        CSongFileReader reader;
        EXPECT_EQ(reader.Open(CFileRef(File())), readB ? noErr : paramErr) << int(major) << "." << int(minor);
        EXPECT_EQ(reader.IsTooNew(), newB);
        if (major == 2) {
            EXPECT_EQ(
                reader.TooNewText(),
                "This database was saved with a newer Vopla, which writes database format (2.0), which is, "
                "unfortunately, greater what this version can read (1.10).  You must upgrade to a later version.");
        }
    }
    CSongFileReader reader;
    EXPECT_EQ(reader.Open(CFileRef(i_root / "none")), fnfErr);
}

TEST_F(CSongFile, ASaveThatDoesNotFinishLeavesTheOldFile) {
    SongRecord song;
    song.songID = 1;
    Write(File(), "old");
    {
        CSongFileWriter writer;
        ASSERT_EQ(writer.Start(CFileRef(File()), 2), noErr);
        EXPECT_EQ(writer.Add(song), noErr);
        EXPECT_EQ(writer.Finish(), paramErr);   // one of two
    }
    EXPECT_EQ(Read(File()), "old");
    {
        CSongFileWriter writer;
        ASSERT_EQ(writer.Start(CFileRef(File()), 1), noErr);
        EXPECT_EQ(writer.Add({}), paramErr);   // the id 0 would end the file
        EXPECT_EQ(writer.Add(song), paramErr);
        EXPECT_EQ(writer.Finish(), paramErr);
    }
    EXPECT_EQ(Read(File()), "old");
    {
        CSongFileWriter writer;
        ASSERT_EQ(writer.Start(CFileRef(File()), 1), noErr);
    }
    EXPECT_EQ(Read(File()), "old");
}

TEST(SongRecord, DatesAndTempiComeBackAsTheyWere) {
    for (const double absoluteT : {0.0, 1.0, 785000000.0, -3061152000.0, 5e9})
        EXPECT_EQ(SongDateOf(StoredSongDate(CFDate{absoluteT}))->absoluteT, absoluteT);
    EXPECT_EQ(SongDateOf(StoredSongDate(CFDate{3061152000.0}))->absoluteT, 3061152001.0);   // 0 means none
    EXPECT_EQ(StoredSongDate(std::nullopt), 0);
    EXPECT_EQ(StoredSongDate(CFDate{std::nan("")}), 0);
    std::mt19937_64 random(3);
    for (int n = 0; n < 20'000; ++n) {   // 2000-01-01 to the end of 2063
        const CFDate date{static_cast<double>(static_cast<std::int64_t>(random() % 2019686400U) - 31622400)};
        ASSERT_EQ(UnpackDateAdded(PackDateAdded(date)), date) << date.absoluteT;
    }
    EXPECT_EQ(UnpackDateAdded(PackDateAdded(CFDate{-1e12})), CFDate{-31622400});
    EXPECT_EQ(UnpackDateAdded(PackDateAdded(CFDate{1e12})), CFDate{1988064000 - 1});
    EXPECT_EQ(UnpackDateAdded(0), std::nullopt);
    EXPECT_EQ(UnpackDateAdded(0xFFFFFFFF), std::nullopt);
    for (int hundredths = 0; hundredths < 256; ++hundredths) {
        const auto stored = static_cast<std::uint8_t>(hundredths);
        EXPECT_EQ(StoredTempo(TempoOfStep(stored)), stored);
        EXPECT_EQ(StoredTempo(static_cast<float>(TempoOfStep(stored))), stored);
    }
    EXPECT_EQ(StoredTempo(1.239), 123);
    EXPECT_EQ(StoredTempo(9), 255);
    EXPECT_EQ(StoredTempo(-1), 0);
}

}   // namespace
