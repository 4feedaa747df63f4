#include <atomic>
#include <fstream>
#include <map>
#include <random>

#include "Core/AlertHook.h"
#include "Core/CLog.h"
#include "Files/FSError.h"
#include "Library/CSinger.h"
#include "Library/ListTest.h"
#include "Platform/CFileCalls_Faults.h"
#include "Platform/CFolders.h"
#include "SongFiles/FileWorkTest.h"
#include "Storage/CLibraryStore.h"
#include "Storage/TestLibraryHost.h"

// Files of a library that are cut or changed, and discs that fail: what was whole stays, what was not is kept beside.

namespace {

namespace fs = std::filesystem;

using Files = std::map<std::string, std::string>;   // the bytes, by the path below the root

class LibraryDamage : public FileWorkTest {
protected:
    LibraryDamage() {
        std::string pattern = "/dev/shm/damage-XXXXXX";
        i_root = ::mkdtemp(pattern.data());
        CFolders::SetRoot(i_root);
        fs::create_directories(i_root / "lib");
        i_places = {CFileRef(i_root / "lib"), i_root / "music", "/cache"};
        SetAlertHook([](std::string_view, std::string_view) {});
    }
    ~LibraryDamage() override {
        CFileCalls::Install(nullptr);
        SetAlertHook(nullptr);
        CFolders::SetRoot({});
        fs::remove_all(i_root);
    }
    /** Three songs, a list of them twice over, a singer with one of them for tonight. */
    void MakeLibrary(CLibraryStore& store) {
        ASSERT_EQ(store.LoadLibrary(), noErr);
        std::vector<SongID> songs;
        for (const char* nameZ : {"One", "Two", "Ёлочка 🎤"}) {
            CSong& song = Song(nameZ, "Artist");
            song.Meta().SetString("SUBg"_key, "for the side dictionary");
            songs.push_back(song.GetSongID());
        }
        (void)i_databaseP->AddSongsToLibrary(songs);
        CPlayList& list = i_databaseP->AddPlaylist(kSourceDB_PLAYLIST, "Mine");
        for (const SongID id : songs) Add(list, Number(id));
        for (const SongID id : songs) Add(list, Number(id));
        CPlayList& venue = i_databaseP->AddPlaylist(kSourceDB_VENUE, "Zum Löwen");
        CSinger& singer = i_databaseP->NewSinger(venue.ID(), "Ann");
        Add(*i_databaseP->GetPlayList(singer.List(SingerList::kTonight)), Number(songs[2]));
        ASSERT_EQ(store.SaveLibraryNow(SaveForce::kAll), noErr);
    }
    Files Present() const {
        Files files;
        for (const auto& entry : fs::recursive_directory_iterator(i_root / "lib")) {
            const std::string name = entry.path().lexically_relative(i_root / "lib").string();
            if (!entry.is_regular_file() || name.starts_with("~")) continue;
            std::ifstream in(entry.path(), std::ios::binary);
            files[name] = std::string(std::istreambuf_iterator<char>(in), {});
        }
        return files;
    }
    void Put(const Files& files) const {
        fs::remove_all(i_root / "lib");
        for (const auto& [name, bytes] : files) {
            fs::create_directories((i_root / "lib" / name).parent_path());
            std::ofstream(i_root / "lib" / name, std::ios::binary) << bytes;
        }
    }
    /** A database of its own over the folder. */
    struct Loaded {
        TestDatabaseHost host;
        TestLibraryHost library{host.i_ui};
        CSongDatabase database{host};
        CSongFileWork files{database};
        CLibraryStore store;
        OSErr err;
        explicit Loaded(const LibraryPlaces& places) : store(database, places, library), err(store.LoadLibrary()) {}
    };
    static const CPlayList* Find(const CSongDatabase& database, const std::string& name) {
        for (const CPlayList* const listP : database.PlayLists())
            if (listP->Name() == name) return listP;
        return nullptr;
    }
    /** Loads the folder in which `name` was spoilt, saves all, and loads again. */
    void Survive(const std::string& name, const std::string& spoilt) {
        Loaded first(i_places);
        ASSERT_EQ(first.err, noErr);
        const bool toldB = !first.store.Report().damaged.empty() || !first.store.Report().wholeB;
        if (name == "Songs.vlb" && toldB) {   // the rows wait for their songs
            const CPlayList* const listP = Find(first.database, "Mine");
            ASSERT_NE(listP, nullptr);
            ASSERT_EQ(listP->Count(), 6U);
        }
        ASSERT_EQ(first.store.SaveLibraryNow(SaveForce::kAll), noErr);
        bool keptB = false;
        for (const auto& [file, bytes] : Present()) keptB = keptB || bytes == spoilt;
        ASSERT_TRUE(keptB || !toldB) << "written over";
        const Loaded second(i_places);
        ASSERT_EQ(second.err, noErr);
        // A list that could not be read is written by nobody: its file stays as it lies.
        ASSERT_TRUE(second.store.Report().damaged.empty() || Present()[name] == spoilt);
        ASSERT_EQ(second.database.Songs()->Count(), first.database.Songs()->Count());
        ASSERT_TRUE(name == "Songs.vlb" || second.database.Songs()->Count() == 3U);
    }
    fs::path i_root;
    LibraryPlaces i_places;
};

TEST_F(LibraryDamage, EachFileCutAndWithOtherBytes) {
    {
        CLibraryStore store(*i_databaseP, i_places);
        MakeLibrary(store);
    }
    const Files whole = Present();
    ASSERT_GE(whole.size(), 7U);   // songs, their side dictionary, the index, a list, a singer and his lists
    const bool allB = std::getenv("VOPLA_ALL_LENGTHS") != nullptr;
    std::mt19937 random(11);
    for (const auto& [name, bytes] : whole) {
        const std::size_t stepL = allB ? 1 : std::max<std::size_t>(1, bytes.size() / 8);
        for (std::size_t lengthL = 0; lengthL < bytes.size(); lengthL += stepL) {
            SCOPED_TRACE(name + " cut at " + std::to_string(lengthL));
            Files cut = whole;
            cut[name].resize(lengthL);
            Put(cut);
            ASSERT_NO_FATAL_FAILURE(Survive(name, cut[name]));
        }
        for (int round = 0; round < (allB ? 300 : 6); ++round) {
            SCOPED_TRACE(name + " with other bytes, round " + std::to_string(round));
            Files other = whole;
            for (int n = 0; n < 3; ++n) other[name][random() % bytes.size()] = static_cast<char>(random());
            Put(other);
            Loaded first(i_places);   // a changed byte may make another number, name or id of it: only no harm is asked
            if (first.err == noErr && !first.store.Report().tooNewB) {
                ASSERT_EQ(first.store.SaveLibraryNow(SaveForce::kAll), noErr);
                const Loaded second(i_places);
                ASSERT_EQ(second.err, noErr);
                ASSERT_EQ(second.database.Songs()->Count(), first.database.Songs()->Count());
            }
            (void)TakeAsserted();
        }
    }
}

TEST_F(LibraryDamage, WhatIsKeptBackIsNoDamage) {
    {
        CLibraryStore store(*i_databaseP, i_places);
        MakeLibrary(store);
        ASSERT_EQ(store.SaveLibraryNow(SaveForce::kAll), noErr);   // so that there is a whole copy as well
    }
    const Files whole = Present();
    for (const char* const nameZ : {"Songs.vlb", "Songs Meta.xml", "Library.xml"})
        for (const auto& [failingZ, errnoL] :
             {std::pair{"open", EACCES}, std::pair{"open", ELOOP}, std::pair{"read", EIO}})
            for (const bool backB : {true, false}) {
                SCOPED_TRACE(std::string(nameZ) + " " + failingZ + " " + std::to_string(errnoL) +
                             (backB ? " back" : ""));
                CFileCalls_Faults faults(CFileCalls::Get());
                std::atomic<int> failuresL = 0;   // songs and lists are read on threads of their own
                faults.SetWatch([&](long n, const char* callZ, const fs::path& path) {
                    if (callZ != std::string_view(failingZ) || path != i_root / "lib" / nameZ) return;
                    if (!backB || ++failuresL < 3) faults.FailAt(n, errnoL);
                });
                CFileCalls::Install(&faults);
                TestDatabaseHost host;
                if (backB) host.i_ui.answers = {Answer{1, false}, Answer{1, false}};
                CSongDatabase database(host);
                const CSongFileWork files(database);
                TestLibraryHost library(host.i_ui);
                CLibraryStore store(database, i_places, library);
                const OSErr err = store.LoadLibrary();
                CFileCalls::Install(nullptr);
                ASSERT_EQ(host.i_ui.questions.size(), backB ? 2U : 1U);
                EXPECT_NE(host.i_ui.questions[0].text.find(std::string("lib/") + nameZ), std::string::npos);
                EXPECT_EQ(err, backB ? noErr : MapErrno(errnoL));
                if (backB) {
                    EXPECT_EQ(database.Songs()->Count(), 3U);
                } else {
                    EXPECT_EQ(store.SaveLibraryNow(SaveForce::kAll), opWrErr);
                }
                EXPECT_TRUE(Present() == whole);
            }
}

TEST_F(LibraryDamage, ADiscThatFailsOnceLeavesTheOldOrTheNew) {
    CLibraryStore store(*i_databaseP, i_places);
    ASSERT_NO_FATAL_FAILURE(MakeLibrary(store));
    CSong& song = *i_databaseP->GetSong(i_databaseP->Songs()->Ids().front());
    CPlayList& list = *i_databaseP->GetPlayList(Find(*i_databaseP, "Mine")->ID());
    long failedL = 0;
    for (long n = 0;; n += std::getenv("VOPLA_ALL_LENGTHS") != nullptr ? 1 : 3) {
        SCOPED_TRACE(n);
        const std::string before = song.Name().UTF8(), after = "Name " + std::to_string(n);
        song.Meta().SetString("name"_key, after);
        Add(list, Number(song.GetSongID()));
        const std::size_t rowsL = list.Count();
        CFileCalls_Faults faults(CFileCalls::Get());
        CFileCalls::Install(&faults);
        faults.FailAt(n, n % 2 == 0 ? ENOSPC : EROFS);
        const OSErr err = store.SaveLibraryNow(SaveForce::kAll);
        CFileCalls::Install(nullptr);
        failedL += Failed(err);
        {
            const Loaded other(i_places);
            ASSERT_EQ(other.err, noErr);
            ASSERT_TRUE(other.store.Report().damaged.empty());
            ASSERT_EQ(other.database.Songs()->Count(), 3U);
            const std::string seen = other.database.GetSong(song.GetSongID())->Name().UTF8();
            ASSERT_TRUE(seen == after || (Failed(err) && seen == before)) << seen;
            const std::size_t seenL = Find(other.database, "Mine")->Count();
            ASSERT_TRUE(seenL == rowsL || (Failed(err) && seenL == rowsL - 1)) << seenL;
        }
        ASSERT_EQ(i_databaseP->IsDirty(), Failed(err));
        ASSERT_EQ(store.SaveLibraryNow(SaveForce::kAll), noErr);   // the disc is well again
        if (n > faults.Count()) break;
    }
    EXPECT_GT(failedL, 20);
}

TEST_F(LibraryDamage, AFullDiscAndOneThatGoesAway) {
    CLibraryStore store(*i_databaseP, i_places);
    ASSERT_NO_FATAL_FAILURE(MakeLibrary(store));
    CSong& song = *i_databaseP->GetSong(i_databaseP->Songs()->Ids().front());
    for (const std::uint64_t space : {0U, 1U, 500U, 1500U, 3000U, 5000U}) {
        SCOPED_TRACE(space);
        song.Meta().SetString("name"_key, "Name " + std::to_string(space));
        const Files before = Present();
        CFileCalls_Faults faults(CFileCalls::Get());
        CFileCalls::Install(&faults);
        faults.SetSpace(space);
        const OSErr err = store.SaveLibraryNow(SaveForce::kAll);
        CFileCalls::Install(nullptr);
        ASSERT_TRUE(space >= 500 || (err == dskFulErr && Present() == before)) << ErrorText(err);
        const Loaded other(i_places);
        ASSERT_EQ(other.database.Songs()->Count(), 3U);
        ASSERT_TRUE(other.store.Report().damaged.empty());
    }
    ASSERT_EQ(store.SaveLibraryNow(SaveForce::kAll), noErr);
    fs::rename(i_root / "lib", i_root / "away");
    song.Meta().SetString("name"_key, "while it was away");
    ASSERT_NE(store.SaveLibraryNow(SaveForce::kAll), noErr);
    ASSERT_FALSE(fs::exists(i_root / "lib"));   // nothing is made in its place
    fs::rename(i_root / "away", i_root / "lib");
    ASSERT_EQ(store.SaveLibraryNow(SaveForce::kAll), noErr);
    EXPECT_EQ(Loaded(i_places).database.GetSong(song.GetSongID())->Name(), "while it was away");
}

}   // namespace
