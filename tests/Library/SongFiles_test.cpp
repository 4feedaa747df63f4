#include "Files/FileTest.h"
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

}   // namespace
