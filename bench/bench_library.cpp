// bench_library FOLDER: loads the library that tools/make_library made there, saves all of it, then one edit, while a
// main loop turns; seconds, the longest turn of the main thread, and what is resident. The load is compared with a bare reading
// of the same files that touches as many fresh bytes. The folder is changed.
#include <sys/mman.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "BenchHost.h"
#include "Core/CLog.h"
#include "Library/CSongDatabase.h"
#include "Meta/CMetaManager.h"
#include "SongFiles/CSongFileKeeper.h"
#include "SongFiles/CSongFileWork.h"
#include "Storage/CLibraryStore.h"
#include "Threads/CThreadHost.h"
#include "Threads/CThreadManager.h"
#include "Threads/ThreadInfo.h"

namespace {

/** "VmRSS" and its kin, in MB. */
double Status(const std::string& key) {
    std::ifstream in("/proc/self/status");
    for (std::string line; std::getline(in, line);)
        if (line.starts_with(key + ":")) return std::strtod(line.c_str() + key.size() + 1, nullptr) / 1000 * 1.024;
    return 0;
}

/** What the load is compared with: each file of the folder is read to its end by pieces, each byte looked at, and as many
    fresh bytes are written to as the load did. The best of three, in milliseconds. */
double BareReading(const std::filesystem::path& folder, std::size_t touchedL, std::size_t& readL) {
    std::vector<std::uint64_t> piece(std::size_t{1} << 17);
    double best = 1e12;
    for (int round = 0; round < 3; ++round) {
        readL = 0;
        std::uint64_t sum = 0;
        best = std::min(best, Milliseconds([&] {
                            for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
                                if (!entry.is_regular_file()) continue;
                                std::FILE* const fileP = std::fopen(entry.path().c_str(), "rb");
                                if (fileP == nullptr) continue;
                                std::setvbuf(fileP, nullptr, _IONBF, 0);
                                for (std::size_t got = 0;
                                     (got = std::fread(piece.data(), 1, piece.size() * 8, fileP)) > 0; readL += got)
                                    for (std::size_t n = 0; n < got / 8; ++n) sum += piece[n];
                                std::fclose(fileP);
                            }
                            void* const freshP =
                                ::mmap(nullptr, touchedL, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
                            if (freshP == MAP_FAILED) std::abort();
                            std::memset(freshP, static_cast<int>(sum & 0xFF) | 1, touchedL);
                            if (static_cast<volatile char*>(freshP)[touchedL / 2] == 0) std::abort();
                            ::munmap(freshP, touchedL);
                        }));
    }
    return best;
}

/** Of the main thread: what a turn costs beside the waiting for something to do, which is cut off at once. */
struct Turns {
    double longestT = 0, secondT = 0;
    void Add(double millis) {
        if (millis > longestT) std::swap(millis, longestT);
        secondT = std::max(secondT, millis);
    }
};

/** Saves, with the main loop turning, and a page of the library looked at in each turn, as a browser does: it waits for
    the locks that the save holds. */
double SaveInTurns(BenchHost& host, CSongDatabase& database, CLibraryStore& store, SaveForce force, double& startT,
                   Turns& turns) {
    return Milliseconds([&] {
        startT = Milliseconds([&] {
            if (const OSErr err = store.SaveLibrary(force); Failed(err)) std::printf("  save: %d\n", Number(err));
        });
        while (store.IsSaving()) {
            host.MainLoop().Wait(0.001);
            turns.Add(Milliseconds([&] {
                while (host.MainLoop().PumpOne(kMessage_All)) {
                }
                for (const PLRow& row : database.Library().Items()->Page(500, 50))
                    (void)database.WithSong(SongID{row.target.idL}, [](CSong& song) { (void)song.Name(); });
            }));
        }
        if (Failed(store.LastSaveErr())) std::printf("  save: %d\n", Number(store.LastSaveErr()));
    });
}

void Measure(BenchHost& host, const CFileRef& folder) {
    CSongDatabaseHost above;
    CSongDatabase database(above);
    CSongFileWork files(database);
    CLibraryStore store(database, {folder, folder.GetPath().parent_path() / "Vopla Music", "/nowhere"});
    const double beforeL = Status("VmRSS");
    const double loadT = Milliseconds([&] {
        if (const OSErr err = store.LoadLibrary(); Failed(err)) std::printf("load: %d\n", Number(err));
    });
    for (const std::string& problem : store.Report().problems) std::printf("  %s\n", problem.c_str());
    std::printf(
        "%zu songs, %zu lists\n  load                 %9.0f ms\n  resident             %9.0f MB, at most %.0f MB\n",
        database.Songs()->Count(), database.PlayLists().size(), loadT, Status("VmRSS"), Status("VmHWM"));
    const double touched = Status("VmHWM") - beforeL;
    std::size_t readL = 0;
    const double bareT = BareReading(folder.GetPath(), static_cast<std::size_t>(touched * 1e6), readL);
    std::printf("  bare reading         %9.0f ms: %.0f MB read, %.0f MB touched; the load takes %.2f times as long\n",
                bareT, static_cast<double>(readL) / 1e6, touched, loadT / bareT);
    store.AfterStart();

    for (const char* whatZ : {"full save, first", "full save, second"}) {   // the first keeps a copy of the files
        double startT = 0;
        Turns turns;
        const double saveT = SaveInTurns(host, database, store, SaveForce::kAll, startT, turns);
        std::printf("  %-20s %9.0f ms; its start %.2f ms, the longest turns of the main thread %.2f and %.2f ms\n",
                    whatZ, saveT, startT, turns.longestT, turns.secondT);
    }
    database.Library().SetSort({{"name"_key}}, CPlayList::SortWait::kYes);   // the edit has a place to be put into
    const std::vector<SongID> ids = database.Songs()->Ids();
    CSong& song = *database.GetSong(ids.front());
    std::vector<double> edits;
    for (std::size_t n = 0; n < 99; ++n)
        edits.push_back(Milliseconds([&] {
            database.GetSong(ids[n * 7'001 % ids.size()])
                ->Meta()
                .SetString("name"_key, "Name of " + std::to_string(std::time(nullptr) + static_cast<long>(n)));
            database.FlushChanges();
        }));
    std::ranges::sort(edits);
    const double editT = edits[edits.size() / 2];
    double startT = 0;
    Turns turns;
    const double saveT = SaveInTurns(host, database, store, SaveForce::kDirty, startT, turns);
    std::printf(
        "  one song             %9.0f ms; an edit, of 99 the middle, %.3f ms, the start of the save %.3f ms, longest "
        "turns "
        "%.2f and %.2f ms\n",
        saveT, editT, startT, turns.longestT, turns.secondT);

    const auto keeperRef = files.Keeper();
    const auto ask = [&] {
        return Milliseconds([&] { (void)keeperRef->MayTouch(song.FileRef(SDB_SongFile_AUDIO), song.GetSongID()); });
    };
    const double firstT = ask(), nextT = ask();
    std::printf("  may a file be touched %8.0f ms at first, then %.3f ms\n", firstT, nextT);

    CPlayList* listP = nullptr;
    for (CPlayList* const oneP : database.PlayLists())
        if (oneP->Type() == kSourceDB_PLAYLIST) listP = oneP;
    if (listP == nullptr) return;
    Turns listTurns;
    const double addT = Milliseconds([&] { listP->AddItem({song.GetSongID()}); });
    const double listT = SaveInTurns(host, database, store, SaveForce::kDirty, startT, listTurns);
    std::printf(
        "  one row of a list    %9.0f ms; the edit %.3f ms, the start of the save %.3f ms, longest turns %.2f and "
        "%.2f ms\n",
        listT, addT, startT, listTurns.longestT, listTurns.secondT);
    std::printf("  resident             %9.0f MB, at most %.0f MB\n", Status("VmRSS"), Status("VmHWM"));
}

}   // namespace

int main(int countL, char** wordsZ) {
    if (countL != 2) {
        std::fprintf(stderr, "usage: bench_library FOLDER\n");
        return 2;
    }
    BenchHost host;
    TagThread(0, false);
    CMetaManager meta;
    CThreadManager threads;
    Measure(host, CFileRef(std::filesystem::absolute(wordsZ[1])));
    return 0;
}
