// The application and its windows, its command line, and the files that it is given.
#include "App/CApp.h"

#include <gtest/gtest.h>
#include <filesystem>
#include <future>
#include <map>

#include "App/AppTest.h"
#include "App/CAppSaves.h"
#include "App/PreferenceRequest.h"
#include "App/TVoplaApp.h"
#include "Graphics/CArtworkPort.h"
#include "Graphics/CGraphics.h"
#include "Graphics/COffscreen.h"
#include "Graphics/Png.h"
#include "Graphics/PortTest.h"
#include "Library/CSongDatabase.h"
#include "Play/CPlayControl.h"

namespace {

/** Windows that remember what was done to them. */
class Windows final : public CAppWindows {
public:
    std::vector<WindowRow> Rows() const override {
        return {{PREF_Wind_BROWSER, "Browser", {}, true},
                {PREF_Wind_VIDEO2, "Video 2", WindowRow::FullScreen{"Full Screen2", "Full Screen2 Display"}},
                {PREF_Wind_VIDEO, "Video", WindowRow::FullScreen{"Full Screen", "Full Screen Display"}, true},
                {PREF_Wind_TASKS, "Tasks"}};
    }
    void Create(WindowKind kind) override {
        places.try_emplace(kind);
        if (kind == PREF_Wind_VIDEO) Ports().Enter(screen.port);
    }
    void Dispose(WindowKind kind) override {
        places.erase(kind);
        if (kind == PREF_Wind_VIDEO) Ports().Leave(screen.port);
    }
    bool Exists(WindowKind kind) const override { return places.contains(kind); }
    void Show(WindowKind kind) override { places[kind].visibleB = true; }
    void Hide(WindowKind kind) override { places[kind].visibleB = false; }
    void Select(WindowKind) override {}
    void SetPlace(WindowKind kind, const Place& place) override { places[kind] = place; }
    std::optional<Place> PlaceOf(WindowKind kind) const override {
        const auto found = places.find(kind);
        return found == places.end() ? std::nullopt : std::optional(found->second);
    }
    void SetStatus(std::string_view) override {}
    void KeepDisplayOn(bool neededB) override { displayB = neededB; }
    bool displayB = false;
    std::map<WindowKind, Place> places;
    Screen screen{0};
};

TEST_F(AppTest, WindowsComeBackWhereTheyStood) {
    Windows windows;
    AppSetup setup{
        .loop = i_loop, .ui = i_ui, .windows = windows, .resources = MakeSetup().resources, .prefs = MakeSetup().prefs};
    {
        CApp app(setup);
        windows.places[PREF_Wind_VIDEO] = {10, 20, 310, 420, true, true};
        windows.places[PREF_Wind_TASKS] = {1, 2, 30, 40, false, false};
        // Any save takes them along: a machine that is cut off keeps them, too.
        CSong& song = *app.Database().CreateSong();
        (void)app.Database().AddSongToLibrary(song);
        EXPECT_TRUE(RunUntil(app, [&] { return !app.Saves().IsAnyDirty() && !app.Saves().IsWriting(); }));
        const CPreferences kept(setup.prefs, {.saveAtEndB = false});
        ASSERT_TRUE(kept.Window("Video"));
        EXPECT_EQ(kept.Window("Video")->rightS, 420);
    }
    windows.places.clear();
    const CApp app(setup);
    const auto video = windows.places[PREF_Wind_VIDEO];
    EXPECT_EQ(video.top, 10);
    EXPECT_EQ(video.right, 420);
    EXPECT_TRUE(video.visibleB);
    EXPECT_TRUE(video.fullScreenB);
    EXPECT_FALSE(windows.places[PREF_Wind_TASKS].visibleB);
}

TEST_F(AppTest, TheCommandLineSetsAPreference) {
    Windows windows;
    TVoplaApp application({.loop = i_loop,
                           .ui = i_ui,
                           .windows = windows,
                           .resources = MakeSetup().resources,
                           .prefs = MakeSetup().prefs});
    application.StartUp();
    const auto ask = [&application](const std::string& request) {
        return std::async(std::launch::async,
                          [&application, request] { return ReadPreferenceAnswer(application.OnRequest(request)); });
    };
    auto set = ask(PreferenceRequest_Set("Number of undos", "5"));
    EXPECT_TRUE(RunUntil(*gApp, [&] { return set.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }));
    EXPECT_EQ(set.get().err, noErr);
    EXPECT_EQ(gApp->Prefs().GetLong("Number of undos"), 5);
    auto late = ask(PreferenceRequest_All());   // nobody comes to it: the thread that waits must not hold up the quit
    application.EndRequests();
    EXPECT_EQ(late.get().err, opWrErr);
    application.ShutDown();
}

TEST_F(AppTest, FilesThatAreOpenedEnterTheLibraryAndInterruptNothing) {
    Windows windows;
    TVoplaApp application({.loop = i_loop,
                           .ui = i_ui,
                           .windows = windows,
                           .resources = MakeSetup().resources,
                           .prefs = MakeSetup().prefs});
    application.StartUp();
    gApp->Prefs().SetString("Audio Output Device", SuperString("dummy"));
    gApp->Prefs().SetBool("Always confirm manual song changes", true);
    const std::string demo = std::string(VOPLA_SOURCE_DIR) + "/resources/demo/Vopla Demo - Amazing Grace.cdg";
    const std::string other = (i_folder / "Other\nline.mp3").string(), folder = (i_folder / "folder").string();
    const auto copy = [&](const std::string& to) { fs::copy_file(fs::path(demo).replace_extension(".mp3"), to); };
    copy(other);
    fs::create_directory(folder);
    copy(folder + "/a.mp3");
    copy(folder + "/b.mp3");
    enum class Play { kNone, kDemo };
    constexpr BoolPref kKey = "Auto-play when you add single song to Library";
    const struct {
        LaunchFiles files;
        bool autoB, stoppedB;   // before
        std::size_t countL, alertsL;
        Play play;
    } cases[] = {
        {{demo}, false, true, 1, 0, Play::kNone},
        {{demo}, true, true, 1, 0, Play::kDemo},
        {{"/nowhere/none.mp3"}, true, false, 1, 1, Play::kDemo},
        {{other}, true, false, 2, 1, Play::kDemo},
        {{"/nowhere/none.mp3", other, demo}, true, false, 2, 2, Play::kDemo},
        {{folder}, true, false, 4, 2, Play::kDemo},
        {{folder}, true, true, 4, 2, Play::kNone},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.files.front() + (c.stoppedB ? " stopped" : ""));
        gApp->Prefs().SetBool(kKey, c.autoB);
        if (c.stoppedB) gApp->Play().Stop();
        application.OnSecondInstance(LaunchFilesOf(LaunchText(c.files)));
        i_loop.Post([] {});
        for (int n = 0; n < 3; ++n) gApp->RunLoopPass();   // it has begun
        EXPECT_TRUE(RunUntil(*gApp, [&] {
            return !gApp->Database().IsAddingToLibrary() && gApp->Database().Library().Count() == c.countL &&
                   i_ui.alerts.size() == c.alertsL && gApp->IsSongPlaying() == (c.play != Play::kNone);
        }));
        const CSong* const songP = gApp->Database().GetSong(gApp->Play().CurrentSong());
        const std::string name = songP == nullptr ? "" : songP->FileRef(SDB_SongFile_AUDIO).GetName();
        EXPECT_EQ(name, c.play == Play::kNone ? "" : "Vopla Demo - Amazing Grace.mp3");
    }
    EXPECT_TRUE(i_ui.questions.empty());
    application.OnSecondInstance({});
    EXPECT_TRUE(RunUntil(*gApp, [&] { return i_ui.alerts.size() == 3; }));
    application.RequestQuit(QuitAsk::kNobody);
    EXPECT_EQ(application.Run({}), 0);
    application.ShutDown();
}

