#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <map>
#include <random>
#include <set>
#include <sstream>

#include "Library/ListTest.h"
#include "Platform/CFolders.h"
#include "SongFiles/FileWorkTest.h"
#include "Storage/CLibraryStore.h"

// A process that edits and saves as fast as it can, and is killed in the middle of it, again and again.

namespace {

namespace fs = std::filesystem;

constexpr const char *kRoot_Env = "VOPLA_KILL_ROOT", *kStep_Env = "VOPLA_KILL_STEP", *kSaves_Env = "VOPLA_KILL_SAVES";
constexpr int kReport = 3;   // the handle on which the child tells the steps that are saved
constexpr int kLists_Kept = 6;
constexpr std::size_t kBase_Songs = 2000;

LibraryPlaces PlacesIn(const fs::path& root) { return {CFileRef(root / "lib"), root / "music", "/cache"}; }

/** Of an earlier name "Song 12", the number; 0 for another name. */
int StepOf(std::string_view word, const std::string& name) {
    return name.starts_with(word) ? std::atoi(name.c_str() + word.size()) : 0;
}

class LibraryKill : public FileWorkTest {
protected:
    CPlayList* ListOf(const std::string& name) const {
        for (CPlayList* const listP : i_databaseP->PlayLists())
            if (listP->Name() == name) return listP;
        return nullptr;
    }
    /** A song, a row of a list, a new name for the first song, a list that comes and one that goes. */
    void Step(int step) {
        CSong& song = Song("Song " + std::to_string(step), "Artist");
        (void)i_databaseP->AddSongToLibrary(song);
        CPlayList* const mainP = ListOf("Main");
        CPlayList& main = mainP != nullptr ? *mainP : i_databaseP->AddPlaylist(kSourceDB_PLAYLIST, "Main");
        Add(main, Number(song.GetSongID()));
        std::vector<SongID> ids = i_databaseP->Songs()->Ids();
        i_databaseP->GetSong(*std::ranges::min_element(ids))
            ->Meta()
            .SetString("arts"_key, "Step " + std::to_string(step));
        Add(i_databaseP->AddPlaylist(kSourceDB_PLAYLIST, "List " + std::to_string(step)), Number(song.GetSongID()));
        for (CPlayList* const listP : i_databaseP->PlayLists()) {
            const int old = StepOf("List ", listP->Name().UTF8());
            if (old <= 0 || old > step - kLists_Kept) continue;
            ASSERT_EQ(i_databaseP->DeletePlaylist(listP->ID()), noErr);
        }
    }
};

/** Not a test by itself: what the next one starts as a process. */
TEST_F(LibraryKill, DISABLED_Child) {
    const char* const rootZ = std::getenv(kRoot_Env);
    ASSERT_NE(rootZ, nullptr);
    CFolders::SetRoot(rootZ);
    CLibraryStore store(*i_databaseP, PlacesIn(rootZ));
    ASSERT_EQ(store.LoadLibrary(), noErr);
    std::vector<SongID> base;   // so that a save takes a while
    while (store.Report().emptyB && base.size() < kBase_Songs) base.push_back(Song("Base").GetSongID());
    (void)i_databaseP->AddSongsToLibrary(base);
    for (int step = std::atoi(std::getenv(kStep_Env));; ++step) {
        Step(step);
        ASSERT_EQ(store.SaveLibraryNow(SaveForce::kDirty), noErr);
        ASSERT_EQ(::write(kReport, &step, sizeof(step)), static_cast<ssize_t>(sizeof(step)));
    }
}

class LibraryKillParent : public LibraryKill {
protected:
    LibraryKillParent() {
        std::string pattern = "/dev/shm/kill-XXXXXX";
        i_root = ::mkdtemp(pattern.data());
        CFolders::SetRoot(i_root);
        fs::create_directories(i_root / "lib");
    }
    ~LibraryKillParent() override {
        CFolders::SetRoot({});
        fs::remove_all(i_root);
    }
    /** A child that begins with `step`, killed `micros` after its first save; notes the steps that it saved. */
    void Life(int step, unsigned micros) {
        int ends[2];
        ASSERT_EQ(::pipe(ends), 0);
        const std::string root = std::string(kRoot_Env) + "=" + i_root.string(),
                          first = std::string(kStep_Env) + "=" + std::to_string(step);
        std::vector<char*> environment;
        for (char** oneP = environ; *oneP != nullptr; ++oneP) environment.push_back(*oneP);
        environment.push_back(const_cast<char*>(root.c_str()));
        environment.push_back(const_cast<char*>(first.c_str()));
        environment.push_back(nullptr);
        const char* const words[] = {"test_Library", "--gtest_filter=LibraryKill.DISABLED_Child",
                                     "--gtest_also_run_disabled_tests", nullptr};
        const pid_t child = ::fork();
        if (child == 0) {
            const int nothing = ::open("/dev/null", O_WRONLY);
            ::dup2(nothing, STDOUT_FILENO);
            ::dup2(ends[1], kReport);
            ::execve("/proc/self/exe", const_cast<char* const*>(words), environment.data());
            ::_exit(1);
        }
        ::close(ends[1]);
        int saved = 0;
        while (::read(ends[0], &saved, sizeof(saved)) == static_cast<ssize_t>(sizeof(saved))) {
            const bool firstB = i_saved.empty() || i_saved.back() < step;
            i_saved.push_back(saved);
            if (!firstB) continue;
            ::usleep(micros);
            ::kill(child, SIGKILL);
        }
        ::close(ends[0]);
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status)) << "the child ended by itself";
    }
    /** What another program reads. */
    std::vector<std::string> Witness() const {
        const std::string command = "python3 " VOPLA_SOURCE_DIR "/tests/Storage/library_witness.py library '" +
                                    (i_root / "lib").string() + "' > '" + (i_root / "seen").string() + "'";
        EXPECT_EQ(std::system(command.c_str()), 0);
        std::ifstream in(i_root / "seen");
        std::vector<std::string> lines;
        for (std::string line; std::getline(in, line);) lines.push_back(line);
        return lines;
    }
    /** Everything of the last finished save is there; of the one that was cut short, anything or nothing. */
    void Check() {
        i_filesP.reset();
        i_databaseP = std::make_unique<CSongDatabase>(i_above);
        i_filesP = std::make_unique<CSongFileWork>(*i_databaseP);
        CLibraryStore store(*i_databaseP, PlacesIn(i_root));
        ASSERT_EQ(store.LoadLibrary(), noErr);
        ASSERT_TRUE(store.Report().wholeB);
        ASSERT_TRUE(store.Report().damaged.empty());
        const int last = i_saved.back(), cut = last + 1;
        std::map<int, std::int32_t> ids;   // by step
        std::vector<SongID> all = i_databaseP->Songs()->Ids();
        std::size_t baseL = 0;
        for (const SongID id : all) {
            const int step = StepOf("Song ", i_databaseP->GetSong(id)->Name().UTF8());
            ASSERT_TRUE(step == 0 || ids.emplace(step, Number(id)).second) << "twice: " << step;
            baseL += step == 0;
            ASSERT_LT(Number(id), i_databaseP->PeekNextID());
        }
        ASSERT_EQ(baseL, kBase_Songs);
        CPlayList* const mainP = ListOf("Main");
        ASSERT_NE(mainP, nullptr);
        const std::vector<std::int32_t> rows = Songs(*mainP);
        std::vector<std::int32_t> wanted;
        for (const int step : i_saved) {
            ASSERT_TRUE(ids.contains(step)) << "lost: " << step;
            ASSERT_EQ(i_ids.emplace(step, ids[step]).first->second, ids[step]);
            wanted.push_back(ids[step]);
        }
        std::vector<std::int32_t> kept;
        for (const std::int32_t row : rows)
            if (std::ranges::find(wanted, row) != wanted.end()) kept.push_back(row);
        ASSERT_EQ(kept, wanted);
        const std::string step =
            i_databaseP->GetSong(*std::ranges::min_element(all))->Meta().GetString("arts"_key).UTF8();
        ASSERT_TRUE(step == "Step " + std::to_string(last) || step == "Step " + std::to_string(cut)) << step;
        for (const int each : i_saved)
            if (each > cut - kLists_Kept && each <= last) {
                CPlayList* const listP = ListOf("List " + std::to_string(each));
                ASSERT_NE(listP, nullptr) << each;
                ASSERT_EQ(Songs(*listP), std::vector<std::int32_t>{ids[each]});
            }
        const std::vector<std::string> seen = Witness();
        for (const int each : i_saved)
            ASSERT_NE(std::ranges::find(seen, "song " + std::to_string(ids[each]) + " Song " + std::to_string(each)),
                      seen.end());
        std::string line = "list " + std::to_string(Number(mainP->ID())) + " Main";
        for (const std::int32_t row : rows) line += " " + std::to_string(row);
        ASSERT_NE(std::ranges::find(seen, line), seen.end()) << line;
    }
    fs::path i_root;
    std::vector<int> i_saved;            // the steps whose saves were finished
    std::map<int, std::int32_t> i_ids;   // of their songs, as seen first
};

TEST_F(LibraryKillParent, EveryFinishedSaveSurvives) {
    const char* const savesZ = std::getenv(kSaves_Env);
    const std::size_t savesL = savesZ == nullptr ? 30 : static_cast<std::size_t>(std::atoi(savesZ));
    std::mt19937 random(static_cast<unsigned>(savesL));
    long lives = 0;
    while (i_saved.size() < savesL || lives < static_cast<long>(savesL / 5)) {
        SCOPED_TRACE(testing::Message() << i_saved.size() << " saves, life " << lives);
        const int step = i_saved.empty() ? 1 : i_saved.back() + 2;   // one of its own, for the save that was cut short
        ASSERT_NO_FATAL_FAILURE(Life(step, static_cast<unsigned>(random() % 40'000)));
        ASSERT_NO_FATAL_FAILURE(Check());
        ++lives;
    }
    std::printf("%zu saves, killed %ld times\n", i_saved.size(), lives);
}

}   // namespace
