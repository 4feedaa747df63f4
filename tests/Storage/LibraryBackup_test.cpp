#include <map>

#include "Files/FileTest.h"
#include "Platform/CFileCalls_Faults.h"
#include "Storage/BackupNames.h"
#include "Storage/CLibraryBackup.h"
#include "Storage/CLibraryRestore.h"

namespace {

class LibraryBackup : public FileTest {
protected:
    void Make(const std::string& name) const {
        std::filesystem::create_directories((i_root / name).parent_path());
        Write(i_root / name, name);
    }
    std::vector<CFileRef> Backups() const {
        std::vector<CFileRef> backups;
        EXPECT_EQ(CLibraryBackup(CFileRef(i_root / "lib")).List(backups), noErr);
        return backups;
    }
};

TEST_F(LibraryBackup, OneCopyARunAndARestoreBringsItBack) {
    for (const char* nameZ :
         {"lib/Library.xml", "lib/Songs.vlb", "lib/Playlists/Ü 歌.xml", "lib/~old.xml", "lib/a.mp3"})
        Make(nameZ);
    CLibraryBackup backup(CFileRef(i_root / "lib"));
    ASSERT_EQ(backup.KeepOnce(), noErr);
    ASSERT_EQ(backup.KeepOnce(), noErr);
    ASSERT_EQ(Backups().size(), 1U);
    const CFileRef kept = Backups().front();
    // Another program reads it.
    const std::string list = (i_root / "list").string();
    ASSERT_EQ(
        std::system(("python3 -c 'import sys, zipfile; print(sorted(zipfile.ZipFile(sys.argv[1]).namelist()))' '" +
                     kept.GetPath().string() + "' > " + list)
                        .c_str()),
        0);
    EXPECT_EQ(Read(list), "['Library.xml', 'Playlists/Ü 歌.xml', 'Songs.vlb']\n");

    Write(i_root / "lib/Library.xml", "spoilt");
    Make("lib/Playlists/new.xml");
    std::filesystem::remove(i_root / "lib/Playlists/Ü 歌.xml");
    ASSERT_EQ(backup.Restore(kept), noErr);
    EXPECT_EQ(Read(i_root / "lib/Library.xml"), "lib/Library.xml");
    EXPECT_EQ(Read(i_root / "lib/Playlists/Ü 歌.xml"), "lib/Playlists/Ü 歌.xml");
    EXPECT_EQ(Read(i_root / "lib/Playlists/new.xml"), "lib/Playlists/new.xml");
    ASSERT_EQ(Backups().size(), 2U);   // what was there before the restore can come back too
    ASSERT_EQ(backup.Restore(Backups().front()), noErr);
    EXPECT_EQ(Read(i_root / "lib/Library.xml"), "spoilt");
}

TEST_F(LibraryBackup, ADamagedCopyTouchesNothing) {
    Make("lib/Library.xml");
    Write(i_root / "lib/Songs.vlb", std::string(5000, 's'));
    CLibraryBackup backup(CFileRef(i_root / "lib"));
    ASSERT_EQ(backup.KeepOnce(), noErr);
    const CFileRef kept = Backups().front();
    const std::string whole = Read(kept.GetPath());
    Write(i_root / "lib/Library.xml", "present");
    for (std::size_t cutL = 0; cutL < whole.size(); ++cutL) {
        Write(kept.GetPath(), whole.substr(0, cutL));
        ASSERT_NE(backup.Restore(kept), noErr) << cutL;
        ASSERT_EQ(Read(i_root / "lib/Library.xml"), "present") << cutL;
    }
    std::string flipped = whole;
    flipped[whole.find("Library.xml") + 13] ^= 0x20;   // in the data of the first member
    Write(kept.GetPath(), flipped);
    EXPECT_NE(backup.Restore(kept), noErr);
    EXPECT_EQ(Read(i_root / "lib/Library.xml"), "present");
}

TEST_F(LibraryBackup, TheLastTenStayAndAnEmptyLibraryHasNone) {
    std::filesystem::create_directories(i_root / "lib");
    EXPECT_EQ(CLibraryBackup(CFileRef(i_root / "lib")).KeepOnce(), noErr);
    EXPECT_EQ(Backups().size(), 0U);
    Make("lib/Library.xml");
    for (int n = 10; n < 22; ++n) Make("lib/~Backups/Library 2020-01-" + std::to_string(n) + " 10.00.00.000.zip");
    Make("lib/~Backups/mine.txt");
    Make("lib/~Backups/Library 2020-01-01 10.00.00.000.zip.part");   // of a crash
    EXPECT_EQ(CLibraryBackup(CFileRef(i_root / "lib")).KeepOnce(), noErr);
    ASSERT_EQ(Backups().size(), 10U);
    EXPECT_EQ(Backups().back().GetName(), "Library 2020-01-13 10.00.00.000.zip");
    EXPECT_TRUE(std::filesystem::exists(i_root / "lib/~Backups/mine.txt"));
    EXPECT_EQ(Names(i_root / "lib/~Backups").size(), 11U);
}

TEST_F(LibraryBackup, ANameOfAnyBytesComesBackAsItWas) {
    const std::string names[] = {"Playlists/caf\xe9.xml", "Playlists/a\\b.xml",        "c:.xml",
                                 "Playlists/100%25.xml",  "Playlists/\xff/\x01 %.xml", "Library.xml"};
    for (const std::string& name : names) Make("lib/" + name);
    CLibraryBackup backup(CFileRef(i_root / "lib"));
    ASSERT_EQ(backup.KeepOnce(), noErr);
    std::filesystem::remove_all(i_root / "lib/Playlists");
    std::filesystem::remove(i_root / "lib/c:.xml");
    ASSERT_EQ(backup.Restore(Backups().front()), noErr);
    for (const std::string& name : names) EXPECT_EQ(Read(i_root / "lib" / name), "lib/" + name);
    // Other programs read these too, and put nothing outside.
    const std::string command =
        "python3 -c 'import sys, zipfile; z = zipfile.ZipFile(sys.argv[1]); z.testzip(); "
        "print(sorted(z.namelist()))' '";
    ASSERT_EQ(
        std::system((command + Backups().back().GetPath().string() + "' > " + (i_root / "list").string()).c_str()), 0);
    EXPECT_EQ(
        Read(i_root / "list"),
        "['Library.xml', 'Playlists/100%25.xml', '~bytes/Playlists/%FF/%01 %25.xml', '~bytes/Playlists/a%5Cb.xml',"
        " '~bytes/Playlists/caf%E9.xml', '~bytes/c%3A.xml']\n");
}

TEST_F(LibraryBackup, NamesThatAreNoLibraryFileAreRefused) {
    for (const char* nameZ :
         {"../Library.xml", "/Library.xml", "a/../Library.xml", "a//b.xml", "./a.xml", "a.mp3", "~Backups/a.xml", "",
          "a\\..\\..\\b.xml", "C:\\a.xml", "~bytes/..%2Fa.xml", "~bytes/%2Fa.xml", "~bytes/a%0", "~bytes/a%zz.xml",
          "~bytes/a%00.xml", "~bytes/%7Ea.xml", "~bytes/", "a\xff.xml"})
        EXPECT_FALSE(PathOfBackupMember(nameZ)) << nameZ;
    EXPECT_EQ(PathOfBackupMember("~bytes/a%FF/Songs.vlb"), Path("a\xff/Songs.vlb"));
}

TEST_F(LibraryBackup, AFileThatCannotBeOpenedCostsOnlyItself) {
    for (const char* nameZ : {"lib/Library.xml", "lib/Playlists/bad.xml", "lib/Songs.vlb"}) Make(nameZ);
    CFileCalls_Faults faults(CFileCalls::Get());
    CFileCalls::Install(&faults);
    std::vector<long> opens;   // to see whether it can be, and to be read
    faults.SetWatch([&](long n, const char* callZ, const Path& path) {
        if (path.filename() == "bad.xml" && std::string_view(callZ) == "open") opens.push_back(n);
    });
    ASSERT_EQ(CLibraryBackup(CFileRef(i_root / "lib")).KeepOnce(), noErr);
    ASSERT_EQ(opens.size(), 2U);
    std::filesystem::remove_all(i_root / "lib/~Backups");
    faults.FailAt(faults.Count() + opens.front(), EACCES);
    ASSERT_TRUE(s_alerts.empty());
    CLibraryBackup backup(CFileRef(i_root / "lib"));
    EXPECT_EQ(backup.KeepOnce(), noErr);
    ASSERT_EQ(s_alerts.size(), 1U);
    std::filesystem::remove(i_root / "lib/Songs.vlb");
    ASSERT_EQ(backup.Restore(Backups().front()), noErr);
    EXPECT_EQ(Read(i_root / "lib/Songs.vlb"), "lib/Songs.vlb");
    EXPECT_EQ(Read(i_root / "lib/Playlists/bad.xml"), "lib/Playlists/bad.xml");
}

TEST_F(LibraryBackup, ACopyThatFailsIsToldOnce) {
    Make("lib/Library.xml");
    Write(i_root / "lib/~Backups", "in the way");
    CLibraryBackup backup(CFileRef(i_root / "lib"));
    for (int tries = 0; tries < 3; ++tries) EXPECT_NE(backup.KeepOnce(), noErr);
    EXPECT_EQ(s_alerts.size(), 1U);
    std::filesystem::remove(i_root / "lib/~Backups");
    EXPECT_EQ(backup.KeepOnce(), noErr);
    EXPECT_EQ(Backups().size(), 1U);
}

/** A library of two generations, the first in a copy, the second in place. */
class LibraryRestore : public LibraryBackup {
protected:
    using Files = std::map<std::string, std::string>;
    void SetUp() override {
        LibraryBackup::SetUp();
        MakeFirst();
        EXPECT_EQ(CLibraryBackup(CFileRef(Root())).KeepOnce(), noErr);
        i_copy = Backups().front();
        i_first = Present();
    }
    Path Root() const { return i_root / "lib"; }
    void MakeFirst() const {
        for (const char* nameZ :
             {"lib/Library.xml", "lib/Playlists/a.xml", "lib/Venues/V/s/Singer.xml", "lib/Songs.vlb"})
            Make(nameZ);
    }
    void MakeSecond() {
        CFileCalls::Install(nullptr);
        for (const char* nameZ : {"~Restore", "~Restore.part", "Venues", "Playlists"})
            std::filesystem::remove_all(Root() / nameZ);
        for (const auto& entry : std::filesystem::directory_iterator(Root() / "~Backups"))
            if (entry.path() != i_copy.GetPath()) std::filesystem::remove(entry.path());
        Make("lib/Playlists/a.xml");
        Write(Root() / "Library.xml", "second");
        Write(Root() / "Songs.vlb", "second songs");
        i_second = Present();
    }
    Files Present() const {
        Files files;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(Root())) {
            const Path path = entry.path().lexically_relative(Root());
            if (entry.is_regular_file() && IsLibraryFile(path)) files[path.string()] = Read(entry.path());
        }
        return files;
    }
    CFileRef i_copy;
    Files i_first, i_second;
};