TEST_F(AppTest, ThePictureOfTheBreakFollowsItsPreference) {
    const fs::path file = i_folder / "break.png";
    COffscreen pixels;
    ASSERT_EQ(pixels.Create({0, 0, 20, 40}, 32), noErr);
    ASSERT_EQ(pixels.Fill32(pixels.bounds(), 0xFF336699), noErr);
    ASSERT_EQ(WritePng(pixels, file), noErr);
    Windows windows;
    const AppSetup setup{
        .loop = i_loop, .ui = i_ui, .windows = windows, .resources = MakeSetup().resources, .prefs = MakeSetup().prefs};
    const auto shown = [&windows] {
        windows.screen.pictureP = nullptr;
        windows.screen.port.Redraw();
        return windows.screen.pictureP;
    };
    {
        CApp app(setup);
        EXPECT_EQ(shown(), nullptr);
        app.Prefs().SetString("Break Picture", SuperString(file.string()));
        ASSERT_TRUE(RunUntil(app, [&] { return shown() != nullptr; }));
        EXPECT_EQ(shown()->bounds(), (Rect{0, 0, 20, 40}));
        EXPECT_EQ(shown()->PixelAt(7, 7), 0xFF336699U);
        EXPECT_EQ(windows.screen.to, (Rect{33, 0, 183, 300})) << "all of it, as large as it goes";
        EXPECT_TRUE(windows.screen.port.OverlayNames().empty());
    }
    {
        CApp app(setup);   // the next start
        ASSERT_TRUE(RunUntil(app, [&] { return shown() != nullptr; }));
        app.Prefs().SetString("Break Picture", SuperString((i_folder / "log.txt").string()));
        ASSERT_TRUE(RunUntil(app, [&] { return !i_ui.alerts.empty(); }));
        EXPECT_NE(i_ui.alerts.front().find("The break picture could not be read: log.txt"), std::string::npos);
        EXPECT_EQ(shown(), nullptr);
    }
    i_ui.alerts.clear();
    CApp app(setup);
    const auto failures = [this] {
        const std::string log = LogText(), line = "### Error reading the break picture";
        int countL = 0;
        for (std::size_t at = log.find(line); at != std::string::npos; at = log.find(line, at + 1)) ++countL;
        return countL;
    };
    ASSERT_TRUE(RunUntil(app, [&] { return failures() == 2; }));
    for (int n = 0; n < 3; ++n) app.RunLoopPass();
    EXPECT_TRUE(i_ui.alerts.empty()) << "at the start only the log is told";
}

