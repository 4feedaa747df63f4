#include "App/CAppSaves.h"

#include <sys/stat.h>
#include <atomic>
#include <map>
#include <set>
#include <thread>

#include "App/AppTest.h"
#include "Library/CSongDatabase.h"
#include "Platform/CFileCalls_Faults.h"
#include "Platform/ScriptedClock.h"
#include "SongFiles/CLibraryCommands.h"

namespace {

/** An application whose time is moved by hand, on a disc that can be watched. */
class AppSavesTest : public AppTest {
protected:
    AppSavesTest() : i_faults(CFileCalls::Get()) {}
    ~AppSavesTest() override { CFileCalls::Install(nullptr); }

    fs::path Library() const { return i_folder / "Music/Vopla"; }
    static SongID AddSong(CApp& app, std::string_view name) {
        CSong& song = *app.Database().CreateSong();
        song.Meta().SetString("name"_key, name);
        (void)app.Database().AddSongToLibrary(song);
        return song.GetSongID();
    }
    /** Some time goes by, during which the user moves the mouse or not; a save that runs ends in no time. */
    void Pass(CApp& app, double seconds, bool restlessB) {
        i_clock.Advance(seconds);
        if (restlessB) i_loop.PostInput([] {});
        app.RunLoopPass();
    }
    static void EndWriting(CApp& app) {
        while (app.Saves().IsWriting()) app.RunLoopPass();
    }
    int Logged(const std::string& words) const {
        const std::string log = LogText();
        int countL = 0;
        for (std::size_t at = log.find(words); at != std::string::npos; at = log.find(words, at + 1)) ++countL;
        return countL;
    }

