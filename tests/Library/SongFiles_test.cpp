#include "../Core/FileTest.h"
#include "Library/CLibraryBackup.h"
#include "Library/CSongFileSearch.h"
#include "Library/CSongStatus.h"
#include "Library/SongFileTypes.h"

namespace {

class SongFiles : public FileTest {
protected:
    void Make(const std::string& name) const {
        std::filesystem::create_directories((i_root / name).parent_path());
        Write(i_root / name, name);
    }
    /** The name of what is found beside `first`, below the root. */
    std::string Find(const std::string& first, SDB_SongFile wanted, const std::string& second = {}) const {
        CFileRef found;
        const OSErr err = CSongFileSearch("a song").Find(CFileRef(i_root / first), wanted, second, found);
        EXPECT_EQ(Failed(err), found.IsEmpty());
        return Failed(err) ? "none" : found.GetPath().lexically_relative(i_root).string();
    }
};

TEST_F(SongFiles, StatusFollowsTheOrderOfItsRules) {
    const CSongStatus status(i_root / "Music/Vopla Music", i_root / "cache");
    struct Row {
        SDB_SongFile type;
        Path path;
        SDB_SongFileStatus status;
    };
    const Row rows[] = {
        {SDB_SongFile_AUDIO, "", SDB_SongFileStatus_NONE},
        {SDB_SongFile_AUDIO_CD, "", SDB_SongFileStatus_NONE},
        {SDB_SongFile_AUDIO_CD, i_root / "Music/Vopla Music/a.bin", SDB_SongFileStatus_CD},
        {SDB_SongFile_VIDEO_CD, "/media/disc", SDB_SongFileStatus_CD},
        {SDB_SongFile_AUDIO, "Artist/a.mp3", SDB_SongFileStatus_MUSIC},
        {SDB_SongFile_AUDIO, i_root / "Music/Vopla Music/iTunes/a.mp3", SDB_SongFileStatus_MUSIC},
        {SDB_SongFile_AUDIO, i_root / "Music/Vopla Music 2/a.mp3", SDB_SongFileStatus_REFERENCE},
        {SDB_SongFile_AUDIO, "/home/x/iTunes/a.mp3", SDB_SongFileStatus_ITUNES},
        {SDB_SongFile_UNPACK, CFolders::Temp() / "Vopla Temp/a.mp3", SDB_SongFileStatus_TEMP},
        {SDB_SongFile_AUDIO_CACHE, i_root / "cache/a.pcm", SDB_SongFileStatus_CACHE},
        {SDB_SongFile_AUDIO, i_root / "Music/Vopla Music/../a.mp3", SDB_SongFileStatus_REFERENCE},
        {SDB_SongFile_AUDIO, "a/../../b.mp3", SDB_SongFileStatus_REFERENCE},
        {SDB_SongFile_AUDIO, "/somewhere/a.mp3", SDB_SongFileStatus_REFERENCE},
    };
    for (const Row& row : rows) EXPECT_EQ(status.Of(row.type, row.path), row.status) << row.path;
    EXPECT_EQ(CSongStatus("", "").Of(SDB_SongFile_AUDIO, "/a.mp3"), SDB_SongFileStatus_REFERENCE);
}

TEST_F(SongFiles, WordsAndExtensions) {
    std::string all;
    for (int n = -1; n <= 12; ++n) {
        const auto type = static_cast<SDB_SongFile>(n);
        all += std::string(SongFileLogWord(type)) + std::string(SongFileExtension(type)) + "|";
    }
    EXPECT_EQ(all,
              "None  |Audio .mp3|Video .cdg|Zip   .zip|AudCsh.pcm|VidCsh.cdg|Meta  .xml|Aud CD|Vid CD|Unpack|TmpZip|"
              "Proj  .vlp|Launch|None  |");
}

TEST_F(SongFiles, AFileIsFoundBesideAnotherOne) {
    for (const char* nameZ : {"m/deep/a.cdg", "m/a.ncg", "m/deep/a.ogg", "m/deep/a.mp3", "m/deep/b.mp3", "m/b.mcg",
                              "m/deep/c.MP3", "m/deep/c.cdg", "m/deep/second.cdg", "m/deep/ü.zip", "m/deep/ü.txt",
                              "m/deep/x_Soft.mp3", "m/deep/x_Master.mp3", "m/deep/y_Soft.fly", "m/deep/z_Soft.mp3"})
        Make(nameZ);
    EXPECT_EQ(Find("m/deep/a.cdg", SDB_SongFile_AUDIO), "m/deep/a.mp3");   // ".mp3" comes before ".ogg"
    EXPECT_EQ(Find("m/deep/a.mp3", SDB_SongFile_VIDEO), "m/deep/a.cdg");
    EXPECT_EQ(Find("m/deep/b.mp3", SDB_SongFile_VIDEO), "m/b.mcg");   // the folder above
    EXPECT_EQ(Find("m/deep/c.cdg", SDB_SongFile_AUDIO), "m/deep/c.MP3");
    EXPECT_EQ(Find("m/deep/none.mp3", SDB_SongFile_VIDEO), "none");
    EXPECT_EQ(Find("m/deep/none.mp3", SDB_SongFile_VIDEO, "second"), "m/deep/second.cdg");
    EXPECT_EQ(Find("m/deep/ü.zip", SDB_SongFile_PROJECT), "m/deep/ü.txt");
    EXPECT_EQ(Find("m/deep/x_Soft.cdg", SDB_SongFile_AUDIO), "m/deep/x_Soft.mp3");
    std::filesystem::remove(i_root / "m/deep/x_Soft.mp3");
    EXPECT_EQ(Find("m/deep/x_Soft.cdg", SDB_SongFile_AUDIO), "m/deep/x_Master.mp3");
    EXPECT_EQ(Find("m/deep/y_Master.mp3", SDB_SongFile_PROJECT), "m/deep/y_Soft.fly");
    EXPECT_EQ(Find("m/deep/z_Soft.mp3", SDB_SongFile_AUDIO), "none");   // itself
    EXPECT_TRUE(Logged("--> but it was the same as the first file"));
    EXPECT_EQ(Find("m/deep/a.mp3", SDB_SongFile_LAUNCH), "none");
    EXPECT_TRUE(Logged("Could not find relative file type “Launch” for the song “a song”."));
    EXPECT_EQ(Find("m/deep/" + std::string(255, 'n'), SDB_SongFile_AUDIO), "none");   // no room for an extension
}

TEST_F(SongFiles, AMovedLibraryIsFoundInThePresentMusicFolder) {
    Make("Now/Vopla Music/Artist/a.mp3");
    Make("Now/Other/b.mp3");
    const CSong_PathModder modder(i_root / "Now/Vopla Music");
    struct Row {
        const char *beforeZ, *afterZ;
    };
    for (const auto& [beforeZ, afterZ] :
         {Row{"/old/Vopla/Vopla Music/Artist/a.mp3", "Now/Vopla Music/Artist/a.mp3"},
          Row{"C:\\My\\Vopla\\Vopla Music\\Artist\\a.mp3", "Now/Vopla Music/Artist/a.mp3"},
          Row{"/mnt/Vopla Music/Artist/a.mp3", "Now/Vopla Music/Artist/a.mp3"},
          Row{"/old/Vopla/Other/b.mp3", "Now/Other/b.mp3"}, Row{"/old/Vopla/Other/none.mp3", nullptr},
          Row{"/elsewhere/a.mp3", nullptr}}) {
        CFileRef ref(Path{beforeZ});
        EXPECT_EQ(modder(ref), afterZ != nullptr) << beforeZ;
        EXPECT_EQ(ref.GetPath(), afterZ != nullptr ? i_root / afterZ : Path(beforeZ));
    }
    CFileRef there(i_root / "Now/Vopla Music/Artist/a.mp3");
    EXPECT_FALSE(modder(there));
}

class LibraryBackup : public SongFiles {
protected:
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

}   // namespace
