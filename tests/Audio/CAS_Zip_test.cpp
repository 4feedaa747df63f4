#include "Audio/CAS_Zip.h"

#include <array>

#include "Audio/CAS_QuickTimeAudioReader.h"
#include "Platform/CFileCalls_Faults.h"
#include "Zip/ZipTest.h"

namespace {

class CAS_Zip_Test : public ZipTest {
protected:
    static CZipMember Member(const char* zipZ, std::string_view name) {
        CZipArchive archive;
        EXPECT_EQ(archive.Open(CFileRef(Made(zipZ))), noErr);
        const CZipMember* const memberP = Find(archive, name);
        EXPECT_NE(memberP, nullptr);
        return memberP != nullptr ? *memberP : CZipMember{};
    }
    static std::string ReadAll(CSpooler& spool, OSErr& err) {
        std::string all;
        std::array<std::byte, kSpool_ChunkBytes> chunk;
        for (;;) {
            std::size_t gotL = 0;
            err = spool.Read(chunk, gotL);
            if (Failed(err)) return all;
            all.append(reinterpret_cast<const char*>(chunk.data()), gotL);
        }
    }
};

TEST_F(CAS_Zip_Test, GivesTheMemberInItsUnits) {
    const struct {
        const char* nameZ;
        std::size_t unitBytes;
    } kCases[] = {{"song.cdg", 4}, {"song.mp3", 1}, {"empty.txt", 1}};
    for (const auto& c : kCases)
        for (const char* const zipZ : {"stored.zip", "deflated.zip", "deflate64.zip"}) {
            SCOPED_TRACE(testing::Message() << zipZ << " " << c.nameZ);
            const std::string whole = Bytes(c.nameZ);
            const auto spoolP = MakeRef<CAS_Zip>(CFileRef(Made(zipZ)), Member(zipZ, c.nameZ));
            EXPECT_EQ(spoolP->UnitBytes(), c.unitBytes);
            std::uint64_t sizeL = 0;
            ASSERT_EQ(spoolP->Open(false, sizeL), noErr);
            EXPECT_EQ(sizeL, whole.size() / c.unitBytes);
            OSErr err = noErr;
            EXPECT_TRUE(ReadAll(*spoolP, err) == whole);
            EXPECT_EQ(err, eofErr);
            EXPECT_EQ(spoolP->Close(false), noErr);
        }
}

TEST_F(CAS_Zip_Test, CanBeSought) {
    const std::string whole = Bytes("song.cdg");
    const auto spoolP = MakeRef<CAS_Zip>(CFileRef(Made("deflated.zip")), Member("deflated.zip", "song.cdg"));
    std::uint64_t sizeL = 0;
    ASSERT_EQ(spoolP->Open(false, sizeL), noErr);
    for (const double place : {0.5, 0.1, 0.9, 0.0}) {
        ASSERT_EQ(spoolP->Seek(place), noErr);
        const std::size_t at = static_cast<std::size_t>(spoolP->GetPos()) * 4;
        EXPECT_NEAR(static_cast<double>(at), place * static_cast<double>(whole.size()), 24);
        std::array<std::byte, 240> part;
        std::size_t gotL = 0;
        ASSERT_EQ(spoolP->Read(part, gotL), noErr);
        EXPECT_EQ(gotL, part.size());
        EXPECT_EQ(whole.compare(at, gotL, reinterpret_cast<const char*>(part.data()), gotL), 0);
    }
}

TEST_F(CAS_Zip_Test, ABombOpensNoLongerThanItsFileIsWorth) {
    CByteSource_Zip source;
    ASSERT_EQ(source.Open(CFileRef(Made("bomb.zip")), Member("bomb.zip", "song.m4a")), noErr);
    EXPECT_GT(source.Size(), source.StoredSize() * 900);
    CMediaAudio audio;
    EXPECT_EQ(audio.Open(source, "m4a"), paramErr);
    EXPECT_LT(source.UnpackedBytes(), 100U << 20);
}

TEST_F(CAS_Zip_Test, TheWayToAPlaceIsWhatARealReadUnpacks) {
    for (const char* const zipZ : {"stored.zip", "deflated.zip", "deflate64.zip"}) {
        CByteSource_Zip source;
        ASSERT_EQ(source.Open(CFileRef(Made(zipZ)), Member(zipZ, "big.bin")), noErr);
        for (const std::uint64_t place : {2'900'000U, 100U, 1'500'000U, 1'500'101U, 1'499'999U, 0U, 2'999'999U}) {
            const std::uint64_t wayL = source.WayTo(place), beforeL = source.UnpackedBytes();
            std::byte part[1];
            std::size_t gotL = 0;
            ASSERT_EQ(source.Seek(place), noErr);
            ASSERT_EQ(source.Read(part, gotL), noErr);
            EXPECT_EQ(source.UnpackedBytes() - beforeL, zipZ[0] == 's' ? 0 : wayL + 1) << zipZ << ' ' << place;
        }
    }
}

TEST_F(CAS_Zip_Test, AnAbortEndsTheWayToAPlaceAndALookAtTheLength) {
    const CZipMember member = Member("bomb.zip", "song.m4a");
    const CFileRef zip(Made("bomb.zip"));
    const auto readerP = MakeRef<CAS_QuickTimeAudioReader>(
        [&](std::unique_ptr<CByteSource>& sourceP) {
            auto zipP = std::make_unique<CByteSource_Zip>();
            const OSErr err = zipP->Open(zip, member);
            sourceP = std::move(zipP);
            return err;
        },
        "m4a");
    const auto spoolP = MakeRef<CAS_Zip>(zip, member);
    std::uint64_t sizeL = 0;
    ASSERT_EQ(spoolP->Open(false, sizeL), noErr);
    ASSERT_EQ(spoolP->Seek(0.9), noErr);

    CFileCalls_Faults faults(CFileCalls::Get());
    CSpooler* abortP = nullptr;
    long readsL = 0;
    faults.SetWatch([&](long, const char* callZ, const std::filesystem::path&) {
        if (std::string_view(callZ) == "read" && ++readsL == 2) abortP->Abort();
    });
    CFileCalls::Install(&faults);
    abortP = spoolP.Get();
    std::byte part[4];
    std::size_t gotL = 0;
    EXPECT_EQ(spoolP->Read(part, gotL), abortErr);
    EXPECT_EQ(readsL, 2);   // of more than a hundred
    readsL = 0;
    abortP = readerP.Get();
    EXPECT_EQ(readerP->GetEOF(sizeL), abortErr);
    EXPECT_EQ(readsL, 2);
    CFileCalls::Install(nullptr);
}

TEST_F(CAS_Zip_Test, WhatCameBeforeAFaultIsGiven) {
    const std::string song = Bytes("song.cdg");
    CZipMember member = Member("deflated.zip", "song.cdg");
    // The lie is about the packed size, so the data end early, in the middle of a unit or not.
    member.packedL = member.packedL / 2;
    const auto spoolP = MakeRef<CAS_Zip>(CFileRef(Made("deflated.zip")), member);
    std::uint64_t sizeL = 0;
    ASSERT_EQ(spoolP->Open(false, sizeL), noErr);
    OSErr err = noErr;
    const std::string got = ReadAll(*spoolP, err);
    EXPECT_EQ(err, ioErr);
    EXPECT_GT(got.size(), song.size() / 4);
    EXPECT_EQ(got.size() % 4, 0U);
    EXPECT_TRUE(song.starts_with(got));

    const auto closedP = MakeRef<CAS_Zip>(CFileRef(Made("encrypted.zip")), Member("encrypted.zip", "song.mp3"));
    EXPECT_EQ(closedP->Open(false, sizeL), permErr);
    EXPECT_EQ(closedP->Open(true, sizeL), permErr);   // the first error stays
}

}   // namespace
