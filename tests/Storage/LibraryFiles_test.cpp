#include "Storage/LibraryFiles.h"

#include <random>

#include "Files/FileTest.h"
#include "Storage/LibraryWitness.h"

namespace {

class LibraryFiles : public FileTest {
protected:
    void SetUp() override {
        FileTest::SetUp();
        Witness("lists " + i_root.string());
    }
    CFileRef At(const std::string& name) const { return CFileRef(i_root / name); }
};

TEST_F(LibraryFiles, ReadsWhatAnotherProgramWroteAndWritesItBack) {
    LibraryIndex index;
    ASSERT_EQ(ReadLibraryIndex(At("Library.xml"), index), noErr);
    EXPECT_EQ(index.minorL, 7);
    EXPECT_EQ(index.nextID, 4711U);
    EXPECT_EQ(index.currentVenue, "Zum Löwen");
    EXPECT_EQ(index.searchPaths, (std::vector<SuperString>{"/music", "/musik/שלום"}));
    ASSERT_EQ(index.playlists.size(), 2U);
    ASSERT_TRUE(index.playlists[0].items);
    ASSERT_EQ(index.playlists[0].items->size(), 2U);
    EXPECT_EQ(index.playlists[0].items->at(1).sourceID, 3U);
    EXPECT_EQ(index.playlists[0].items->at(1).playB, false);
    EXPECT_FALSE(index.playlists[1].items);
    EXPECT_EQ(index.playlists[1].ID(), 40U);
    LibraryIndex old;
    ASSERT_EQ(ReadLibraryIndex(At("Old.xml"), old), noErr);
    EXPECT_EQ(old, index);

    PlaylistRecord playlist;
    ASSERT_EQ(ReadPlaylistFile(At("Playlists/Duette.xml"), playlist), noErr);
    ASSERT_EQ(playlist.items->size(), 6U);
    EXPECT_EQ(playlist.items->back().kind, PlaylistItemKind::kSinger);
    EXPECT_EQ(playlist.items->back().sourceID, 77U);
    EXPECT_TRUE(playlist.items->back().meta.GetBool("PSNT"));
    EXPECT_EQ(playlist.ID(), index.playlists[1].ID());
    EXPECT_EQ(playlist.Name(), index.playlists[1].Name());

    SingerRecord singer;
    ASSERT_EQ(ReadSingerFile(At("Singer.xml"), singer), noErr);
    EXPECT_EQ(singer.ID(), 77U);
    EXPECT_EQ(singer.songInfo.GetDictionary("2").GetInteger("PICH"), -1);
    std::vector<SingerRecord> singers;
    ASSERT_EQ(ReadSingersFile(At("Singers.xml"), singers), noErr);
    ASSERT_EQ(singers.size(), 2U);

    for (const char* nameZ : {"Library.xml", "Playlists/Duette.xml", "Singer.xml", "Singers.xml"})
        std::filesystem::remove(i_root / nameZ);
    EXPECT_EQ(WriteLibraryIndex(At("Library.xml"), index), noErr);
    EXPECT_EQ(WritePlaylistFile(At("Playlists/Duette.xml"), playlist), noErr);
    EXPECT_EQ(WriteSingerFile(At("Singer.xml"), singer), noErr);
    EXPECT_EQ(WriteSingersFile(At("Singers.xml"), singers), noErr);
    EXPECT_EQ(Witness("check " + i_root.string()), "as written\n");
    EXPECT_TRUE(Logged("## PList Write End: "));
}

TEST_F(LibraryFiles, SongsOfTheOldFormAndTheirFurtherKeys) {
    SongDictionaries songs, meta;
    ASSERT_EQ(ReadSongTable(At("Songs.xml"), SongTable::kTracks, songs), noErr);
    ASSERT_EQ(songs.size(), 2U);
    EXPECT_EQ(songs[2].GetInteger("Times Sung"), 3);
    EXPECT_EQ(songs[3].GetString("Name"), "日本の歌");
    ASSERT_EQ(ReadSongTable(At("Songs Meta.xml"), SongTable::kMeta, meta), noErr);
    EXPECT_EQ(meta, (SongDictionaries{{2, {{"lVoc", "words"}}}}));   // "x" is no id, "9" no dictionary
    EXPECT_TRUE(Logged("Illegal key type: x, dict"));
    EXPECT_TRUE(Logged("Illegal key type: 9, integer"));
    for (const auto& [form, table] : {std::pair{SongTable::kTracks, songs}, {SongTable::kMeta, meta}}) {
        SongDictionaries back;
        ASSERT_EQ(WriteSongTable(At("again.xml"), form, table), noErr);
        ASSERT_EQ(ReadSongTable(At("again.xml"), form, back), noErr);
        EXPECT_EQ(back, table);
    }
}

TEST_F(LibraryFiles, ASingersFolderWinsOverTheFileOfAll) {
    const auto singer = [](int id, const char* nameZ) {
        SingerRecord made;
        made.meta = {{"siID", id}, {"name", nameZ}};
        return made;
    };
    const auto merged = MergeSingers({singer(2, "folder"), singer(3, "only folder")},
                                     {singer(1, "only file"), singer(2, "file"), singer(0, "no id")});
    std::string names;
    for (const SingerRecord& one : merged) names += one.meta.GetString("name").UTF8() + ", ";
    EXPECT_EQ(names, "folder, only folder, only file, no id, ");
}

TEST_F(LibraryFiles, ADamagedFileChangesNothingAndIsNoticed) {
    LibraryIndex index;
    ASSERT_EQ(ReadLibraryIndex(At("Library.xml"), index), noErr);
    const LibraryIndex before = index;
    const std::string whole = Read(i_root / "Library.xml");
    const std::size_t endL = whole.rfind("</plist>");
    for (std::size_t cutL = 0; cutL < endL; ++cutL) {
        Write(i_root / "Library.xml", whole.substr(0, cutL));
        ASSERT_NE(ReadLibraryIndex(At("Library.xml"), index), noErr) << cutL;
        ASSERT_EQ(index, before) << cutL;
    }
    std::mt19937 random(1);
    for (int round = 0; round < 1000; ++round) {
        std::string bytes = whole;
        for (int n = 0; n < 3; ++n) bytes[random() % bytes.size()] = static_cast<char>(random());
        Write(i_root / "Library.xml", bytes);
        LibraryIndex other;
        PlaylistRecord playlist;
        std::vector<SingerRecord> singers;
        SongDictionaries songs;
        static_cast<void>(ReadLibraryIndex(At("Library.xml"), other));
        static_cast<void>(ReadPlaylistFile(At("Library.xml"), playlist));
        static_cast<void>(ReadSongTable(At("Library.xml"), SongTable::kMeta, songs));
        EXPECT_NE(ReadSingersFile(At("Library.xml"), singers), noErr);
    }
    for (const char* wrongZ : {"<array/>", "<dict/>", "<dict><key>Library</key><string/></dict>"}) {
        Write(i_root / "Library.xml", std::string("<plist>") + wrongZ + "</plist>");
        EXPECT_EQ(ReadLibraryIndex(At("Library.xml"), index), paramErr) << wrongZ;
    }
    EXPECT_EQ(ReadLibraryIndex(At("none.xml"), index), fnfErr);
}

TEST_F(LibraryFiles, ADamagedFileIsKeptUnderAnotherName) {
    for (int round = 0; round < 3; ++round) {   // within one second
        Write(i_root / "songs/Library.xml", "damage " + std::to_string(round));
        CFileRef file = At("songs/Library.xml");
        ASSERT_EQ(SetAsideDamaged(file), noErr);
        EXPECT_EQ(Read(file.GetPath()), "damage " + std::to_string(round));
    }
    const auto names = Names(i_root / "songs");
    EXPECT_EQ(names.size(), 3U);
    for (const std::string& name : names) EXPECT_TRUE(name.starts_with("Library (damaged ")) << name;
    CFileRef none = At("none.xml");
    EXPECT_EQ(SetAsideDamaged(none), fnfErr);
}

TEST_F(LibraryFiles, NumbersThatAreNoIdsReadAsNone) {
    const auto read = [](CCFDictionary row) { return PlaylistItemRecord::FromDictionary(row); };
    EXPECT_EQ(read({{"Song ID", -1}}).sourceID, 0U);
    EXPECT_EQ(read({{"Song ID", std::int64_t{1} << 32}}).sourceID, 0U);
    EXPECT_EQ(read({{"Song ID", "7"}}).sourceID, 0U);
    EXPECT_EQ(read({{"Song ID", (std::int64_t{1} << 32) - 1}}).sourceID, 0xFFFFFFFFU);
    const CCFDictionary disc{{"Track Number", 3}, {"Name", "of a disc"}};
    EXPECT_EQ(read(disc).ToDictionary(), disc);
}

}   // namespace