TEST_F(AppTest, ThePreviewShowsTheCoverOfASongWithoutAPicture) {
    COffscreen picture;
    ASSERT_EQ(picture.Create({0, 0, 20, 40}, 32), noErr);
    ASSERT_EQ(picture.Fill32(picture.bounds(), 0xFF336699), noErr);
    ASSERT_EQ(WritePng(picture, i_folder / "a.png"), noErr);
    const fs::path song = i_folder / "a.mp3";
    const std::string make = "ffmpeg -v error -nostdin -f lavfi -i sine=d=30 -i '" + (i_folder / "a.png").string() +
                             "' -map 0 -map 1 -c:v copy '" + song.string() + "'";
    ASSERT_EQ(std::system(make.c_str()), 0);
    Screen pane{1};
    CArtworkPort preview(pane);
    Windows windows;
    windows.Ports().Enter(preview);
    {
        CApp app({.loop = i_loop,
                  .ui = i_ui,
                  .windows = windows,
                  .resources = MakeSetup().resources,
                  .prefs = MakeSetup().prefs});
        app.Prefs().SetString("Audio Output Device", SuperString("dummy"));
        CSong* const songP = app.Database().CreateSong();
        songP->Meta().SetSongFile("Sfs0"_key, {.status = SDB_SongFileStatus_REFERENCE, .ref = CFileRef(song)});
        const PLItemID item = app.Database().AddSongToLibrary(*songP);
        const auto shown = [&] {
            pane.pictureP = nullptr;
            preview.Redraw();
            return pane.pictureP;
        };
        ASSERT_EQ(app.Play().Play(kPlaylistID_Library, item), noErr);
        ASSERT_TRUE(RunUntil(app, [&] { return shown() != nullptr; }));
        EXPECT_EQ(shown()->PixelAt(39, 19), 0xFF336699U);
        windows.screen.pictureP = nullptr;
        windows.screen.port.Redraw();
        EXPECT_EQ(windows.screen.pictureP, nullptr) << "the room does not see it";
        app.Play().Stop();
        ASSERT_TRUE(RunUntil(app, [&] { return shown() == nullptr; }));
    }
    windows.Ports().Leave(preview);
}

}   // namespace