TEST_F(LibraryRestore, IsAllOrNothingWhereverItFails) {
    long doneL = 0, notL = 0;
    for (long n = 0;; ++n) {
        SCOPED_TRACE(n);
        MakeSecond();
        CFileCalls_Faults faults(CFileCalls::Get());
        faults.FailAt(n, EIO);
        CFileCalls::Install(&faults);
        const OSErr err = CLibraryBackup(CFileRef(Root())).Restore(i_copy);
        CFileCalls::Install(nullptr);
        const Files now = Present();
        // The disc may say that it failed when all is in place, but never that it went well when it did not.
        ASSERT_TRUE(now == i_first || (Failed(err) && now == i_second)) << ErrorText(err);
        (now == i_first ? doneL : notL) += 1;
        if (n > faults.Count()) break;
    }
    EXPECT_GT(notL, 50);
    EXPECT_GT(doneL, 3);
}

TEST_F(LibraryRestore, IsAllOrNothingWheneverThePowerGoes) {
    long doneL = 0, notL = 0;
    for (long n = 0;; ++n) {
        SCOPED_TRACE(n);
        MakeSecond();
        long callsL = 0;
        {
            CFileCalls_Faults faults(CFileCalls::Get());
            faults.CutAt(n, n % 2 == 0);
            CFileCalls::Install(&faults);
            static_cast<void>(CLibraryBackup(CFileRef(Root())).Restore(i_copy));
            CFileCalls::Install(nullptr);
            callsL = faults.Count();
        }
        ASSERT_EQ(CLibraryRestore(CFileRef(Root())).FinishEarlier(), noErr);
        const Files now = Present();
        ASSERT_TRUE(now == i_first || now == i_second);
        (now == i_first ? doneL : notL) += 1;
        ASSERT_FALSE(std::filesystem::exists(Root() / "~Restore"));
        if (n > callsL) break;
    }
    EXPECT_GT(notL, 50);
    EXPECT_GT(doneL, 10);
}

TEST_F(LibraryRestore, LockedFilesAndFoldersInTheWay) {
    MakeSecond();
    std::filesystem::permissions(Root() / "Songs.vlb", std::filesystem::perms(0444));
    EXPECT_EQ(CLibraryBackup(CFileRef(Root())).Restore(i_copy), fLckdErr);
    EXPECT_EQ(Present(), i_second);
    std::filesystem::permissions(Root() / "Songs.vlb", std::filesystem::perms(0640));
    std::filesystem::remove(Root() / "Playlists/a.xml");
    std::filesystem::create_directories(Root() / "Playlists/a.xml/folder");
    EXPECT_EQ(CLibraryBackup(CFileRef(Root())).Restore(i_copy), noErr);
    EXPECT_EQ(Present(), i_first);
    EXPECT_EQ(std::filesystem::status(Root() / "Songs.vlb").permissions(), std::filesystem::perms(0640));
}

}   // namespace
