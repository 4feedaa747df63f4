#include <sys/stat.h>
#include <cerrno>
#include <random>

#include "Files/CDataFork.h"
#include "Files/CFolderKinds.h"
#include "Files/CTempItem.h"
#include "Files/FileTest.h"
#include "Files/FSError.h"
#include "Files/FSrCopy.h"
#include "Files/FSrFolders.h"
#include "Files/FSrMove.h"
#include "Files/FSrObjects.h"
#include "Files/FSrTrash.h"
#include "Platform/CFileCalls_Faults.h"
#include "Platform/CFileCalls_Linux.h"

namespace {

using Path = std::filesystem::path;

TEST(FSError, EveryErrnoKeepsItsMeaningAndNoneBecomesSuccess) {
    const struct {
        int errnoL;
        OSErr err;
    } kCases[] = {{EEXIST, dupFNErr},
                  {ENOTEMPTY, afpDirNotEmpty},
                  {EPERM, permissionsError},
                  {EACCES, afpAccessDenied},
                  {ENOENT, fnfErr},
                  {ELOOP, noPathMappingErr},
                  {ENOSPC, dskFulErr},
                  {EIO, ioErr},
                  {EISDIR, static_cast<OSErr>(EISDIR)},
                  {65536, ioErr},
                  {-5, ioErr}};
    for (const auto& c : kCases) EXPECT_EQ(MapErrno(c.errnoL), c.err) << c.errnoL;
    for (int n = 1; n < 70'000; ++n) EXPECT_NE(MapErrno(n), noErr) << n;
}

class FilesTest : public FileTest {
protected:
    CFileRef Songs() const { return CFileRef(i_root / "songs"); }
    CFileRef File(const std::string& name, const std::string& text) const {
        Write(i_root / "songs" / name, text);
        return CFileRef(Songs(), name);
    }
    Path HomeTrash() const { return i_root / "data" / "Trash"; }
    CFileCalls_Linux i_linux;
};

TEST_F(FilesTest, NamesAreCheckedBeforeTheDiscSeesThem) {
    const struct {
        std::string name;
        OSErr err;
    } kCases[] = {{"a", noErr},
                  {"", errFSMissingName},
                  {".", bdNamErr},
                  {"..", bdNamErr},
                  {"a/b", bdNamErr},
                  {"...", noErr},
                  {std::string("a\0b", 3), bdNamErr},
                  {std::string(255, 'x'), noErr},
                  {std::string(256, 'x'), bdNamErr}};
    for (const auto& c : kCases) {
        EXPECT_EQ(FSrCheckName(c.name), c.err) << c.name;
        CFileRef made;
        EXPECT_EQ(FSrCreateFolder(Songs(), c.name, made), c.err) << c.name;
    }
}

TEST_F(FilesTest, FindOrCreateAndItsLogLines) {
    CFileRef file, again, folder;
    EXPECT_EQ(FSrFindOrCreateFile(Songs(), "a", file), noErr);
    EXPECT_FALSE(Logged("FSrFindOrCreateFile: found"));
    Write(file.GetPath(), "kept");
    EXPECT_EQ(FSrFindOrCreateFile(Songs(), "a", again), noErr);
    EXPECT_TRUE(
        Logged("FSrFindOrCreateFile: FSrObjectExists: looking for: <a>\n"
               "FSrFindOrCreateFile: FSrObjectExists: looking in: <" +
               Songs().GetPath().string() +
               ">\n"
               "FSrFindOrCreateFile: found"));
    EXPECT_EQ(Read(again.GetPath()), "kept");
    EXPECT_EQ(FSrFindOrCreateFolder(Songs(), "a", folder), fnfErr) << "a file is no folder";
    EXPECT_EQ(FSrFindOrCreateFolder(Songs(), "b", folder), noErr);
    EXPECT_NE(FSrFindOrCreateFile(Songs(), "b", file), noErr);
    EXPECT_TRUE(Logged("### FS Error <"));
}

TEST_F(FilesTest, UniqueNamesAgreeWithLookingOneByOne) {
    std::string unique;
    const std::string longName = std::string(250, 'x') + ".cdg";
    for (const std::string& name :
         {std::string("song.cdg"), std::string("no extension"), std::string(".hidden"), longName})
        for (int n = 1; n < 12; ++n) {
            ASSERT_EQ(FSrMakeUniqueName(Songs(), name, unique), noErr);
            EXPECT_LE(unique.size(), 255U);
            if (name == "song.cdg") {
                EXPECT_EQ(unique, n == 1 ? "song.cdg" : "song " + std::to_string(n) + ".cdg");
            }
            bool existsB = true;
            ASSERT_EQ(FSrObjectExists(CFileRef(Songs(), unique), existsB), noErr);
            EXPECT_FALSE(existsB) << unique;
            Write(i_root / "songs" / unique, "x");
        }
    const std::string umlauts = [] {
        std::string all;
        for (int n = 0; n < 127; ++n) all += "ä";
        return all;
    }();
    Write(i_root / "songs" / umlauts, "x");
    ASSERT_EQ(FSrMakeUniqueName(Songs(), umlauts, unique), noErr);
    EXPECT_EQ((unique.size() - 2) % 2, 0U) << "no half letter";
}

TEST_F(FilesTest, DeleteDoesNotFollowLinks) {
    Write(i_root / "kept", "kept");
    std::filesystem::create_directories(i_root / "songs" / "a" / "b");
    std::filesystem::create_symlink(i_root / "kept", i_root / "songs" / "a" / "b" / "link");
    std::filesystem::create_directory_symlink(i_root, i_root / "songs" / "a" / "up");
    EXPECT_EQ(FSrDelete(CFileRef(Songs(), "a")), noErr);
    EXPECT_TRUE(Names(Songs().GetPath()).empty());
    EXPECT_EQ(Read(i_root / "kept"), "kept");
    EXPECT_EQ(FSrDelete(CFileRef(Songs(), "a")), fnfErr);
}

TEST_F(FilesTest, OpenFilePositionsAgreeWithAString) {
    CDataFork fork;
    ASSERT_EQ(fork.Open(File("a", ""), FileAccess::kWrite, true), noErr);
    EXPECT_TRUE(Logged("Opening “a” with access: “rw”"));
    std::mt19937 random(1);
    std::string slow;
    std::uint64_t pos = 0;
    for (int round = 0; round < 2000; ++round) {
        const std::size_t size = random() % 300;
        std::string bytes(size, static_cast<char>('a' + round % 26));
        switch (random() % 4) {
            case 0:
                ASSERT_EQ(fork.Write(std::as_bytes(std::span(bytes))), noErr);
                if (pos + size > slow.size() && size > 0) slow.resize(pos + size);
                slow.replace(pos, size, bytes);
                pos += size;
                break;
            case 1: {
                std::size_t got = 0;
                const std::size_t wanted = pos < slow.size() ? std::min<std::size_t>(size, slow.size() - pos) : 0;
                EXPECT_EQ(fork.Read(std::as_writable_bytes(std::span(bytes)), got), wanted < size ? eofErr : noErr);
                ASSERT_EQ(got, wanted);
                ASSERT_EQ(bytes.substr(0, got), pos < slow.size() ? slow.substr(pos, got) : "");
                pos += got;
                break;
            }
            case 2:
                pos = slow.empty() ? 0 : random() % slow.size();
                ASSERT_EQ(fork.SetPos(CDataFork::PosMode::kFromEnd,
                                      static_cast<std::int64_t>(pos) - static_cast<std::int64_t>(slow.size())),
                          noErr);
                break;
            default:
                slow.resize(size * 10);
                ASSERT_EQ(fork.SetEOF(CDataFork::PosMode::kFromStart, size * 10), noErr);
                if (pos > slow.size()) {
                    pos = slow.size();
                    ASSERT_EQ(fork.SetPos(CDataFork::PosMode::kFromStart, static_cast<std::int64_t>(pos)), noErr);
                }
        }
        ASSERT_EQ(fork.GetPos(), pos);
    }
    std::string whole;
    EXPECT_EQ(ReadWholeFile(CFileRef(Songs(), "a"), whole), noErr);
    EXPECT_EQ(whole, slow);
    EXPECT_EQ(ReadWholeFile(CFileRef(Songs(), "a"), whole, 0), slow.empty() ? noErr : eofErr);
    const std::int64_t most = std::numeric_limits<std::int64_t>::max(),
                       least = std::numeric_limits<std::int64_t>::min();
    EXPECT_EQ(fork.SetPos(CDataFork::PosMode::kFromStart, -1), paramErr);
    EXPECT_EQ(fork.SetPos(CDataFork::PosMode::kFromStart, least), paramErr);
    EXPECT_EQ(fork.SetPos(CDataFork::PosMode::kFromStart, most), noErr);
    EXPECT_EQ(fork.SetPos(CDataFork::PosMode::kFromMark, 1), paramErr);
    EXPECT_EQ(fork.SetEOF(CDataFork::PosMode::kFromStart, 0xFFFFFFFF), paramErr);
    EXPECT_EQ(fork.SetEOF(CDataFork::PosMode::kFromEnd, 0), paramErr);
    CDataFork folder;
    EXPECT_EQ(folder.Open(Songs(), FileAccess::kRead), static_cast<OSErr>(EISDIR));
}

TEST_F(FilesTest, TrashLayoutCardAndUniqueNames) {
    TrashedFile first, second;
    ASSERT_EQ(FSrMoveToTrash(File("a b%ä.zip", "1"), &first), noErr);
    ASSERT_EQ(FSrMoveToTrash(File("a b%ä.zip", "2"), &second), noErr);
    EXPECT_EQ(Names(HomeTrash() / "files"), (std::set<std::string>{"a b%ä.zip", "a b%ä 2.zip"}));
    EXPECT_EQ(Names(HomeTrash() / "info"), (std::set<std::string>{"a b%ä.zip.trashinfo", "a b%ä 2.zip.trashinfo"}));
    EXPECT_EQ(Read(first.file.GetPath()) + Read(second.file.GetPath()), "12");
    const std::string card = Read(second.card.GetPath());
    const std::string head =
        "[Trash Info]\nPath=" + Songs().GetPath().string() + "/a%20b%25%C3%A4.zip\nDeletionDate=20";
    EXPECT_EQ(card.substr(0, head.size()), head);
    EXPECT_EQ(card.size(), head.size() + std::string_view("26-11-25T01:02:03\n").size());
    EXPECT_EQ(FSrRestoreTrashed(second, CFileRef(Songs(), "back")), noErr);
    EXPECT_EQ(FSrDeleteTrashed(first), noErr);
    EXPECT_TRUE(Names(HomeTrash() / "files").empty() && Names(HomeTrash() / "info").empty());
    EXPECT_EQ(Read(i_root / "songs" / "back"), "2");
    EXPECT_EQ(FSrMoveToTrash(CFileRef(Songs(), "missing")), fnfErr);
    EXPECT_TRUE(Logged("### Error getting vRefNum for trashing"));
}

TEST_F(FilesTest, TrashOfAnotherVolumeLiesAtItsTop) {
    if (!TwoVolumes()) GTEST_SKIP() << "/tmp and /dev/shm are one volume";
    CFolders::SetRoot(i_otherVolume);   // the home is elsewhere; the song stays on /dev/shm
    TrashedFile trashed;
    ASSERT_EQ(FSrMoveToTrash(File("a", "x"), &trashed), noErr);
    const Path top = "/dev/shm/.Trash-" + std::to_string(::geteuid());
    EXPECT_EQ(trashed.file.GetPath().parent_path(), top / "files");
    EXPECT_EQ(
        Read(trashed.card.GetPath()).find("Path=" + (Songs().GetPath() / "a").lexically_relative("/dev/shm").string()),
        std::string_view("[Trash Info]\n").size())
        << "counted from the top of the volume";
    EXPECT_EQ(FSrDeleteTrashed(trashed), noErr);
    std::error_code notEmpty;   // an earlier trash of this user stays
    for (const Path& folder : {top / "files", top / "info", top}) std::filesystem::remove(folder, notEmpty);
}

TEST_F(FilesTest, EveryFaultOfACopyKeepsTheOldFile) {
    const CFileRef source = File("a", std::string(600'000, 'n'));
    std::filesystem::create_directories(i_root / "to");
    const CFileRef to(i_root / "to");
    for (const bool cutB : {false, true}) {
        bool doneB = false;
        for (long n = 0; !doneB; ++n) {
            SCOPED_TRACE(testing::Message() << "call " << n << (cutB ? ", power cut" : ""));
            Write(to.GetPath() / "a", "old");
            CFileCalls_Faults faults(i_linux);
            cutB ? faults.CutAt(n, true) : faults.FailAt(n, ENOSPC);
            CFileCalls::Install(&faults);
            CFileRef copy;
            const OSErr err = CopyFileToFolder(source, to, copy);
            CFileCalls::Install(nullptr);
            doneB = faults.Count() <= n;
            const std::string now = Read(to.GetPath() / "a");
            EXPECT_TRUE(now == "old" || now == std::string(600'000, 'n')) << now.size();
            EXPECT_FALSE(doneB && Failed(err));
            PurgeTemporary(std::span(&to, 1));
            EXPECT_EQ(Names(to.GetPath()).size(), 1U);
            if (HasFailure()) return;
        }
    }
    CFileCalls_Faults full(i_linux);
    full.SetSpace(300'000);
    Write(to.GetPath() / "a", "old");
    CFileCalls::Install(&full);
    CFileRef copy;
    EXPECT_EQ(CopyFileToFolder(source, to, copy), dskFulErr);
    CFileCalls::Install(nullptr);
    EXPECT_EQ(Read(to.GetPath() / "a"), "old");
}

TEST_F(FilesTest, CopiesOfFilesAndTrees) {
    const CFileRef file = File("a", "text");
    ::chmod(file.GetPath().c_str(), 0640);
    CFileRef copy;
    EXPECT_EQ(CopyFileToFolder(file, Songs(), copy), paramErr) << "onto itself";
    EXPECT_EQ(CopyFileToFolder(file, Songs(), copy, "b"), noErr);
    struct stat one {
    }, two{};
    ASSERT_TRUE(::stat(file.GetPath().c_str(), &one) == 0 && ::stat(copy.GetPath().c_str(), &two) == 0);
    EXPECT_EQ(two.st_mode, one.st_mode);
    EXPECT_TRUE(one.st_mtim.tv_sec == two.st_mtim.tv_sec && one.st_mtim.tv_nsec == two.st_mtim.tv_nsec);
    std::filesystem::create_directories(i_root / "tree" / "sub" / "empty");
    Write(i_root / "tree" / "sub" / "x", "deep");
    std::filesystem::create_symlink("sub/x", i_root / "tree" / "link");
    ::mkfifo((i_root / "tree" / "pipe").c_str(), 0600);
    const CFileRef tree(i_root / "tree");
    EXPECT_EQ(CopyToFolder(tree, Songs(), copy), noErr);
    EXPECT_EQ(Read(copy.GetPath() / "sub" / "x"), "deep");
    EXPECT_TRUE(std::filesystem::is_directory(copy.GetPath() / "sub" / "empty"));
    EXPECT_EQ(std::filesystem::read_symlink(copy.GetPath() / "link"), Path("sub/x"));
    EXPECT_FALSE(std::filesystem::exists(copy.GetPath() / "pipe"));
    EXPECT_EQ(CopyToFolder(tree, Songs(), copy), dupFNErr);
    EXPECT_EQ(CopyToFolder(tree, CFileRef(tree, "sub"), copy), paramErr) << "into itself";
    CFileCalls_Faults faults(i_linux);
    faults.SetSpace(2);
    CFileCalls::Install(&faults);
    EXPECT_EQ(CopyToFolder(tree, Songs(), copy, "second"), dskFulErr);
    CFileCalls::Install(nullptr);
    EXPECT_FALSE(std::filesystem::exists(i_root / "songs" / "second")) << "no half folder";
    EXPECT_EQ(Names(tree.GetPath()).size(), 3U);
}

TEST_F(FilesTest, MovesWithinAndAcrossVolumes) {
    std::vector<Path> places = {i_root / "to"};
    if (TwoVolumes()) places.push_back(i_otherVolume / "to");
    for (const Path& place : places) {
        SCOPED_TRACE(place);
        std::filesystem::create_directories(place / "folder");
        Write(place / "a", "old");
        CFileRef file = File("a", "new");
        ASSERT_EQ(FSrMoveFile(file, CFileRef(place)), noErr);
        EXPECT_EQ(file.GetPath(), place / "a");
        EXPECT_EQ(Read(place / "a"), "new");
        ASSERT_EQ(FSrMoveFile(file, CFileRef(place), "b"), noErr);
        EXPECT_EQ(Names(place), (std::set<std::string>{"b", "folder"}));
        EXPECT_EQ(FSrMoveFile(file, CFileRef(place)), noErr) << "onto itself";
        CFileRef again = File("b", "second"), tree(i_root / "songs" / "tree");
        EXPECT_EQ(FSrMoveFile(again, CFileRef(place), "folder"), dupFNErr);
        EXPECT_EQ(Read(again.GetPath()), "second");
        EXPECT_EQ(FSrMoveFile(again, CFileRef(place / "missing")), fnfErr);
        EXPECT_EQ(Read(again.GetPath()), "second");
        std::filesystem::create_directories(tree.GetPath());
        Write(tree.GetPath() / "x", "deep");
        ASSERT_EQ(FSrMoveFile(tree, CFileRef(place)), noErr);
        EXPECT_EQ(Read(place / "tree" / "x"), "deep");
        EXPECT_FALSE(std::filesystem::exists(i_root / "songs" / "tree"));
        EXPECT_TRUE(Names(HomeTrash() / "files").empty() && Names(HomeTrash() / "info").empty());
    }
}

TEST_F(FilesTest, EveryFaultOfAMoveLosesNothing) {
    std::vector<Path> places = {i_root / "to"};
    if (TwoVolumes()) places.push_back(i_otherVolume / "to");
    for (const Path& place : places)
        for (const bool cutB : {false, true}) {
            bool doneB = false;
            for (long n = 0; !doneB; ++n) {
                SCOPED_TRACE(testing::Message() << place << " call " << n << (cutB ? ", power cut" : ""));
                std::filesystem::remove_all(HomeTrash());
                std::filesystem::remove_all(place);
                std::filesystem::create_directories(place);
                Write(place / "a", "old");
                CFileRef file = File("a", "new");
                CFileCalls_Faults faults(i_linux);
                cutB ? faults.CutAt(n) : faults.FailAt(n, EIO);
                CFileCalls::Install(&faults);
                const OSErr err = FSrMoveFile(file, CFileRef(place));
                CFileCalls::Install(nullptr);
                doneB = faults.Count() <= n;
                const std::string at = Read(place / "a"), from = Read(i_root / "songs" / "a");
                const std::string trashed = Read(HomeTrash() / "files" / "a");
                EXPECT_TRUE(at == "new" || from == "new");
                EXPECT_TRUE(at == "new" || at == "old" || trashed == "old") << at;
                if (Failed(err) && !cutB) {
                    EXPECT_TRUE(at == "old" || at == "new" || trashed == "old");
                }
                EXPECT_FALSE(doneB && (Failed(err) || at != "new" || from != "(none)"));
                if (HasFailure()) return;
            }
        }
}

TEST_F(FilesTest, PurgeTakesWhatIsLeftAndNotWhatLives) {
    CTempItem folder, file, beside;
    const CFileRef near(i_root / "songs" / "x");
    ASSERT_EQ(folder.Create(FSCreateTemp_FOLDER, near), noErr);
    ASSERT_EQ(file.Create(FSCreateTemp_FILE, near, ".wav"), noErr);
    EXPECT_EQ(file.Ref().GetPath().extension(), ".wav");
    const Path temp = i_root / "tmp" / "Vopla Temp" / "temp";
    std::filesystem::create_directories(temp / "dead" / "deeper");
    Write(temp / "dead" / "deeper" / "x", "x");
    Write(temp.parent_path() / "dead file", "x");
    const CFileRef songs = Songs();
    Write(songs.GetPath() / CopyInWorkName("song"), "half");
    Write(songs.GetPath() / "song", "kept");
    PurgeTemporary(std::span(&songs, 1));
    EXPECT_EQ(Names(temp), (std::set<std::string>{folder.Ref().GetName(), file.Ref().GetName()}));
    EXPECT_EQ(Names(temp.parent_path()), std::set<std::string>{"temp"});
    EXPECT_EQ(Names(songs.GetPath()), std::set<std::string>{"song"});
    EXPECT_TRUE(Logged("## Temp Purging Folder: " + (temp / "dead").string() + "\n"));
    EXPECT_TRUE(Logged("## Temp Purging File: " + (temp.parent_path() / "dead file").string() + "\n"));
    EXPECT_EQ(folder.Delete(), noErr);
    EXPECT_EQ(Names(temp).size(), 1U);
    EXPECT_EQ(FSrPurge(songs, PurgePlace::kCache), noErr);
    EXPECT_TRUE(Logged("## Cache Purging Folder: "));
}

TEST_F(FilesTest, AStrangersTempFolderIsNotUsed) {
    std::filesystem::create_directories(i_root / "tmp");
    std::filesystem::create_directory_symlink(i_root / "songs", i_root / "tmp" / "Vopla Temp");
    CFileRef temp;
    ASSERT_EQ(FSrFindVolumeTemp(CFileRef(i_root / "songs" / "x"), temp), noErr);
    EXPECT_EQ(temp.GetPath(), i_root / "cache" / "Vopla" / "Vopla Temp");
    EXPECT_TRUE(IsInTemp(temp.GetPath() / "x"));
}

TEST_F(FilesTest, FolderKinds) {
    CFolderKinds kinds;
    CFileRef folder;
    const struct {
        long kindL;
        Path wanted;
    } kCases[] = {{14, i_root / "Music/Vopla"},
                  {16, i_root / "Music/Vopla/Vopla Music"},
                  {17, i_root / "Music/Vopla/Vopla Music"},
                  {18, i_root / "Music/Vopla/Vopla CDs"},
                  {19, i_root / "tmp/Vopla Temp"},
                  {21, i_root / "data/Vopla/Vopla Plugins"},
                  {24, i_root / "cache/Vopla"},
                  {25, i_root / "cache/Vopla"}};
    for (const auto& c : kCases) {
        EXPECT_EQ(kinds.Find(c.kindL, folder), noErr) << c.kindL;
        EXPECT_EQ(folder.GetPath(), c.wanted) << c.kindL;
        EXPECT_TRUE(std::filesystem::is_directory(c.wanted)) << c.kindL;
    }
    for (const long kindL : {13L, 26L, -1L, 65536L + 14}) EXPECT_EQ(kinds.Find(kindL, folder), paramErr) << kindL;
    for (const long kindL : {15L, 20L}) EXPECT_EQ(kinds.Find(kindL, folder), fnfErr) << kindL;
    EXPECT_EQ(kinds.Hold(FolderKind::kDatabase, Songs()), noErr);
    EXPECT_EQ(kinds.Hold(FolderKind::kMusic, Songs()), paramErr);
    EXPECT_EQ(kinds.Find(15, folder), noErr);
    EXPECT_EQ(folder.GetPath(), Songs().GetPath());
    // A music folder that is a link to a volume which is not there: told, not made anew beside it.
    kinds.ForgetRoot();
    std::filesystem::remove_all(i_root / "Music");
    std::filesystem::create_directory_symlink("/nowhere/music", i_root / "Music");
    EXPECT_EQ(kinds.Find(14, folder), fnfErr);
    kinds.ForgetRoot(Songs());
    EXPECT_EQ(kinds.Find(17, folder), noErr);
    EXPECT_EQ(folder.GetPath(), Songs().GetPath() / "Vopla Music");
}

TEST_F(FilesTest, WriteTestTellsOnce) {
    EXPECT_EQ(FSrWriteTest(Songs()), noErr);
    EXPECT_TRUE(Names(Songs().GetPath()).empty());
    EXPECT_TRUE(s_alerts.empty());
    CFileCalls_Faults faults(i_linux);
    faults.SetSpace(0);
    CFileCalls::Install(&faults);
    EXPECT_EQ(FSrWriteTest(Songs()), dskFulErr);
    CFileCalls::Install(nullptr);
    EXPECT_EQ(s_alerts,
              std::vector<std::string>{"Vopla requires write access to the folder <" + Songs().GetPath().string() +
                                       ">, you must fix this for Vopla to function correctly."});
    EXPECT_TRUE(Names(Songs().GetPath()).empty());
}

}   // namespace
