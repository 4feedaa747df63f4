#include "Library/CLibraryStore.h"

#include <fstream>

#include "Library/LibraryFileName.h"
#include "LibraryFileTest.h"
#include "ListTest.h"

namespace {

namespace fs = std::filesystem;

/** What a database holds, for comparing two: songs, lists with their rows and values, singers. */
std::string Show(const CSongDatabase& database) {
    std::string text;
    const auto line = [&text](const auto&... parts) {
        const auto add = [&text](const auto& part) {
            if constexpr (std::is_convertible_v<decltype(part), std::string_view>)
                text += part;
            else
                text += std::to_string(part);
            text += ' ';
        };
        (add(parts), ...);
        text += '\n';
    };
    std::vector<SongID> ids = database.Songs()->Ids();
    std::ranges::sort(ids);
    for (const SongID id : ids) line("song", Number(id), database.GetSong(id)->Name().UTF8());
    std::vector<CPlayList*> lists = database.PlayLists();
    std::ranges::stable_partition(lists, [](const CPlayList* listP) { return listP->Type() != kSourceDB_VENUE; });
    for (const CPlayList* const listP : lists) {   // a venue has another id in each run
        const int type = static_cast<int>(listP->Type());
        line("list", type == 5 ? 0 : Number(listP->ID()), type, listP->Name().UTF8(), Number(listP->SelectedItem()),
             MetaKeyText(MainKey(listP->Spec())), listP->Spec().front().ascendingB ? "up" : "down",
             Number(listP->Singer()), listP->Columns().Size(), listP->OtherKeys().Size());
        for (const PLItemID item : listP->Items()->UserOrder()) {
            const PLRow row = *listP->Items()->Get(item);
            line("row", Number(item), static_cast<int>(row.target.type), row.target.idL);
            for (const auto& [key, value] : listP->Items()->RowDictionary(item, row.stampL))
                line("own", key, CFTypeName(value.Type()),
                     value.Integer().value_or(value.Bool().value_or(false) ? 1 : 0));
        }
    }
    for (CSinger* const singerP : database.Singers()) {
        line("singer", Number(singerP->GetSingerID()), singerP->Name().UTF8(), singerP->SongInfo().Size());
        for (const SingerList which : kSingerLists) line("has", Number(singerP->List(which)));
    }
    return text;
}

class CLibraryStoreTest : public ListTest {
protected:
    CLibraryStoreTest() {
        std::string pattern = "/dev/shm/library-XXXXXX";
        i_root = ::mkdtemp(pattern.data());
        CFolders::SetRoot(i_root);
        fs::create_directories(i_root / "lib");
        i_places = {CFileRef(i_root / "lib"), i_root / "music", "/cache"};
        i_storeP = std::make_unique<CLibraryStore>(*i_databaseP, i_places);
    }
    ~CLibraryStoreTest() override {
        i_storeP.reset();
        CFolders::SetRoot({});
        fs::remove_all(i_root);
    }
    fs::path Lib(const fs::path& name) const { return i_root / "lib" / name; }
    static std::string Bytes(const fs::path& file) {
        std::ifstream in(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    void Save(SaveForce force = SaveForce::kDirty) { ASSERT_EQ(i_storeP->SaveLibraryNow(force), noErr); }
    /** A database of its own that loaded the same folder. */
    struct Loaded {
        TestDatabaseHost host;
        CSongDatabase database{host};
        std::unique_ptr<CLibraryStore> storeP;
        OSErr err = noErr;
        explicit Loaded(const LibraryPlaces& places) : storeP(std::make_unique<CLibraryStore>(database, places)) {
            err = storeP->LoadLibrary();
        }
    };
    /** Three songs, two lists, a venue with a singer who has rows. */
    void MakeLibrary() {
        std::vector<SongID> songs;
        for (const char* nameZ : {"One", "Two", "Ёлочка"}) songs.push_back(Song(nameZ, "Artist").GetSongID());
        (void)i_databaseP->AddSongsToLibrary(songs);
        CPlayList& list = i_databaseP->AddPlaylist(kSourceDB_PLAYLIST, "A/B: *c.");
        const PLItemID row = Add(list, Number(songs[1]));
        Add(list, Number(songs[0]));
        Add(list, Number(songs[1]));
        ASSERT_EQ(list.RemoveItem(Items({2})[0]), noErr);   // a hole
        Add(list, Number(songs[2]), 1);
        list.SetRowValue(row, "PICH"_key, CMetaValue(-2));
        list.SetRowValue(row, "PLME"_key, CMetaValue(BoolValueType::kTrue));
        list.SetSelectedItem(row);
        list.SetColumns({{"name", 120}});
        i_databaseP->AddPlaylist(kSourceDB_PLAYLIST, "a/b: *C.");   // the same name on many discs
        CPlayList& venue = i_databaseP->AddPlaylist(kSourceDB_VENUE, "Zum Löwen");
        CSinger& singer = i_databaseP->NewSinger(venue.ID(), "Ann");
        Add(*i_databaseP->GetPlayList(singer.List(SingerList::kTonight)), Number(songs[2]));
        singer.Meta().SetBool("PSNT"_key, true);
        singer.Meta().SetString("Spas"_key, "secret");
        singer.SetSongInfo({{"2", CCFDictionary{{"tsng", 4}}}});
        i_databaseP->SetFacts({"Zum Löwen", {"/music", "/musik"}, {}});
    }

    fs::path i_root;
    LibraryPlaces i_places;
    std::unique_ptr<CLibraryStore> i_storeP;
};

TEST_F(CLibraryStoreTest, ALibraryComesBackAsItWas) {
    ASSERT_EQ(i_storeP->LoadLibrary(), noErr);
    EXPECT_TRUE(i_storeP->Report().emptyB);
    MakeLibrary();
    Save();
    EXPECT_FALSE(i_databaseP->IsDirty());
    const Loaded other(i_places);
    ASSERT_EQ(other.err, noErr);
    EXPECT_EQ(Show(other.database), Show(*i_databaseP));
    EXPECT_EQ(other.storeP->Report().problems, std::vector<std::string>());
    EXPECT_EQ(other.storeP->Report().dirtyReason, "");
    EXPECT_EQ(other.database.Facts(), i_databaseP->Facts());
    EXPECT_GE(other.database.PeekNextID(), i_databaseP->PeekNextID());
}

}   // namespace
