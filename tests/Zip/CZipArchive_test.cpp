#include "Zip/CZipArchive.h"

#include <random>

#include "Zip/ZipRecords.h"
#include "Zip/ZipTest.h"

namespace {

class CZipArchive_Test : public ZipTest {};

constexpr std::string_view kContents[] = {"song.mp3", "song.cdg", "big.bin", "empty.txt"};

std::string Number(std::uint64_t number, std::size_t bytesL) {
    std::string text;
    for (std::size_t n = 0; n < bytesL; ++n, number >>= 8) text.push_back(static_cast<char>(number & 0xFF));
    return text;
}
/** The record of member `n` in the directory. */
std::size_t CentralAt(const std::string& zip, std::size_t n = 0) {
    std::size_t at = zip.find("PK\1\2");
    for (; n > 0; --n) at = zip.find("PK\1\2", at + 4);
    return at;
}
void Put(std::string& zip, std::size_t at, std::uint64_t number, std::size_t bytesL) {
    zip.replace(at, bytesL, Number(number, bytesL));
}

TEST_F(CZipArchive_Test, ReadsWhatOtherProgramsPacked) {
    for (const char* const nameZ :
         {"stored.zip", "deflated.zip", "zip64.zip", "end64.zip", "end64moved.zip", "moved.zip", "followed.zip",
          "streamed.zip", "deflate64.zip", "deflate64fast.zip"}) {
        SCOPED_TRACE(nameZ);
        CZipArchive archive;
        ASSERT_EQ(archive.Open(CFileRef(Made(nameZ))), noErr);
        EXPECT_FALSE(archive.IsRepaired());
        EXPECT_EQ(archive.Members().size(), std::size(kContents));
        for (const std::string_view content : kContents) {
            SCOPED_TRACE(content);
            const CZipMember* const memberP = Find(archive, content);
            ASSERT_NE(memberP, nullptr);
            CByteSource_Zip source;
            ASSERT_EQ(source.Open(archive.File(), *memberP), noErr);
            std::string bytes;
            EXPECT_EQ(Read(source, bytes), noErr);
            EXPECT_TRUE(bytes == Bytes(content));
        }
    }
    CZipArchive archive;
    ASSERT_EQ(archive.Open(CFileRef(Made("deflate64.zip"))), noErr);
    EXPECT_EQ(Find(archive, "big.bin")->method, 9);   // or the test shows nothing of it
}

TEST_F(CZipArchive_Test, ReadsFromAnyPlaceWithoutBeginningAgain) {
    const std::string whole = Bytes("big.bin");
    for (const char* const nameZ : {"stored.zip", "deflated.zip", "deflate64.zip"}) {
        SCOPED_TRACE(nameZ);
        CZipArchive archive;
        ASSERT_EQ(archive.Open(CFileRef(Made(nameZ))), noErr);
        CByteSource_Zip source;
        ASSERT_EQ(source.Open(archive.File(), *Find(archive, "big.bin")), noErr);
        std::mt19937 random(3);
        std::string part(70'000, ' ');
        for (int round = 0; round < 60; ++round) {
            const std::size_t at = random() % (whole.size() + 1), wantL = random() % part.size();
            ASSERT_EQ(source.Seek(at), noErr);
            std::size_t got = 0;
            const OSErr err = source.Read(std::as_writable_bytes(std::span(part)).first(wantL), got);
            ASSERT_EQ(got, std::min(wantL, whole.size() - at));
            ASSERT_EQ(err, got < wantL ? eofErr : noErr);
            ASSERT_TRUE(whole.compare(at, got, part, 0, got) == 0);
            ASSERT_EQ(source.Position(), at + got);
        }
        EXPECT_EQ(source.Seek(whole.size() + 1), paramErr);
        // The last byte is known; one near it costs no more than what lies between two saved states.
        std::size_t got = 0;
        std::byte one;
        ASSERT_EQ(source.Seek(whole.size() - 1), noErr);
        ASSERT_EQ(source.Read({&one, 1}, got), noErr);
        const std::uint64_t before = source.UnpackedBytes();
        ASSERT_EQ(source.Seek(whole.size() - 200'000), noErr);
        ASSERT_EQ(source.Read({&one, 1}, got), noErr);
        EXPECT_LE(source.UnpackedBytes() - before, 600'000U);
    }
}

TEST_F(CZipArchive_Test, NamesAreShownButNeverDecideAPath) {
    CZipArchive archive;
    ASSERT_EQ(archive.Open(CFileRef(Made("names.zip"))), noErr);
    const struct {
        const char* nameZ;
        const char* safeZ;
        bool climbsB, folderB;
    } kCases[] = {
        {"../../up.mp3", "up.mp3", true, false},
        {"/etc/root.mp3", "root.mp3", true, false},
        {"C:\\windows\\drive.mp3", "drive.mp3", true, false},
        {"dir/..\\..\\mix.cdg", "mix.cdg", true, false},
        {"Über/Ñandú 歌.mp3", "Ñandú 歌.mp3", false, false},
        {"Müller.cdg", "Müller.cdg", false, false},
        {"plain/", "plain", false, true},
    };
    for (const auto& c : kCases) {
        const CZipMember* const memberP = Find(archive, c.nameZ);
        ASSERT_NE(memberP, nullptr) << c.nameZ;
        EXPECT_EQ(memberP->SafeName(), c.safeZ);
        EXPECT_EQ(memberP->IsClimbing(), c.climbsB) << c.nameZ;
        EXPECT_EQ(memberP->IsFolder(), c.folderB) << c.nameZ;
        std::string bytes;
        EXPECT_EQ(ReadMember(Bytes("names.zip"), *memberP, bytes), ZipFault::kNone);
        EXPECT_FALSE(bytes.empty());
    }
    const auto safe = [](std::string name) {
        CZipMember member;
        member.name = std::move(name);
        return member.SafeName();
    };
    for (const char* const nameZ : {"", "..", "a/..", "/", "\\", ".", "C:"}) EXPECT_EQ(safe(nameZ), "member") << nameZ;
    EXPECT_EQ(safe("a\nb:c.mp3"), "a_b_c.mp3");
    std::string longName;
    for (int n = 0; n < 200; ++n) longName += "é";
    EXPECT_EQ(safe("x" + longName + ".mp3").size(), 239U);   // not in the middle of a letter
    EXPECT_TRUE(safe("x" + longName + ".mp3").ends_with("é.mp3"));
}

TEST_F(CZipArchive_Test, MoreMembersThanThePlainRecordCounts) {
    CZipArchive archive;
    ASSERT_EQ(archive.Open(CFileRef(Made("many.zip"))), noErr);
    EXPECT_EQ(archive.Members().size(), 70'000U);
    ASSERT_EQ(archive.Open(CFileRef(Made("none.zip"))), noErr);
    EXPECT_TRUE(archive.Members().empty());
}

TEST_F(CZipArchive_Test, WhatCannotBeReadIsNamed) {
    const struct {
        const char* zipZ;
        ZipFault fault;
        OSErr err;
    } kCases[] = {{"encrypted.zip", ZipFault::kEncrypted, permErr},
                  {"aes.zip", ZipFault::kEncrypted, permErr},
                  {"bzip2.zip", ZipFault::kMethod, paramErr}};
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.zipZ);
        CZipArchive archive;
        ASSERT_EQ(archive.Open(CFileRef(Made(c.zipZ))), noErr);
        ASSERT_EQ(archive.Members().size(), 1U);
        EXPECT_EQ(archive.Members()[0].fault, c.fault);
        CByteSource_Zip source;
        EXPECT_EQ(source.Open(archive.File(), archive.Members()[0]), c.err);
        EXPECT_EQ(source.Fault(), c.fault);
    }
    CZipArchive archive;
    EXPECT_EQ(archive.Open(CFileRef(Made("song.mp3"))), paramErr);
    EXPECT_EQ(archive.Fault(), ZipFault::kNotZip);
    EXPECT_EQ(archive.Open(CFileRef(Made("missing.zip"))), fnfErr);
    EXPECT_EQ(archive.Open(CFileRef(Made("empty.txt"))), paramErr);
}

TEST_F(CZipArchive_Test, LiesOfTheDirectory) {
    const std::string good = Bytes("deflated.zip"), song = Bytes("song.mp3");
    const std::size_t at = CentralAt(good);
    const auto open = [](const std::string& zip, CZipArchive& archive) {
        MemorySource source(zip);
        return archive.Open(source);
    };
    const struct {
        const char* whatZ;
        std::size_t offset, bytesL;
        std::uint64_t number;
        ZipFault fault;
        std::size_t given;   // bytes that come before it
    } kCases[] = {
        {"4 GB", 24, 4, 0xFFFFFFFE, ZipFault::kSizes, 0},
        {"one byte more", 24, 4, 90'001, ZipFault::kSizes, 90'000},
        {"one byte less", 24, 4, 89'999, ZipFault::kSizes, 89'999},
        {"packed: less", 20, 4, 50'000, ZipFault::kSizes, 0},
        {"packed: beyond the directory", 20, 4, 0x7FFFFFFF, ZipFault::kSizes, 0},
        {"packed: into the next member", 20, 4, 100'000, ZipFault::kOverlap, 0},
        {"checksum", 16, 4, 1, ZipFault::kChecksum, 90'000},
        {"method", 10, 2, 9, ZipFault::kLocalHeader, 0},
        {"encrypted", 8, 2, 1, ZipFault::kEncrypted, 0},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.whatZ);
        std::string zip = good;
        Put(zip, at + c.offset, c.number, c.bytesL);
        CZipArchive archive;
        ASSERT_EQ(open(zip, archive), noErr);
        ASSERT_EQ(archive.Members().size(), std::size(kContents));
        std::string bytes;
        EXPECT_EQ(ReadMember(zip, archive.Members()[0], bytes), c.fault);
        if (c.given > 0) {
            EXPECT_EQ(bytes.size(), c.given);
        }
        EXPECT_TRUE(song.starts_with(bytes));
        EXPECT_EQ(ReadMember(zip, archive.Members()[1], bytes), ZipFault::kNone);   // the others are as good as before
    }
    // Damage of the directory itself: the members are found by their headers.
    const std::size_t end = good.find("PK\5\6", CentralAt(good, 3));
    const struct {
        const char* whatZ;
        std::size_t at, bytesL;
        std::uint64_t number;
    } kBroken[] = {
        {"place of a header", at + 42, 4, 77},    {"place beyond the file", at + 42, 4, 0x70000000},
        {"length of a name", at + 28, 2, 0xFFFF}, {"signature", at, 4, 0},
        {"count too big", end + 10, 2, 5},        {"size of the directory", end + 12, 4, 0x7FFFFFFF},
    };
    for (const auto& c : kBroken) {
        SCOPED_TRACE(c.whatZ);
        std::string zip = good;
        Put(zip, c.at, c.number, c.bytesL);
        if (c.at == end + 10) Put(zip, end + 8, c.number, 2);
        CZipArchive archive;
        ASSERT_EQ(open(zip, archive), noErr);
        EXPECT_TRUE(archive.IsRepaired());
        for (const std::string_view content : kContents) {
            ASSERT_NE(Find(archive, content), nullptr);
            std::string bytes;
            EXPECT_EQ(ReadMember(zip, *Find(archive, content), bytes), ZipFault::kNone);
            EXPECT_TRUE(bytes == Bytes(content));
        }
    }
}

TEST_F(CZipArchive_Test, CutAnywhereItGivesWhatIsThere) {
    for (const char* const nameZ : {"stored.zip", "streamed.zip", "deflate64.zip"}) {
        SCOPED_TRACE(nameZ);
        const std::string good = Bytes(nameZ);
        const std::size_t directoryAt = good.rfind("PK\1\2") - 200;
        std::vector<std::size_t> cuts{0, 3, 4, 29, 30, 50, 5'000, directoryAt, good.size() - 23, good.size() - 1};
        for (std::size_t n = 1; n < 12; ++n) cuts.push_back(good.size() * n / 12);
        for (std::size_t back = 2; back < 400; back += 13) cuts.push_back(good.size() - back);
        for (const std::size_t cut : cuts) {
            SCOPED_TRACE(cut);
            const std::string zip = good.substr(0, cut);
            CZipArchive archive;
            MemorySource text(zip);
            if (Failed(archive.Open(text))) {
                EXPECT_NE(archive.Fault(), ZipFault::kNone);
                continue;
            }
            EXPECT_TRUE(archive.IsRepaired());
            for (const CZipMember& member : archive.Members()) {
                std::string bytes;
                const ZipFault fault = ReadMember(zip, member, bytes);
                const std::string whole = Bytes(member.name);
                ASSERT_TRUE(whole.starts_with(bytes));
                EXPECT_EQ(fault, bytes.size() == whole.size() ? ZipFault::kNone : ZipFault::kTruncated);
            }
        }
    }
}

TEST_F(CZipArchive_Test, ChangedBytesAreFoundOutAndHarmless) {
    const std::string good = Bytes("deflate64.zip");
    const std::string small = Bytes("names.zip");   // its headers are hit often
    std::mt19937 random(5);
    for (int round = 0; round < 400; ++round) {
        SCOPED_TRACE(round);
        const bool smallB = round % 8 != 0;
        std::string zip = smallB ? small : good;
        for (unsigned n = 1 + random() % 4; n > 0; --n) zip[random() % zip.size()] = static_cast<char>(random());
        CZipArchive archive;
        MemorySource text(zip);
        if (Failed(archive.Open(text))) continue;
        for (const CZipMember& member : archive.Members()) {
            std::string bytes;
            const ZipFault fault = ReadMember(zip, member, bytes);
            EXPECT_LE(bytes.size(), member.sizeL);
            // What comes without a fault has the size and the checksum that were told.
            if (fault == ZipFault::kNone) {
                EXPECT_EQ(bytes.size(), member.sizeL);
            }
        }
    }
}

TEST_F(CZipArchive_Test, OneLocalHeaderForManyMembersIsNoBomb) {
    const std::string good = Bytes("deflated.zip");
    std::string zip = good;
    for (std::size_t n = 1; n < 3; ++n) Put(zip, CentralAt(zip, n) + 42, 0, 4);
    CZipArchive archive;
    MemorySource text(zip);
    ASSERT_EQ(archive.Open(text), noErr);
    EXPECT_EQ(std::ranges::count(archive.Members(), ZipFault::kOverlap, &CZipMember::fault), 2);
}

TEST_F(CZipArchive_Test, AFileOfSignaturesTakesNoAges) {
    for (const std::string_view signature : {"PK\3\4", "PK\7\x8", "PK\5\6"}) {
        std::string zip = Bytes("streamed.zip").substr(0, 60);   // whose first member has its sizes behind it
        while (zip.size() < 4'000'000) zip += signature;
        MemorySource source(zip);
        CZipArchive archive;
        static_cast<void>(archive.Open(source));   // minutes, if each signature cost the reading of a block
        for (const CZipMember& member : archive.Members()) {
            std::string bytes;
            static_cast<void>(ReadMember(zip, member, bytes));
        }
    }
}

}   // namespace
