#include "App/CApp.h"

#include <gtest/gtest.h>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>

#include "App/AppTest.h"
#include "App/CAppSaves.h"
#include "App/MemoryWarning.h"
#include "App/PreferenceRequest.h"
#include "App/SaveRules.h"
#include "App/TVoplaApp.h"
#include "Graphics/CGraphics.h"
#include "Library/CSongDatabase.h"
#include "Meta/CMetaManager.h"
#include "Platform/CClock.h"
#include "Play/CPlayControl.h"
#include "Threads/CallOnMain.h"
#include "Threads/CSemaphore.h"
#include "Threads/WaitMode.h"

namespace {

TEST_F(AppTest, StartsAndQuitsInTheToldOrder) {
    { const CApp app(MakeSetup()); }
    EXPECT_EQ(gApp, nullptr);
    const std::string log = LogText();
    std::size_t from = 0;
    for (const char* const wordsZ : {"initting prefs",
                                     "New Vopla",
                                     "Thread Manager Initted",
                                     "Loading Plugins",
                                     "Creating Song Database",
                                     "Installing event handlers",
                                     "new timer <idle timer save>",
                                     "new timer <idle timer log Time>",
                                     "new timer <idle timer no sleep>",
                                     "new timer <idle timer graphics>",
                                     "new timer <idle timer app>",
                                     "Getting App Res Folder",
                                     "Creating task manager",
                                     "Loading Database",
                                     "Creating Browser Window",
                                     "Initializing Fast CDG Upscaling",
                                     "Showing Windows",
                                     "Flushing Events",
                                     "Ready!",
                                     "Quitting",
                                     "Shutting down Web Server",
                                     "Saving Database…",
                                     "Hide Windows",
                                     "Timers: 5",
                                     "closing prefs",
                                     "Done: Saving Preferences",
                                     "Shutting down thread manager",
                                     "closing database",
                                     "Quit Successful"}) {
        const std::size_t at = log.find(wordsZ, from);
        ASSERT_NE(at, std::string::npos) << wordsZ << " is missing, or stands too early";
        from = at;
    }
    EXPECT_TRUE(fs::exists(i_folder / "config" / "Vopla X Preferences.plist"));
    ASSERT_FALSE(i_ui.progress.empty());
    EXPECT_EQ(i_ui.progress.front(), "Initializing Vopla 1.0a01r13");
}

TEST_F(AppTest, TheMetaManagerFollowsThePreferences) {
    {
        CApp app(MakeSetup());
        ASSERT_NE(s_MetaManagerP, nullptr);
        EXPECT_EQ(s_MetaManagerP->Software(), CApp::DisplayName());
        EXPECT_TRUE(s_MetaManagerP->MovesArticles());
        EXPECT_FALSE(s_MetaManagerP->GetTraits("siID"_key).Has(kKeyFlag_Column));
        app.Prefs().SetBool("Move 'The' to end of Artits title", false);
        EXPECT_TRUE(RunUntil(app, [] { return !s_MetaManagerP->MovesArticles(); }));
        app.Prefs().SetBool("Show Singer ID", true);
    }
    EXPECT_EQ(s_MetaManagerP, nullptr);
    const CApp app(MakeSetup());   // the next start
    EXPECT_FALSE(s_MetaManagerP->MovesArticles());
    EXPECT_TRUE(s_MetaManagerP->GetTraits("siID"_key).Has(kKeyFlag_Column));
}

TEST_F(AppTest, WithoutItsFolderItDoesNotStart) {
    AppSetup setup = MakeSetup();
    setup.resources = i_folder / "nowhere";
    EXPECT_EXIT({ const CApp app(setup); }, testing::ExitedWithCode(1), "vopla: Could not get app bundle");
}

TEST_F(AppTest, AMissingMusicFolderIsAskedFor) {
    std::ofstream(i_folder / "Music") << "a file where the folder should be";
    const fs::path chosen = i_folder / "elsewhere";
    fs::create_directory(chosen);
    i_ui.answers = {Answer{1, false}, Answer{2, false}, Answer{2, false}};   // try again, find it and cancel, find it
    i_ui.folders = {std::nullopt, chosen};
    const CApp app(MakeSetup());
    ASSERT_EQ(i_ui.questions.size(), 3U);
    EXPECT_EQ(i_ui.questions.front().title, "“Vopla” folder not found");
    EXPECT_EQ(i_ui.questions.front().buttons, (std::vector<std::string>{"Quit", "Try again", "Find it"}));
    EXPECT_TRUE(i_ui.folders.empty());
}

TEST(SaveRules, TheFirstThatDoesNotHoldIsNamed) {
    const SaveState fine{.databaseDirtyB = true};
    EXPECT_FALSE(RefuseSave(fine).has_value());
    const struct {
        void (*spoil)(SaveState&);
        const char* nameZ;
        const char* valueZ;
    } kCases[] = {
        {[](SaveState& s) { s.shutdownB = true; }, "gApp->IsShutdown()", "TRUE"},
        {[](SaveState& s) { s.resizingWindowB = true; }, "gApp->i_resizing_windB", "TRUE"},
        {[](SaveState& s) { s.idleGraphicsB = false; }, "gApp->i_idleGraphicsB", "FALSE"},
        {[](SaveState& s) { s.initializingB = true; }, "gApp->IsInitializing()", "TRUE"},
        {[](SaveState& s) { s.addingToLibraryB = true; }, "gApp->i_db->IsAddingToLibrary()", "TRUE"},
        {[](SaveState& s) { s.databaseDirtyB = false; }, "gApp->i_db->IsDirty()", "FALSE"},
    };
    SaveState state = fine;   // spoiled from the last rule to the first: each hides those behind it
    for (const auto& c : kCases) {
        c.spoil(state);
        const auto refusal = RefuseSave(state);
        ASSERT_TRUE(refusal.has_value()) << c.nameZ;
        EXPECT_STREQ(refusal->nameZ, c.nameZ);
        EXPECT_STREQ(refusal->valueZ, c.valueZ);
    }
    SaveState late{.databaseDirtyB = true,
                   .addingToLibraryB = true,
                   .idleGraphicsB = false,
                   .resizingWindowB = true,
                   .lateB = true};
    EXPECT_FALSE(RefuseSave(late).has_value()) << "no state holds a save up for long";
    late.shutdownB = true;
    EXPECT_TRUE(RefuseSave(late).has_value());
}

TEST_F(AppTest, TooLittleMemoryIsToldOnceADay) {
    const CFDate now{1000 * 86400.0}, anHourAgo{now.absoluteT - 3600}, twoDaysAgo{now.absoluteT - 2 * 86400},
        toCome{now.absoluteT + 9e6};
    const struct {
        std::uint64_t freeL;
        CFDate told;
        bool warnedB;
    } kCases[] = {
        {kMemory_Wanted, {}, false}, {kMemory_Wanted - 1, {}, true},     {0, anHourAgo, false},
        {0, twoDaysAgo, true},       {kMemory_Wanted - 1, toCome, true},
    };
    for (const auto& c : kCases) EXPECT_EQ(MemoryWarning(c.freeL, c.told, now).has_value(), c.warnedB) << c.freeL;
    std::ofstream(i_folder / "facts") << "MemTotal:  24 kB\nMemFree:   7 kB\nMemAvailable:  2048 kB\n";
    EXPECT_EQ(FreeMemory(i_folder / "facts"), 2U << 20);
    EXPECT_FALSE(FreeMemory(i_folder / "none").has_value());
    EXPECT_TRUE(FreeMemory().has_value());
}

TEST_F(AppTest, WhatTheQuitSavedIsThereAtTheNextStart) {
    SongID song{0};
    {
        CApp app(MakeSetup());
        EXPECT_FALSE(app.Database().IsDirty());   // a library that was not there is no change
        CSong& made = *app.Database().CreateSong();
        song = made.GetSongID();
        made.Meta().SetString("name"_key, "Kept");
        (void)app.Database().AddSongToLibrary(made);
        app.Database().AddPlaylist(kSourceDB_PLAYLIST, "Mine").AddItem({song});
    }
    const std::string log = LogText();
    std::size_t from = 0;
    for (const char* const wordsZ :
         {"Saving Database…", "Saving Database: End", "Library.xml", "Hide Windows", "closing database",
          "Waiting for purges", "reverting library", "disposing song database backend", "Clearing Song List",
          "Closing Database", "disposing singers (if any)", "disposing playlists", "Deleting task manager"}) {
        from = log.find(wordsZ, from);
        ASSERT_NE(from, std::string::npos) << wordsZ << " is missing, or stands too early";
    }
    {
        CApp app(MakeSetup());
        ASSERT_NE(app.Database().GetSong(song), nullptr);
        EXPECT_EQ(app.Database().GetSong(song)->Name(), SuperString("Kept"));
        ASSERT_NE(app.Database().GetPlayList(kSourceDB_PLAYLIST), nullptr);
        EXPECT_EQ(app.Database().GetPlayList(kSourceDB_PLAYLIST)->Count(), 1U);
        EXPECT_FALSE(app.Database().IsDirty());

        // An edit reaches the disc by the timer.
        const fs::path songs = i_folder / "Music/Vopla/Songs.vlb";
        const auto before = fs::last_write_time(songs);
        app.Database().GetSong(song)->Meta().SetString("name"_key, "Edited");
        EXPECT_TRUE(RunUntil(app, [&] { return fs::last_write_time(songs) != before && !app.Saves().IsWriting(); }));
        app.Database().GetSong(song)->Meta().SetString("name"_key, "A moment before the quit");
        EXPECT_FALSE(app.Database().IsDirty());
    }
    i_ui.shiftB = true;
    CApp app(MakeSetup());
    EXPECT_EQ(app.Database().GetSong(song)->Name(), SuperString("A moment before the quit"));
    EXPECT_TRUE(app.Database().IsDirty());   // all is saved anew for who holds Shift
    EXPECT_NE(LogText().find("** Database dirty because: shift held on startup"), std::string::npos);
}

TEST_F(AppTest, AQuitThatOvertakesTheAddingOfFilesLeavesALibrary) {
    constexpr std::size_t kFiles = 1500;
    const fs::path many = i_folder / "many";
    fs::create_directories(many);
    for (std::size_t n = 0; n < kFiles; ++n) std::ofstream(many / ("Anna - Song " + std::to_string(n) + ".mp3")) << n;
    {
        TVoplaApp application(MakeSetup());
        application.StartUp();
        application.RequestQuit(QuitAsk::kNobody);
        EXPECT_EQ(application.Run({many.string()}), 0);
        application.ShutDown();
    }
    CApp app(MakeSetup());
    EXPECT_EQ(app.Database().Library().Count(), app.Database().Songs()->Count());
}

TEST_F(AppTest, TheQuitPurgesTheCache) {
    constexpr int kFiles = 28, kAllowed = 25;
    fs::path cache;
    const auto file = [&](int n) { return cache / (std::to_string(n) + " Song.pcm"); };
    {
        CApp app(MakeSetup());
        cache = app.Prefs().CacheFolder();
        fs::create_directories(cache);
        for (int n = 1; n <= kFiles; ++n) {
            std::ofstream(file(n)) << n;
            fs::last_write_time(file(n), fs::file_time_type::clock::now() - std::chrono::hours(100 - n));
        }
    }
    for (int n = 1; n <= kFiles; ++n) EXPECT_EQ(fs::exists(file(n)), n > kFiles - kAllowed) << n;
}

TEST_F(AppTest, ARefusedLibraryEndsTheProgramAndIsLeftAsItIs) {
    const fs::path songs = i_folder / "Music/Vopla/Songs.vlb";
    fs::create_directories(songs.parent_path());
    const std::string later(
        "\0\1\0\1\0\x0B\0\0\0\0\0\1"
        "twelve bytes",
        24);
    std::ofstream(songs, std::ios::binary) << later;
    TVoplaApp application(MakeSetup());
    application.StartUp();
    EXPECT_EQ(i_ui.questions.size(), 1U);   // nobody answers it: quit
    EXPECT_EQ(application.Run({}), 1);
    application.ShutDown();
    std::stringstream bytes;
    bytes << std::ifstream(songs, std::ios::binary).rdbuf();
    EXPECT_EQ(bytes.str(), later);
}

TEST_F(AppTest, AChangedPreferenceIsSavedAfterTwoIdleSeconds) {
    CApp app(MakeSetup());
    const double startT = CClock::Get().SteadyT();
    app.Prefs().SetLong("Number of undos", std::int64_t{7});
    EXPECT_TRUE(app.Saves().IsAnyDirty());
    ASSERT_TRUE(RunUntil(app, [&] { return !app.Saves().IsAnyDirty() && !app.Saves().IsWriting(); }));
    EXPECT_GE(CClock::Get().SteadyT() - startT, 1.9);
    EXPECT_NE(LogText().find("Done: Saving Preferences"), std::string::npos);
}

/** At start and quit the main thread pumps while it waits; in a show no other key's deed runs in the middle of one. */
TEST_F(AppTest, AShowThatPumpsWhileItWaitsIsAFault) {
    {
        CApp app(MakeSetup());
        EXPECT_EQ(LogText().find("the show waits"), std::string::npos);
        WaitOneTurn();
        EXPECT_NE(LogText().find("the show waits"), std::string::npos);
        std::ofstream(i_folder / "log.txt", std::ios::trunc);
        CSemaphore semaphore("test");
        semaphore.Signal();
        EXPECT_EQ(semaphore.Wait(WaitMode::kMain_TimersPaint), noErr);   // it need not wait this time
        EXPECT_NE(LogText().find("the show waits"), std::string::npos);
        std::ofstream(i_folder / "log.txt", std::ios::trunc);
    }
    EXPECT_EQ(LogText().find("the show waits"), std::string::npos);
}

/** A song that only counts what it was asked. */
class Song final : public CPlayingSong {
public:
    bool IsPlaying() const override { return playingB; }
    void VideoIdle(bool) override { ++idlesL; }
    void Stop() override { playingB = false; }
    bool playingB = true;
    int idlesL = 0;
};

TEST_F(AppTest, AsksBeforeAChangeOfSong) {
    CApp app(MakeSetup());
    Song song;
    const struct {
        long modeL;
        bool playingB, alwaysB, transportB;
        std::size_t button;
        bool askedB, allowedB;
    } kCases[] = {
        {3, false, true, true, 1, false, true},  {3, true, false, false, 0, true, true},
        {3, true, false, false, 1, true, false}, {1, true, false, true, 1, false, true},
        {1, true, true, false, 1, true, false},  {2, true, true, false, 1, false, true},
        {2, true, true, true, 0, true, true},    {4, true, true, true, 1, false, true},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(testing::Message() << "mode " << c.modeL << " always " << c.alwaysB << " transport "
                                        << c.transportB);
        song.playingB = c.playingB;
        app.SetCurrentSong(&song);
        app.Prefs().SetBool("Always confirm manual song changes", c.alwaysB);
        app.Prefs().SetBool("Always confirm manual song changes (transport buttons)", c.transportB);
        i_ui.questions.clear();
        i_ui.answers = {Answer{c.button, false}};
        bool allowedB = false;
        app.ConfirmManualSongChange(c.modeL, [&] { allowedB = true; });
        EXPECT_EQ(allowedB, c.allowedB);
        ASSERT_EQ(i_ui.questions.size(), c.askedB ? 1U : 0U);
        if (c.askedB) {
            EXPECT_EQ(i_ui.questions[0].defaultIndex, 1U);   // Return goes on with the song
        }
    }
    song.playingB = true;
    app.PrepareToQuit();
    EXPECT_TRUE(app.IsShutdown());
    EXPECT_FALSE(song.playingB);
    app.SetCurrentSong(nullptr);
}

TEST_F(AppTest, TheGraphicsTimerDrawsTheCurrentSong) {
    CApp app(MakeSetup());
    Song song;
    app.SetCurrentSong(&song);
    EXPECT_TRUE(RunUntil(app, [&] { return song.idlesL >= 3; }));
    app.SetCurrentSong(nullptr);
}

TEST_F(AppTest, PlaysASongAtThePaceOfTheClockAndSeeksTrue) {
    CApp app(MakeSetup());
    app.Prefs().SetString("Audio Output Device", SuperString("dummy"));
    const fs::path file = fs::path(VOPLA_SOURCE_DIR) / "resources/demo/Vopla Demo - Amazing Grace.cdg";
    CSong* const songP = app.Database().CreateSong();
    songP->Meta().SetSongFile("Sfs1"_key, {.status = SDB_SongFileStatus_REFERENCE, .ref = CFileRef(file)});
    const PLItemID item = app.Database().AddSongToLibrary(*songP);
    CPlayControl& play = app.Play();
    ASSERT_EQ(play.Play(kPlaylistID_Library, item), noErr);
    ASSERT_TRUE(RunUntil(app, [&] { return play.State() == PlayState::kPlaying; }));
    ASSERT_TRUE(RunUntil(app, [&] { return play.CurTime300() > 0; }));
    const double startT = CClock::Get().SteadyT();
    const long start300 = play.CurTime300();
    ASSERT_TRUE(RunUntil(app, [&] { return play.CurTime300() >= start300 + 300; }));
    // Both are read at one moment: a busy machine may make the loop late, but never the clock of the picture.
    EXPECT_NEAR(static_cast<double>(play.CurTime300() - start300) / 300.0, CClock::Get().SteadyT() - startT, 0.3);

    // A seek back replays: the picture is the one that a song which never was further shows.
    play.SetPaused(true);
    const auto pictureAt = [&](long time300) {
        play.SeekTo300(time300);
        play.VideoIdle(false);
        EXPECT_TRUE(RunUntil(app, [&] { return play.CurTime300() >= time300; }));
        const CPixels& picture = play.Current()->Graphics()->Picture();
        return std::vector<std::uint8_t>(picture.base(), picture.base() + picture.rowBytes() * 216);
    };
    play.SetPaused(false);
    const auto early = pictureAt(5 * 300);
    EXPECT_NE(pictureAt(40 * 300), early);
    EXPECT_EQ(pictureAt(5 * 300), early);   // the title page stands: some packets more change nothing
}

TEST_F(AppTest, AProcPostedBeforeTheWindowStandsRunsInItsOrder) {
    CApp app(MakeSetup());
    std::vector<int> order;
    for (int n = 0; n < 3; ++n) EXPECT_TRUE(PostToMain("note", [&order, n] { order.push_back(n); }));
    EXPECT_TRUE(RunUntil(app, [&] { return order.size() == 3; }));
    EXPECT_EQ(order, (std::vector<int>{0, 1, 2}));
}

}   // namespace
