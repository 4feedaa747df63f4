#include "Storage/CSongStore.h"

#include "Files/FileTest.h"
#include "Library/ListTest.h"

namespace {

class CSongStoreTest : public ListTest {
protected:
    CSongStoreTest() {
        std::string pattern = "/dev/shm/store-XXXXXX";
        i_root = ::mkdtemp(pattern.data());
        CFolders::SetRoot(i_root);
        std::filesystem::create_directories(i_root / "lib");
        i_places = {CFileRef(i_root / "lib"), "/music", "/cache"};
    }
    ~CSongStoreTest() override {
        CFolders::SetRoot({});
        std::filesystem::remove_all(i_root);
    }
    static std::string Bytes(const std::filesystem::path& file) {
        std::ifstream in(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    std::filesystem::path i_root;
    LibraryPlaces i_places;
};

TEST_F(CSongStoreTest, SongsComeBackWithAllTheirValues) {
    CSong& one = Song("Ёлочка", "Artist");
    one.Meta().SetInteger("PICH"_key, -1);
    one.Meta().SetString("SUBg"_key, "among the rest");
    one.Meta().SetValue("ZZZZ"_key, CMetaValue(CMetaText::Of("of a later program")));
    one.Meta().SetSongFile("Sfs0"_key, {SDB_SongFileStatus_MUSIC, CFileRef("/music/a/caf\xe9.mp3")});
    one.Meta().SetSongFile("Sfs3"_key, {SDB_SongFileStatus_CACHE, CFileRef("/cache/a.pcm")});
    Song("two");
    ASSERT_EQ(CSongStore(*i_databaseP, i_places).Save(), noErr);

    CSongDatabase other(i_above);
    ASSERT_EQ(CSongStore(other, i_places).Load(), noErr);
    ASSERT_EQ(other.Songs()->Count(), 2U);
    CSong* const backP = other.GetSong(one.GetSongID());
    ASSERT_NE(backP, nullptr);
    for (const MetaEntry& entry : one.Meta().AllStored())
        EXPECT_EQ(backP->Meta().Stored(entry.key), entry.value) << MetaKeyText(entry.key);
    EXPECT_EQ(backP->Meta().AllStored().size(), one.Meta().AllStored().size());
    EXPECT_EQ(other.PeekNextID(), i_databaseP->PeekNextID());

    // What is saved again is the same file, after a copy of the first.
    const std::string before = Bytes(i_root / "lib/Songs.vlb");
    ASSERT_EQ(CSongStore(other, i_places).Save(), noErr);
    EXPECT_TRUE(Bytes(i_root / "lib/Songs.vlb") == before);
    std::vector<CFileRef> backups;
    ASSERT_EQ(CLibraryBackup(i_places.root).List(backups), noErr);
    EXPECT_EQ(backups.size(), 1U);
}

TEST_F(CSongStoreTest, ADamagedFileIsNeverWrittenOver) {
    Song("one");
    Song("two");
    ASSERT_EQ(CSongStore(*i_databaseP, i_places).Save(), noErr);
    const std::filesystem::path file = i_root / "lib/Songs.vlb";
    std::filesystem::resize_file(file, std::filesystem::file_size(file) - 5);
    const std::string damaged = Bytes(file);
    CSongDatabase other(i_above);
    CSongStore store(other, i_places);
    EXPECT_EQ(store.Load(), eofErr);
    EXPECT_EQ(other.Songs()->Count(), 1U);
    ASSERT_EQ(store.Save(), noErr);
    ASSERT_EQ(store.Save(), noErr);
    long keptL = 0;
    for (const auto& entry : std::filesystem::directory_iterator(i_root / "lib"))
        keptL += entry.path().filename().string().starts_with("Songs (damaged ") && Bytes(entry.path()) == damaged;
    EXPECT_EQ(keptL, 1);
}

TEST_F(CSongStoreTest, ASaveGoesOnWithoutACopyOfTheOldFiles) {
    std::ofstream(i_root / "lib/Library.xml") << "old";
    std::ofstream(i_root / "lib/~Backups") << "in the way";
    Song("one");
    ASSERT_EQ(CSongStore(*i_databaseP, i_places).Save(), noErr);
    CSongDatabase other(i_above);
    EXPECT_EQ(CSongStore(other, i_places).Load(), noErr);
    EXPECT_EQ(other.Songs()->Count(), 1U);
}

TEST_F(CSongStoreTest, ALaterProgramsFileStaysAsItIs) {
    const std::string later = std::string("\0\1\0\1\0\x0b", 6) + std::string(18, '\0');
    std::ofstream(i_root / "lib/Songs.vlb", std::ios::binary) << later;
    CSongStore store(*i_databaseP, i_places);
    EXPECT_EQ(store.Load(), paramErr);
    EXPECT_TRUE(store.IsTooNew());
    Song("mine");
    EXPECT_EQ(store.Save(), opWrErr);
    EXPECT_EQ(Bytes(i_root / "lib/Songs.vlb"), later);
}

TEST_F(CSongStoreTest, ASongWhoseIdIsTakenIsKept) {
    SongRecord record;
    record.songID = 7;
    record.Text(SongText::kName) = "seven";
    std::string bytes;
    for (int n = 0; n < 2; ++n) ASSERT_EQ(record.Encode(bytes), noErr);
    SongFileHeader header;
    header.songsL = 2;
    const auto head = header.Encode();
    std::ofstream(i_root / "lib/Songs.vlb", std::ios::binary)
        << std::string_view(reinterpret_cast<const char*>(head.data()), head.size()) << bytes;
    EXPECT_EQ(CSongStore(*i_databaseP, i_places).Load(), noErr);
    EXPECT_EQ(i_databaseP->Songs()->Count(), 2U);
    EXPECT_NE(i_databaseP->GetSong(SongID{7}), nullptr);
}

}   // namespace