    ScriptedClock i_clock;
    CFileCalls_Faults i_faults;
};

TEST_F(AppSavesTest, TwoSecondsOfRestOrFiveWithout) {
    struct Case {
        const char* nameZ;
        bool restlessB;
        double firstT, lastT;   // when the save may begin
    };
    for (const auto& [nameZ, restlessB, firstT, lastT] :
         {Case{"the user rests", false, 2, 3.5}, Case{"his mouse trembles", true, 4.5, 6.5}}) {
        SCOPED_TRACE(nameZ);
        CApp app(MakeSetup());
        Pass(app, 10, restlessB);
        AddSong(app, nameZ);
        const int before = Logged("Saving Database: Start");
        const auto begunB = [&] { return app.Saves().IsWriting() || Logged("Saving Database: Start") > before; };
        double waitedT = 0;
        for (; !begunB() && waitedT < 30; waitedT += 0.25) {
            if (waitedT == 1) AddSong(app, "another");   // neither puts it off
            Pass(app, 0.25, restlessB);
        }
        EXPECT_GE(waitedT, firstT);
        EXPECT_LE(waitedT, lastT);
    }
}

TEST_F(AppSavesTest, TheMainThreadWaitsForNoDiscAndOnlyWhatChangedIsWritten) {
    CApp app(MakeSetup());
    std::atomic<int> onMainL{0};
    i_faults.SetWatch([&, main = std::this_thread::get_id()](long, const char* callZ, const fs::path&) {
        const std::string_view call(callZ);
        if ((call == "sync" || call == "write") && std::this_thread::get_id() == main) ++onMainL;
    });
    CFileCalls::Install(&i_faults);
    const std::string prefs = "config/Vopla X Preferences.plist", songs = "Music/Vopla/Songs.vlb",
                      index = "Music/Vopla/Library.xml";
    const auto inodes = [&] {   // a new file stands beside the old one before it takes its place: its number is another
        std::map<std::string, ino_t> all;
        for (const std::string& name : {prefs, songs, index}) {
            struct stat info {};
            all[name] = ::stat((i_folder / name).c_str(), &info) == 0 ? info.st_ino : 0;
        }
        return all;
    };
    using Names = std::set<std::string>;
    auto before = inodes();
    const auto saved = [&] {
        for (int n = 0; n < 10; ++n) Pass(app, 0.5, false);
        EndWriting(app);
        EXPECT_FALSE(app.Saves().IsAnyDirty());
        Names names;
        for (const auto& [name, inode] : inodes())
            if (before[name] != inode) names.insert(name);
        before = inodes();
        return names;
    };
    app.Prefs().SetLong("Number of undos", std::int64_t{7});
    EXPECT_EQ(saved(), Names{prefs});
    const SongID song = AddSong(app, "One");
    EXPECT_EQ(saved(), (Names{songs, index}));
    app.Database().GetSong(song)->Meta().SetString("name"_key, "Two");
    EXPECT_EQ(saved(), Names{songs});
    app.Prefs().SetLong("Number of undos", std::int64_t{8});
    app.Prefs().SetLong("Number of undos", std::int64_t{7});   // as the file has it
    EXPECT_EQ(saved(), Names());
    EXPECT_EQ(onMainL.load(), 0);
    CFileCalls::Install(nullptr);
}

TEST_F(AppSavesTest, OneBackOffForAllAndSavedSoonOnceItCanBe) {
    CApp app(MakeSetup());
    CFileCalls::Install(&i_faults);
    i_faults.SetSpace(0);   // the disc is full
    AddSong(app, "One");
    app.Prefs().SetLong("Number of undos", std::int64_t{7});
    for (double waitedT = 0; waitedT < 30; waitedT += 0.5) {
        Pass(app, 0.5, false);
        EndWriting(app);
    }
    EXPECT_GE(Logged("Starting: Saving Preferences"), 3);
    EXPECT_LE(Logged("Starting: Saving Preferences"), 6);
    EXPECT_EQ(Logged("Starting: Saving Preferences"), Logged("saving the library"));
    EXPECT_EQ(i_ui.alerts.size(), 2U) << "told once each";
    i_faults.SetSpace(std::uint64_t{1} << 30);
    double waitedT = 0;
    for (; app.Saves().IsAnyDirty() && waitedT < 60; waitedT += 0.5) {
        Pass(app, 0.5, false);
        EndWriting(app);
    }
    EXPECT_LE(waitedT, 10);
    EXPECT_TRUE(fs::exists(Library() / "Songs.vlb"));
    EXPECT_TRUE(fs::exists(i_folder / "config/Vopla X Preferences.plist"));
    CFileCalls::Install(nullptr);
}

TEST_F(AppSavesTest, AQuitThatCannotSaveAsks) {
    enum : std::size_t { kTryAgain, kElsewhere, kQuit };
    const fs::path elsewhere = i_folder / "stick";
    fs::create_directory(elsewhere);
    struct Case {
        const char* nameZ;
        std::vector<std::size_t> answers;
        std::vector<std::optional<fs::path>> folders;
        bool nobodyB;
        std::size_t askedL;
        fs::path copyIn;
    };
    const Case cases[] = {
        {"try again, change one's mind, a copy",
         {kTryAgain, kElsewhere, kElsewhere},
         {std::nullopt, elsewhere},
         false,
         3,
         elsewhere},
        {"a copy where nothing can be written", {kElsewhere, kElsewhere}, {Library(), elsewhere}, false, 2, elsewhere},
        {"quit", {kQuit}, {}, false, 1, i_folder},
        {"the dialog goes away", {}, {}, false, 1, i_folder},
        {"the system ends it", {}, {}, true, 0, i_folder},
    };
    i_faults.SetWatch([&](long n, const char* callZ, const fs::path& path) {
        const std::string_view call(callZ);
        const bool makesB = call == "access" || call == "mkdir" || call == "open";
        if (makesB && path.string().starts_with(Library().string())) i_faults.FailAt(n, EROFS);
    });
    for (const Case& c : cases) {
        SCOPED_TRACE(c.nameZ);
        i_ui.questions.clear();
        for (const std::size_t n : c.answers) i_ui.answers.push_back({n, false});
        for (const auto& folder : c.folders) i_ui.folders.push_back(folder);
        {
            CApp app(MakeSetup());
            AddSong(app, c.nameZ);
            CFileCalls::Install(&i_faults);
            if (c.nobodyB) app.QuitWithoutAsking();
        }
        CFileCalls::Install(nullptr);
        EXPECT_EQ(i_ui.questions.size(), c.askedL);
        EXPECT_FALSE(fs::exists(Library() / "Songs.vlb"));
        std::vector<fs::path> copies;
        for (const auto& entry : fs::directory_iterator(c.copyIn))
            if (entry.path().filename().string().starts_with("Vopla library ")) copies.push_back(entry.path());
        ASSERT_EQ(copies.size(), 1U);
        EXPECT_EQ(Logged(copies.front().string()) > 0, true) << "told";
        // It is a library, whole: put in the place of the other, it is loaded.
        fs::remove_all(Library());
        fs::rename(copies.front(), Library());
        {
            CApp app(MakeSetup());
            ASSERT_EQ(app.Database().Library().Count(), 1U);
            EXPECT_EQ(app.Database().GetSong(app.Database().Songs()->Ids().front())->Name(), SuperString(c.nameZ));
        }
        fs::remove_all(Library());
    }
}

TEST_F(AppSavesTest, AQuitThatCanWriteNowhereAsksOnceMore) {
    std::vector<std::size_t> answers(2, 2);   // "Quit All the Same"
    for (const std::size_t n : answers) i_ui.answers.push_back({n, false});
    i_faults.SetWatch([&](long n, const char* callZ, const fs::path&) {
        const std::string_view call(callZ);
        if (call == "access" || call == "mkdir" || call == "write") i_faults.FailAt(n, ENOSPC);
    });
    {
        CApp app(MakeSetup());
        AddSong(app, "lost");
        CFileCalls::Install(&i_faults);
    }
    CFileCalls::Install(nullptr);
    ASSERT_EQ(i_ui.questions.size(), 2U);
    EXPECT_NE(i_ui.questions[0].text.find("writes a copy beside its log"), std::string::npos) << i_ui.questions[0].text;
    EXPECT_NE(i_ui.questions[1].text.find("what you changed is lost"), std::string::npos) << i_ui.questions[1].text;
    EXPECT_NE(i_ui.questions[1].text.find("Disk is full"), std::string::npos) << i_ui.questions[1].text;
}

TEST_F(AppSavesTest, AQuitWaitsForNoClock) {
    {
        CApp app(MakeSetup());
        const SongID song = AddSong(app, "One");
        (void)app.LibraryCommands().Zipper().Zip(song);   // its queue has a thread now
        app.Prefs().SetLong("Number of undos", std::int64_t{7});
    }   // the time stands still: whoever waits for it never comes back
    EXPECT_EQ(Logged("was forced to kill"), 0);
    EXPECT_EQ(Logged("Quit Successful"), 1);
}

}   // namespace
