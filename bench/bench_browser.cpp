// The main window over a library of a million songs, without a display: the longest time for which the main thread does
// not look at its messages while the list opens, scrolls, is sorted, searched, and changes.
//   QT_QPA_PLATFORM=offscreen bench_browser [songs]
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <QApplication>
#include <QLineEdit>
#include <QScrollBar>
#include <random>

#include "App/CNotices.h"
#include "Graphics/CGraphicsPorts.h"
#include "Meta/CMetaManager.h"
#include "Platform/CUserInterface_Plain.h"
#include "Play/CPlayControl.h"
#include "Play/CPlayHost.h"
#include "Shell/CSongTableModel.h"
#include "Shell/XBrowserWindow.h"
#include "Shell/XSongTable.h"
#include "Shell/XSourceList.h"
#include "SongFiles/CLibraryCommands.h"
#include "SongFiles/CSongFileWork.h"
#include "Threads/CThreadHost.h"
#include "Threads/CThreadManager.h"
#include "Values/CPreferences.h"
#include "Widgets/CMainLoop_Qt.h"
#include "Widgets/XLook.h"

namespace {

using Clock = std::chrono::steady_clock;

double MillisecondsSince(Clock::time_point began) {
    return std::chrono::duration<double, std::milli>(Clock::now() - began).count();
}

/** What the main thread has worked. */
double MainMilliseconds() {
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

/** The least application around a main window. */
class Host final : public CThreadHost, public CSongDatabaseHost, public CPlayHost {
public:
    explicit Host(const std::filesystem::path& folder) : i_prefs(PrefsFilesFor(folder), {.saveAtEndB = false}) {
        Install(this);
    }
    ~Host() override { Install(nullptr); }
    CMainLoop& MainLoop() override { return i_loop; }
    bool HasMainWindow() const override { return true; }
    bool IsAppReady() const override { return true; }
    CSongDatabase& Database() override { return *i_databaseP; }
    CCFPrefDictionary& Preferences() override { return i_prefs; }
    CUserInterface& Ui() override { return i_ui; }
    CGraphicsPorts& Ports() override { return i_ports; }

    CMainLoop_Qt i_loop;
    CUserInterface_Plain i_ui{[](std::string_view) {}};
    CGraphicsPorts i_ports;
    CPreferences i_prefs;
    CSongDatabase* i_databaseP = nullptr;
};

/** Does `work`, then runs messages until `doneB` and all is drawn; prints the whole time, and the longest stretch
 * without a look at the messages. */
template <class Work, class Done>
void Step(Host& host, const char* nameZ, Work&& work, Done&& doneB) {
    const auto began = Clock::now();
    double longest = 0, longestCPU = 0;
    const auto turn = [&](auto&& one) {
        const auto pass = Clock::now();
        const double cpu = MainMilliseconds();
        one();
        longest = std::max(longest, MillisecondsSince(pass));
        longestCPU = std::max(longestCPU, MainMilliseconds() - cpu);
    };
    turn(work);
    for (int calmL = 0; calmL < 5;) {
        turn([&] { host.i_loop.PumpOne(kMessage_All); });
        host.i_loop.Wait(0.001);
        calmL = doneB() ? calmL + 1 : 0;
    }
    std::printf("%-36s %9.1f ms in all, longest turn %6.1f ms, %6.1f ms of them worked\n", nameZ,
                MillisecondsSince(began), longest, longestCPU);
}

std::string MadeText(std::mt19937& random, std::size_t wordsL) {
    static constexpr const char* kSyllables[] = {"lo", "ve", "ni", "ght", "da", "nce", "hea", "rt",
                                                 "mo", "on", "ri", "é",   "ö",  "wo",  "man"};
    std::string text;
    for (std::size_t word = 0; word < wordsL; ++word) {
        text += word == 0 ? "" : " ";
        for (std::size_t n = 2 + random() % 3; n > 0; --n) text += kSyllables[random() % std::size(kSyllables)];
    }
    return text;
}

void Measure(Host& host, CSongDatabase& database, std::size_t songsL) {
    std::mt19937 random(7);
    std::vector<std::string> artists(40'000);
    for (std::string& artist : artists) artist = MadeText(random, 2);
    database.SetLoading(true);
    std::vector<SongID> songs;
    for (std::size_t n = 0; n < songsL; ++n) {
        CSong& song = *database.CreateSong();
        song.Meta().SetString("name"_key, MadeText(random, 3));
        song.Meta().SetString("arts"_key, artists[random() % artists.size()]);
        songs.push_back(song.GetSongID());
    }
    database.AddSongsToLibrary(songs);
    database.SetLoading(false);
    CPlayList& library = database.Library();
    CPlayControl play(host);
    CLibraryCommands commands(database, host.i_ui);
    CNotices notices([] {});
    std::unique_ptr<XBrowserWindow> windowP;
    const auto calmB = [&] {
        const auto* const modelP = static_cast<const CSongTableModel*>(windowP->findChild<XSongTable*>()->model());
        return !library.IsSorting() && !modelP->IsLooking();
    };
    Step(
        host, "open the window",
        [&] {
            windowP = std::make_unique<XBrowserWindow>(BrowserSetup{.database = database,
                                                                    .play = play,
                                                                    .prefs = host.i_prefs,
                                                                    .commands = commands,
                                                                    .notices = notices,
                                                                    .portsP = &host.i_ports});
            windowP->resize(1280, 800);
            windowP->show();
        },
        calmB);
    auto& table = *windowP->findChild<XSongTable*>();
    auto& model = static_cast<CSongTableModel&>(*table.model());
    Step(
        host, "scroll through, 200 pages", [] {},
        [&, n = 0]() mutable {
            if (n < 200) table.verticalScrollBar()->setValue(table.verticalScrollBar()->maximum() / 200 * ++n);
            return n == 200;
        });
    Step(
        host, "sort by artist", [&] { model.sort(1, Qt::AscendingOrder); }, calmB);
    Step(
        host, "sort by name, row 7 selected",
        [&] {
            table.selectRow(7);
            model.sort(0, Qt::AscendingOrder);
        },
        calmB);
    Step(
        host, "select all", [&] { table.selectAll(); }, calmB);
    table.clearSelection();
    Step(
        host, "add a song",
        [&] {
            CSong& song = *database.CreateSong();
            song.Meta().SetString("name"_key, "middle");
            database.AddSongToLibrary(song);
        },
        calmB);
    Step(
        host, "rename a song",
        [&] {
            database.GetSong(model.SongAt(model.rowCount() / 2))->Meta().SetString("name"_key, "zzz");
            database.FlushChanges();
        },
        calmB);
    Step(
        host, "remove 3 songs",
        [&] {
            (void)library.RemoveItems({model.ItemAt(5), model.ItemAt(model.rowCount() / 3), model.ItemAt(100)});
        },
        calmB);
    auto& sources = *windowP->findChild<XSourceList*>();
    CPlayList& other = database.AddPlaylist(kSourceDB_PLAYLIST, "Other");
    Step(
        host, "a new list", [] {}, calmB);
    Step(
        host, "show another list", [&] { sources.Select(other.ID()); }, calmB);
    Step(
        host, "and the library again", [&] { sources.Select(kPlaylistID_Library); }, calmB);
    auto& search = *windowP->findChild<QLineEdit*>();
    // A search begins when the typing has paused.
    const auto searched = [&calmB] {
        return [&calmB, began = Clock::now()] { return calmB() && MillisecondsSince(began) > 200; };
    };
    Step(
        host, "search, many found", [&] { search.setText("lo"); }, searched());
    std::printf("    %d rows\n", model.rowCount());
    Step(
        host, "search, few found", [&] { search.setText("lovenight dance"); }, searched());
    std::printf("    %d rows\n", model.rowCount());
    Step(
        host, "show all again", [&] { search.clear(); }, searched());
    Step(
        host, "add 2,000 songs",
        [&] {
            std::vector<SongID> more;
            for (int n = 0; n < 2000; ++n) {
                CSong& song = *database.CreateSong();
                song.Meta().SetString("name"_key, MadeText(random, 3));
                more.push_back(song.GetSongID());
            }
            database.AddSongsToLibrary(more);
        },
        calmB);
    windowP.reset();
}

}   // namespace

int main(int countL, char** wordsZ) {
    QApplication qt(countL, wordsZ);
    const XLook look;
    std::string pattern = (std::filesystem::temp_directory_path() / "bench-browser-XXXXXX").string();
    const std::filesystem::path folder = ::mkdtemp(pattern.data());
    {
        Host host(folder);
        CThreadManager threads;
        CMetaManager meta;
        CSongDatabase database(host);
        const CSongFileWork files(database);
        host.i_databaseP = &database;
        Measure(host, database, countL > 1 ? std::strtoul(wordsZ[1], nullptr, 10) : 1'000'000);
    }
    std::filesystem::remove_all(folder);
}
