#include "Zip/CZipWriter.h"

#include <cerrno>

#include "Platform/CFileCalls_Faults.h"
#include "Platform/CFileCalls_Linux.h"
#include "Zip/ZipTest.h"

namespace {

class CZipWriter_Test : public ZipTest {
protected:
    void TearDown() override { CFileCalls::Install(nullptr); }
    TempFolder i_to;
};

TEST_F(CZipWriter_Test, OtherProgramsReadIt) {
    const char* const kNames[][2] = {{"song.mp3", "Für Ñandú 歌.mp3"},
                                     {"song.cdg", "in/a folder.cdg"},
                                     {"big.bin", "big.bin"},
                                     {"empty.txt", "empty.txt"}};
    const CFileRef zip(i_to / "new.zip");
    CZipWriter writer;
    ASSERT_EQ(writer.Open(zip), noErr);
    std::uint64_t allL = 0;
    for (const auto& [fromZ, nameZ] : kNames) {
        ASSERT_EQ(writer.Add(CFileRef(Made(fromZ)), nameZ), noErr);
        EXPECT_EQ(writer.DoneBytes(), allL += std::filesystem::file_size(Made(fromZ)));
    }
    ASSERT_EQ(writer.Close(), noErr);
    WriteWhole(i_to / "check.py", R"(import sys, zipfile
z, made = zipfile.ZipFile(sys.argv[1]), sys.argv[2]
assert z.testzip() is None
pairs = list(zip(sys.argv[3::2], sys.argv[4::2]))
assert z.namelist() == [name for _, name in pairs], z.namelist()
for i, (source, name) in zip(z.infolist(), pairs):
    assert z.read(name) == open(made + "/" + source, "rb").read(), name
    assert i.flag_bits & 0x800 and i.compress_type == 8 and i.date_time[0] >= 2020, i
)");
    std::string command =
        "python3 '" + (i_to / "check.py").string() + "' '" + zip.GetPath().string() + "' '" + s_folder.string() + "'";
    for (const auto& [fromZ, nameZ] : kNames) command += std::string(" '") + fromZ + "' '" + nameZ + "'";
    EXPECT_EQ(std::system(command.c_str()), 0);
    EXPECT_EQ(std::system(("7z t '" + zip.GetPath().string() + "' >/dev/null").c_str()), 0);

    CZipArchive archive;
    ASSERT_EQ(archive.Open(zip), noErr);
    ASSERT_EQ(archive.Members().size(), std::size(kNames));
    for (std::size_t n = 0; n < std::size(kNames); ++n) {
        EXPECT_EQ(archive.Members()[n].name, kNames[n][1]);
        std::string bytes;
        EXPECT_EQ(ReadMember(ReadWhole(zip.GetPath()), archive.Members()[n], bytes), ZipFault::kNone);
        EXPECT_TRUE(bytes == Bytes(kNames[n][0]));
    }
    CZipWriter second;
    EXPECT_EQ(second.Open(zip), dupFNErr);
    EXPECT_TRUE(std::filesystem::exists(zip.GetPath()));   // it was not this one's to delete
}

TEST_F(CZipWriter_Test, AFailureStaysAndLeavesNoFile) {
    const CFileRef zip(i_to / "new.zip"), song(Made("song.mp3"));
    const auto fails = [&](auto&& run, OSErr err) {
        CZipWriter writer;
        ASSERT_EQ(writer.Open(zip), noErr);
        ASSERT_EQ(writer.Add(song, "a.mp3"), noErr);
        run(writer);
        EXPECT_EQ(writer.Add(song, "b.mp3"), err);
        EXPECT_EQ(writer.Close(), err);
        EXPECT_FALSE(std::filesystem::exists(zip.GetPath()));
    };
    fails([](CZipWriter& writer) { writer.Abort(); }, abortErr);
    fails([](CZipWriter& writer) { EXPECT_EQ(writer.Add(CFileRef(Made("missing")), "c"), fnfErr); }, fnfErr);
    for (const char* const nameZ : {"", "../a", "/a", "a/../../b", "c:\\a", "folder/", "\xFF"})
        fails([&](CZipWriter& writer) { EXPECT_EQ(writer.Add(song, nameZ), paramErr) << nameZ; }, paramErr);
    {
        CZipWriter writer;
        ASSERT_EQ(writer.Open(zip), noErr);
    }
    EXPECT_FALSE(std::filesystem::exists(zip.GetPath()));
}

TEST_F(CZipWriter_Test, EachCallFailsInTurn) {
    const CFileRef zip(i_to / "new.zip"), song(Made("song.cdg"));
    CFileCalls_Linux real;
    bool doneB = false;
    long n = 0;
    int toleratedL = 0;
    for (; !doneB; ++n) {
        SCOPED_TRACE(n);
        CFileCalls_Faults faults(real);
        CFileCalls::Install(&faults);
        CZipWriter writer;
        ASSERT_EQ(writer.Open(zip), noErr);
        const long failsAt = faults.Count() + n;
        faults.FailAt(failsAt, ENOSPC);
        OSErr err = writer.Add(song, "a.cdg");
        if (!Failed(err)) err = writer.Close();
        doneB = faults.Count() <= failsAt;
        CFileCalls::Install(nullptr);
        // The close of the file that was read, after its last byte, harms nothing.
        toleratedL += !doneB && !Failed(err);
        EXPECT_TRUE(!Failed(err) || err == dskFulErr);
        EXPECT_EQ(std::filesystem::exists(zip.GetPath()), !Failed(err));
        if (!doneB) std::filesystem::remove(zip.GetPath());
    }
    EXPECT_LE(toleratedL, 1);
    EXPECT_GT(n, 8) << "the faults must have met the real calls";
    EXPECT_EQ(std::system(("7z t '" + zip.GetPath().string() + "' >/dev/null").c_str()), 0);
}

}   // namespace
