#include "Files/CSafeSave.h"

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <cerrno>

#include "Files/CDataFork.h"
#include "Files/FileTest.h"
#include "Files/FSrFolders.h"
#include "Platform/CFileCalls_Faults.h"
#include "Platform/CFileCalls_Linux.h"

namespace {

constexpr std::size_t kBytes = 5000;

/** Old and new contents, of which no part looks like the other. */
std::string OldText() { return std::string(kBytes, 'o'); }
std::string NewText(SaveMode mode) {
    return mode == SaveMode::kNew ? std::string(kBytes * 2, 'n') : OldText() + std::string(kBytes, 'n');
}

/** One save as a caller makes it: the whole anew, or an addition to the old. */
OSErr Save(const std::filesystem::path& path, SaveMode mode) {
    if (mode == SaveMode::kNew) return SafeSave(CFileRef(path), NewText(mode));
    CFileRef file(path);
    CSafeSave save(file);
    if (const OSErr err = save.Start(mode); Failed(err)) return err;
    CDataFork fork;
    if (const OSErr err = fork.Open(file, FileAccess::kWrite); Failed(err)) return err;
    if (const OSErr err = fork.SetPos(CDataFork::PosMode::kFromEnd, 0); Failed(err)) return err;
    const std::string added(kBytes, 'n');
    if (const OSErr err = fork.Write(std::as_bytes(std::span{added})); Failed(err)) return err;
    if (const OSErr err = fork.Close(); Failed(err)) return err;
    return save.Finish();
}

class SafeSaveTest : public FileTest {
protected:
    void Begin(bool oldB) {
        CFileCalls::Install(nullptr);
        std::filesystem::remove_all(i_file.parent_path());
        std::filesystem::create_directories(i_file.parent_path());
        if (oldB) Write(i_file, OldText());
    }
    /** The truth after a save that ended with `err` (nothing: the process was stopped). */
    void CheckWhole(SaveMode mode, bool oldB, std::optional<OSErr> err) {
        CFileCalls::Install(nullptr);
        const std::string now = Read(i_file), old = oldB ? OldText() : "(none)";
        EXPECT_TRUE(now == NewText(mode) || now == old) << now.size() << " bytes";
        if (err && !Failed(*err)) {
            EXPECT_EQ(now, NewText(mode));
        }
        const CFileRef folder(i_file.parent_path());
        PurgeTemporary(std::span(&folder, 1));
        EXPECT_EQ(Names(i_file.parent_path()).size(), now == "(none)" ? 0U : 1U);
        EXPECT_TRUE(Names(i_root / "tmp" / "Vopla Temp" / "temp").empty());
        EXPECT_FALSE(Failed(Save(i_file, SaveMode::kNew))) << "and the next save goes through";
        EXPECT_EQ(Read(i_file), NewText(SaveMode::kNew));
    }
    /** Each call in turn fails or stops, in each way. */
    void TryAllFaults(SaveMode mode, bool oldB) {
        const struct {
            const char* nameZ;
            int errnoL;
            bool cutB, halfB, onwardsB;
        } kWays[] = {{"ENOSPC", ENOSPC, false, false, false}, {"EIO", EIO, false, false, false},
                     {"EACCES", EACCES, false, false, false}, {"EIO from there on", EIO, false, false, true},
                     {"power cut", 0, true, false, false},    {"power cut in the write", 0, true, true, false}};
        for (const auto& way : kWays) {
            bool doneB = false;
            long n = 0;
            for (; !doneB; ++n) {
                SCOPED_TRACE(testing::Message()
                             << way.nameZ << " at call " << n << ", mode " << static_cast<int>(mode));
                Begin(oldB);
                CFileCalls_Faults faults(i_linux);
                if (way.cutB)
                    faults.CutAt(n, way.halfB);
                else if (way.onwardsB)
                    faults.FailFrom(n, way.errnoL);
                else
                    faults.FailAt(n, way.errnoL);
                CFileCalls::Install(&faults);
                const OSErr err = Save(i_file, mode);
                doneB = faults.Count() <= n;
                if (!Failed(err) && !faults.IsCut()) {
                    EXPECT_EQ(faults.UnsyncedFiles(), 0U);
                    EXPECT_FALSE(faults.IsUnsynced(i_file.parent_path()));
                }
                EXPECT_FALSE(doneB && Failed(err));
                CheckWhole(mode, oldB, err);
                if (HasFailure()) return;
            }
            EXPECT_GT(n, 15) << "the faults must have met the real calls";
        }
    }
    CFileCalls_Linux i_linux;
    Path i_file;
};

TEST_F(SafeSaveTest, EveryCallFailedOrStoppedLeavesOldOrNew) {
    i_file = i_root / "library" / "Library.xml";
    TryAllFaults(SaveMode::kNew, true);
    TryAllFaults(SaveMode::kNew, false);
    TryAllFaults(SaveMode::kCopy, true);
}

TEST_F(SafeSaveTest, TheSameOnAVolumeWithoutTheTemporaryFolder) {
    if (!TwoVolumes()) GTEST_SKIP() << "/tmp and /dev/shm are one volume";
    CFolders::SetRoot(i_otherVolume);
    i_file = i_root / "library" / "Library.xml";
    TryAllFaults(SaveMode::kNew, true);
    TryAllFaults(SaveMode::kCopy, true);
}

TEST_F(SafeSaveTest, AProcessThatEndsAtEachCall) {
    i_file = i_root / "library" / "Library.xml";
    for (const SaveMode mode : {SaveMode::kNew, SaveMode::kCopy}) {
        int code = 9;
        for (long n = 0; code == 9; ++n) {
            SCOPED_TRACE(testing::Message() << "call " << n << ", mode " << static_cast<int>(mode));
            Begin(true);
            const pid_t child = ::fork();
            ASSERT_GE(child, 0);
            if (child == 0) {
                CFileCalls_Faults faults(i_linux);
                faults.ExitAt(n, 9);
                CFileCalls::Install(&faults);
                ::_exit(Failed(Save(i_file, mode)) ? 1 : 0);
            }
            int status = 0;
            ::waitpid(child, &status, 0);
            code = WEXITSTATUS(status);
            CheckWhole(mode, true, code == 9 ? std::nullopt : std::optional(code == 0 ? noErr : ioErr));
            if (HasFailure()) return;
        }
        EXPECT_EQ(code, 0);
    }
}

TEST_F(SafeSaveTest, AFullDiscAtEveryByte) {
    i_file = i_root / "library" / "Library.xml";
    for (const SaveMode mode : {SaveMode::kNew, SaveMode::kCopy})
        for (std::uint64_t space = 0; space < NewText(mode).size() + 500; space += 499) {
            SCOPED_TRACE(testing::Message() << space << " bytes, mode " << static_cast<int>(mode));
            Begin(true);
            CFileCalls_Faults faults(i_linux);
            faults.SetSpace(space);
            CFileCalls::Install(&faults);
            const OSErr err = Save(i_file, mode);
            EXPECT_EQ(err, space < NewText(mode).size() ? dskFulErr : noErr);
            CheckWhole(mode, true, err);
        }
}

TEST_F(SafeSaveTest, StepsAndLogLines) {
    const Path path = i_root / "songs" / "Playlist.xml";
    Write(path, "old");
    CFileRef file(path);
    {
        CSafeSave save(file);
        ASSERT_EQ(save.Start(SaveMode::kCopy), noErr);
        EXPECT_TRUE(save.IsActive());
        EXPECT_NE(file.GetPath(), path);
        EXPECT_EQ(file.GetName(), "Playlist.xml");
        EXPECT_EQ(Read(file.GetPath()), "old");
        EXPECT_EQ(Read(path), "old");
        Write(file.GetPath(), "new");
        // The caller's way of writing may have put the file aside under its temporary name already: it is found again.
        std::filesystem::rename(file.GetPath(), file.GetPath().parent_path() / "tempPlaylist.xml");
        EXPECT_EQ(save.Finish(), noErr);
        EXPECT_FALSE(save.IsActive());
    }
    EXPECT_EQ(file.GetPath(), path);
    EXPECT_EQ(Read(path), "new");
    EXPECT_TRUE(Logged("SafeSaveStart: orig path: <" + path.string() + ">\nSafeSave name: <<Playlist.xml>>\n"));
    EXPECT_TRUE(Logged("SafeSaveStart: safe file: <"));
    EXPECT_TRUE(Logged("SafeSaveCleanup: par: <"));
    {
        CSafeSave save(file);
        ASSERT_EQ(save.Start(SaveMode::kNew), noErr);
        std::filesystem::remove(file.GetPath());   // gone for good: no save, old file
        EXPECT_EQ(save.Finish(), fnfErr);
    }
    EXPECT_TRUE(Logged("SafeSaveFinish: recovering safeFile"));
    EXPECT_EQ(file.GetPath(), path);
    EXPECT_EQ(Read(path), "new");
    {
        CSafeSave given_up(file);
        ASSERT_EQ(given_up.Start(SaveMode::kNew), noErr);
        Write(file.GetPath(), "half");
    }
    EXPECT_EQ(file.GetPath(), path);
    EXPECT_EQ(Read(path), "new");
    EXPECT_TRUE(Names(i_root / "tmp" / "Vopla Temp" / "temp").empty());
}

TEST_F(SafeSaveTest, AFileInTheTemporaryFolderIsWrittenInPlace) {
    CFileRef temp;
    ASSERT_EQ(FSrFindVolumeTemp(CFileRef(i_root / "songs" / "x"), temp), noErr);
    CFileRef file(temp, "work.xml");
    Write(file.GetPath(), "a long old text");
    const CFileRef before = file;
    CSafeSave save(file);
    ASSERT_EQ(save.Start(SaveMode::kNew), noErr);
    EXPECT_FALSE(save.IsActive());
    EXPECT_EQ(file.GetPath(), before.GetPath());
    EXPECT_EQ(save.Finish(), noErr);
    EXPECT_TRUE(Logged("file is in temp folder"));
    EXPECT_FALSE(Logged("SafeSaveCleanup"));
    EXPECT_EQ(SafeSave(before, std::string_view("new")), noErr);
    EXPECT_EQ(Read(before.GetPath()), "new");
}

TEST_F(SafeSaveTest, WhatCannotBeSavedStays) {
    const Path songs = i_root / "songs";
    std::filesystem::create_directories(songs / "folder" / "inside");
    Write(songs / "locked", "old");
    ::chmod((songs / "locked").c_str(), 0444);
    ::mkfifo((songs / "pipe").c_str(), 0600);
    std::filesystem::create_symlink(songs / "nowhere" / "file", songs / "dangling");
    const struct {
        const char* nameZ;
        OSErr err;
    } kCases[] = {{"folder", static_cast<OSErr>(EISDIR)},
                  {"locked", fLckdErr},
                  {"pipe", static_cast<OSErr>(EINVAL)},
                  {"dangling", fnfErr},
                  {"missing/file", fnfErr},
                  {"locked/file", fnfErr}};
    for (const auto& c : kCases)
        EXPECT_EQ(SafeSave(CFileRef(songs / c.nameZ), std::string_view("new")), c.err) << c.nameZ;
    EXPECT_EQ(SafeSave(CFileRef(), std::string_view("new")), errFSMissingName);
    EXPECT_TRUE(Logged("empty name"));
    EXPECT_TRUE(std::filesystem::is_directory(songs / "folder" / "inside"));
    EXPECT_EQ(Read(songs / "locked"), "old");
    EXPECT_TRUE(std::filesystem::is_symlink(songs / "dangling"));
    EXPECT_FALSE(std::filesystem::exists(songs / "missing"));
    EXPECT_TRUE(Names(i_root / "tmp" / "Vopla Temp" / "temp").empty());
}

TEST_F(SafeSaveTest, ABareNameLiesInTheCurrentFolder) {
    const Path before = std::filesystem::current_path();
    std::filesystem::current_path(i_root / "songs");
    EXPECT_EQ(SafeSave(CFileRef("bare.xml"), std::string_view("new")), noErr);
    EXPECT_EQ(SafeSave(CFileRef("bare.xml"), std::string_view("newer")), noErr);
    std::filesystem::current_path(before);
    EXPECT_EQ(Read(i_root / "songs" / "bare.xml"), "newer");
}

TEST_F(SafeSaveTest, PermissionsAndLinksStay) {
    const Path file = i_root / "songs" / "real.xml", link = i_root / "songs" / "link.xml";
    Write(file, "old");
    ::chmod(file.c_str(), 0640);
    std::filesystem::create_symlink("real.xml", link);
    EXPECT_EQ(SafeSave(CFileRef(link), std::string_view("new")), noErr);
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(Read(file), "new");
    struct stat info {};
    ASSERT_EQ(::stat(file.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777U, 0640U);
}

TEST_F(SafeSaveTest, AFailedReplacementKeepsTheNewDataOnce) {
    i_file = i_root / "library" / "Library.xml";
    Begin(true);
    for (const std::string_view failing : {"rename", "sync", "rename"}) {
        SCOPED_TRACE(failing);
        CFileCalls_Faults faults(i_linux);
        faults.SetWatch([&](long n, const char* callZ, const Path& path) {
            const bool hereB = failing == "rename" ? path == i_file : !std::filesystem::is_directory(path);
            if (failing == callZ && hereB) faults.FailAt(n, EIO);
        });
        CFileCalls::Install(&faults);
        EXPECT_EQ(Save(i_file, SaveMode::kNew), ioErr);
        CFileCalls::Install(nullptr);
        EXPECT_EQ(Read(i_file), OldText());
        const Path temp = i_root / "tmp" / "Vopla Temp" / "temp";
        const auto kept = Names(temp);
        ASSERT_EQ(kept.size(), 1U);
        EXPECT_EQ(Read(temp / *kept.begin() / "Library.xml"), NewText(SaveMode::kNew));
        EXPECT_TRUE(Logged("** origFile: <") && Logged("** safeFile: <"));
    }
    EXPECT_EQ(Save(i_file, SaveMode::kNew), noErr);
    EXPECT_TRUE(Names(i_root / "tmp" / "Vopla Temp" / "temp").empty());
}

TEST_F(SafeSaveTest, OneAlertAndNoneForWhatWasToldOrWished) {
    const CFileRef file(i_root / "songs" / "Library.xml");
    for (const OSErr err : {noErr, alreadyReportedErr, abortErr, userCanceledErr})
        EXPECT_EQ(TellSaveError(err, file), err);
    EXPECT_TRUE(s_alerts.empty());
    EXPECT_EQ(TellSaveError(TellSaveError(dskFulErr, file), file), alreadyReportedErr);
    EXPECT_EQ(s_alerts, std::vector<std::string>{"There was an error saving the file “Library.xml”"});
}

TEST_F(SafeSaveTest, PropertyListsThatCannotBeMadeTouchNothing) {
    const Path file = i_root / "songs" / "a.plist";
    Write(file, "old");
    const auto failing = [](std::string&) { return memFullErr; };
    EXPECT_EQ(SafeSavePropertyList(CFileRef(file), failing), memFullErr);
    EXPECT_TRUE(Logged("### Error creating xml data"));
    EXPECT_EQ(Read(file), "old");
    const auto making = [](std::string& xml) {
        xml = "<plist/>";
        return noErr;
    };
    EXPECT_EQ(SafeSavePropertyList(CFileRef(file), making), noErr);
    EXPECT_EQ(Read(file), "<plist/>");
}

}   // namespace
