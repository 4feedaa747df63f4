#include "Graphics/CPortWindow.h"
#include "Graphics/PortTest.h"
#include "Play/CPlayControl.h"
#include "Play/PlayTest.h"

namespace {

using enum PlayState;

TEST_F(PlayTest, WhatComesNextIsThePreferences) {
    for (const char* const nameZ : {"a", "b"}) Add(Sound(std::string(nameZ) + ".wav", 1));
    for (unsigned bits = 0; bits < 8; ++bits) {
        const bool endB = (bits & 1) != 0, pauseB = (bits & 2) != 0, stopB = (bits & 4) != 0;
        i_preferences.SetBool("Stop at playlist end", endB);
        i_preferences.SetBool("Pause between tracks", pauseB);
        i_preferences.SetBool("Stop between tracks", stopB);
        for (const std::size_t row : {0U, 1U}) {
            SCOPED_TRACE(testing::Message()
                         << "end " << endB << ", pause " << pauseB << ", stop " << stopB << ": " << row);
            const std::size_t sungL = i_sung.size();
            ASSERT_EQ(Play(row), noErr);
            ASSERT_TRUE(RunUntil([&] { return i_sung.size() > sungL && i_controlP->State() != kStarting; }));
            const bool onB = !stopB && !(endB && row == 1);
            EXPECT_EQ(i_controlP->State(), onB ? kPlaying : kIdle);
            EXPECT_EQ(i_controlP->IsPaused(), onB && pauseB);
            EXPECT_EQ(i_controlP->CurrentItem(), Row(onB ? 1 - row : row));
            i_controlP->Stop();
        }
    }
    EXPECT_TRUE(Logged("pre-cache next song: b"));
    EXPECT_TRUE(Logged("Going to next song"));
}

TEST_F(PlayTest, ByHandTheEndOfTheListIsNone) {
    for (const char* const nameZ : {"a", "b", "c"}) Add(Sound(std::string(nameZ) + ".wav", 60));
    i_preferences.SetBool("Stop at playlist end", true);
    i_preferences.SetBool("Stop between tracks", true);
    ASSERT_TRUE(Starts(1));
    EXPECT_EQ(i_controlP->PlayNext(), noErr);
    EXPECT_EQ(i_controlP->CurrentItem(), Row(2));
    EXPECT_EQ(i_controlP->PlayNext(), noErr);
    EXPECT_EQ(i_controlP->CurrentItem(), Row(0));
    EXPECT_EQ(i_controlP->PlayPrevious(), noErr);
    EXPECT_EQ(i_controlP->CurrentItem(), Row(2));
    EXPECT_EQ(i_messages.back(), "Previous: c");
}

/** The list goes on behind songs that fail, and they are told of; three in a row end it, and there it stands. */
TEST_F(PlayTest, AListGoesOnBehindWhatCannotBePlayed) {
    const auto good = [&](const std::string& name) { Add(Sound(name + ".wav", 0.3)); };
    const auto junk = [&](const std::string& name) {
        std::ofstream(i_folder / (name + ".mp3")) << std::string(20000, 'x');
        Add(i_folder / (name + ".mp3"));
    };
    good("a");
    Add(i_folder / "missing.wav");
    junk("junk");
    good("b");
    for (const char* const nameZ : {"x", "y", "z"}) junk(nameZ);
    good("c");
    ASSERT_EQ(Play(0), noErr);
    ASSERT_TRUE(RunUntilIdle());
    EXPECT_EQ(i_sung, (Words{"a", "b"}));
    EXPECT_EQ(i_failed, (Words{"missing", "junk", "x", "y", "z"}));
    EXPECT_EQ(AlertsSoFar(), (Words{"Could not find the song “missing”", "The song “junk” could not be played",
                                    "The song “x” could not be played", "The song “y” could not be played",
                                    "The song “z” could not be played"}));
    for (std::size_t n = 0; n < 5; ++n)
        EXPECT_NE(Details()[n].find((i_folder / i_failed[n]).string()), std::string::npos) << n;
    EXPECT_NE(Details()[1].find("The list goes on with “b”."), std::string::npos) << Details()[1];
    EXPECT_NE(Details()[4].find("The list has stopped here"), std::string::npos) << Details()[4];
    EXPECT_EQ(i_controlP->CurrentItem(), Row(6));   // there the operator may try again, or go on
    EXPECT_NE(i_controlP->PlayErr(), noErr);

    // One that the operator starts himself is no other.
    ASSERT_EQ(Play(2), noErr);
    ASSERT_TRUE(RunUntil([&] { return i_sung.size() == 3; }));
    EXPECT_EQ(i_sung.back(), "b");
    ASSERT_TRUE(RunUntilIdle());
    i_preferences.SetBool("Stop at playlist end", true);
    ASSERT_TRUE(Starts(0, true));
    ASSERT_EQ(i_controlP->PlayNext(), noErr);
    ASSERT_TRUE(RunUntil([&] { return i_sung.size() == 4; }));
    EXPECT_EQ(i_sung.back(), "b");
    // A song that breaks off is as good as over.
    Add(Sound("cut.wav", 24));
    good("d");
    ASSERT_TRUE(Starts(8, true));
    std::filesystem::resize_file(i_folder / "cut.wav", 1'000'000);
    i_controlP->SetPaused(false);
    ASSERT_TRUE(RunUntilIdle());
    EXPECT_EQ(i_failed.back(), "cut");
    EXPECT_EQ(i_sung.back(), "d");
}

/** What a hand has cut off plays on where it was, as it sounded, for half a minute; what ended by itself does not. */
TEST_F(PlayTest, WhatAHandHasCutOffCanBeHadBack) {
    for (const char* const nameZ : {"a", "b", "c"}) Add(Sound(std::string(nameZ) + ".wav", 600));
    const std::pair<const char*, std::function<OSErr()>> cuts[] = {
        {"another row", [&] { return Play(2); }},
        {"its own row", [&] { return Play(1); }},
        {"next", [&] { return i_controlP->PlayNext(); }},
        {"previous", [&] { return i_controlP->Rewind(), i_controlP->PlayPrevious(); }},
        {"stop", [&] { return i_controlP->Stop(), noErr; }},
    };
    for (const auto& [nameZ, cut] : cuts) {
        SCOPED_TRACE(nameZ);
        const bool rewoundB = std::string(nameZ) == "previous";
        ASSERT_TRUE(Starts(1));
        EXPECT_EQ(i_controlP->SetPitch(-3), noErr);
        EXPECT_EQ(i_controlP->SetTempo(1.1), noErr);
        i_controlP->SetVolume(0.5F);
        i_controlP->SeekTo300(90000);
        RunFor(6);
        i_offers.clear();
        ASSERT_EQ(cut(), noErr);
        ASSERT_TRUE(i_controlP->InterruptedSong());
        const long at300 = i_controlP->InterruptedSong()->place300;
        EXPECT_GE(at300, rewoundB ? 0 : 90000);
        i_controlP->SetVolume(0.8F);
        if (i_controlP->State() != kIdle) {
            ASSERT_EQ(Play(0), noErr);   // a second stray press takes nothing away
        }
        ASSERT_EQ(i_controlP->GoBack(), noErr);
        ASSERT_TRUE(RunUntilPlaying());
        EXPECT_EQ(i_controlP->Current()->Spec().name, "b");
        EXPECT_EQ(i_controlP->CurrentItem(), Row(1));
        EXPECT_GE(i_controlP->CurTime300(), at300);
        EXPECT_LT(i_controlP->CurTime300(), at300 + 60000);
        EXPECT_FALSE(i_controlP->IsPaused());
        EXPECT_EQ(i_controlP->Pitch(), -3);
        EXPECT_NEAR(i_controlP->Tempo(), 1.1, 1e-6);
        EXPECT_FLOAT_EQ(i_controlP->Volume(), 0.5F);
        EXPECT_EQ(i_offers, (Words{"b", ""}));
        EXPECT_EQ(i_controlP->GoBack(), fnfErr);
        if (std::string(nameZ) == "next") {   // past its half, as before: it was sung once
            CSong& song = *i_databaseP->GetSong(i_controlP->CurrentSong());
            const auto sungL = song.Meta().GetInteger("tsng"_key);
            ASSERT_EQ(i_controlP->PlayNext(), noErr);
            EXPECT_EQ(song.Meta().GetInteger("tsng"_key), sungL);
        }
    }
    i_offers.clear();
    RunFor(6);
    ASSERT_TRUE(Starts(0));
    EXPECT_TRUE(RunUntil([&] { return i_offers == Words{"b", ""}; }));   // the half minute is over
    EXPECT_FALSE(i_controlP->InterruptedSong());
    i_controlP->Seek(1);
    ASSERT_TRUE(RunUntil([&] { return i_sung.size() == 1; }));
    EXPECT_FALSE(i_controlP->InterruptedSong());
}

TEST_F(PlayTest, TheShowGoesOnInAnotherList) {
    const SongID a = Add(Sound("a.wav", 60)).GetSongID();
    (void)Add(Sound("b.wav", 60));
    const SongID c = Add(Sound("c.wav", 60)).GetSongID();
    CPlayList& other = i_databaseP->AddPlaylist(kSourceDB_PLAYLIST, "other");
    const PLItemID rowC = other.AddItem({c}), rowA = other.AddItem({a}), next = other.AddItem({c});
    EXPECT_EQ(i_controlP->GoOnIn(other.ID(), rowA), paramErr);   // nothing plays
    ASSERT_TRUE(Starts(0));
    EXPECT_EQ(i_controlP->GoOnIn(other.ID(), rowC), paramErr);   // another song's
    EXPECT_EQ(i_controlP->GoOnIn(other.ID(), PLItemID{99}), fnfErr);
    EXPECT_EQ(i_controlP->CurrentList(), i_listP->ID());
    EXPECT_EQ(i_controlP->GoOnIn(other.ID(), rowA), noErr);
    EXPECT_EQ(i_controlP->CurrentItem(), rowA);
    EXPECT_EQ(i_controlP->State(), kPlaying);
    EXPECT_EQ(i_controlP->PlayNext(), noErr);
    EXPECT_EQ(i_controlP->CurrentList(), other.ID());
    EXPECT_EQ(i_controlP->CurrentItem(), next);
}

/** The id of a row that has left is the next new row's. */
TEST_F(PlayTest, ARowThatLeavesWhileItPlaysIsNotTakenForAnother) {
    TuneRows();
    const std::filesystem::path sound = Sound("song.wav", 60);
    const struct {
        std::size_t plays;
        std::vector<std::size_t> leave;   // of 0 to 3; 4 is added then
        bool backB;
        std::size_t lands;
    } cases[] = {{1, {1}, false, 2},   {1, {1}, true, 0}, {1, {1, 2}, false, 3}, {1, {0, 1}, false, 2},
                 {1, {0, 1}, true, 4}, {0, {0}, true, 4}, {3, {3}, false, 4},    {2, {0, 1, 2, 3}, false, 4}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "case " << &c - cases);
        i_listP = &i_databaseP->AddPlaylist(kSourceDB_PLAYLIST, "another");
        std::vector<SongID> songs;
        for (int n = 0; n < 4; ++n) songs.push_back(Add(sound).GetSongID());
        ASSERT_TRUE(Starts(c.plays));
        std::vector<PLItemID> rows;
        for (const std::size_t row : c.leave) rows.push_back(Row(row));
        ASSERT_EQ(i_listP->RemoveItems(rows), noErr);
        EXPECT_EQ(i_controlP->CurrentItem(), SDB_kNoItem);
        songs.push_back(Add(sound).GetSongID());
        const PLItemID added = Row(i_listP->Count() - 1);
        ASSERT_GT(std::ranges::count(rows, added), 0);
        EXPECT_EQ(i_controlP->SetPitch(3), noErr);
        EXPECT_EQ(i_listP->ValueOf(added, "PICH"_key).Integer(), 0);
        EXPECT_EQ(i_controlP->SetOutputDevice(c.backB ? "one" : "two"), noErr);
        EXPECT_EQ(i_controlP->CurrentSong(), songs[c.plays]);
        EXPECT_EQ(i_controlP->Pitch(), 3);
        EXPECT_EQ(c.backB ? i_controlP->PlayPrevious() : i_controlP->PlayNext(), noErr);
        EXPECT_EQ(i_controlP->CurrentSong(), songs[c.lands]);
    }
    EXPECT_EQ(AlertsSoFar(), Words());
}

/** An alert on the main thread is a loop of its own. */
TEST_F(PlayTest, WhatIsBegunWhileAnAlertStandsPlaysOn) {
    static std::function<void()> s_atAlert;
    Add(Sound("a.wav", 0.5));
    Add(Sound("b.wav", 60));
    i_listP->AddItem({.target = SongID{4711}}, 2);   // a song that is nowhere
    s_atAlert = [&] { EXPECT_EQ(Play(2), noErr); };
    SetAlertHook([](std::string_view, std::string_view) { s_atAlert(); });
    ASSERT_EQ(Play(0), noErr);
    ASSERT_TRUE(RunUntil([&] { return !i_sung.empty(); }));
    EXPECT_TRUE(RunUntilPlaying());
    EXPECT_EQ(i_controlP->CurrentItem(), Row(2));
    s_atAlert = nullptr;
}

TEST_F(PlayTest, BackIsARewindOnceTheSongIsUnderWay) {
    Add(Sound("a.wav", 60));
    Add(Sound("b.wav", 60));
    ASSERT_TRUE(Starts(1));
    i_controlP->Seek(0.5);
    EXPECT_EQ(i_controlP->CurTime300(), 9000);
    ASSERT_EQ(i_controlP->PlayPrevious(), noErr);
    EXPECT_EQ(i_controlP->CurrentItem(), Row(1));
    EXPECT_EQ(i_controlP->CurTime300(), 0);
    EXPECT_EQ(i_messages.back(), "Rewind: b");
    ASSERT_EQ(i_controlP->PlayPrevious(), noErr);
    EXPECT_EQ(i_controlP->CurrentItem(), Row(0));
}

TEST_F(PlayTest, ANextThatIsWantedWhileItIsCachedOrWasReplacedIsRight) {
    Add(Sound("a.wav", 60));
    Add(Sound("b.wav", 60));
    ASSERT_TRUE(Starts(0));
    ASSERT_EQ(i_controlP->PlayNext(), noErr);   // its loading has only just begun
    ASSERT_TRUE(RunUntilPlaying());
    EXPECT_EQ(i_controlP->CurrentItem(), Row(1));
    ASSERT_TRUE(RunUntil([&] { return i_controlP->IsNextReady(); }));
    Sound("a.wav", 30);   // another file of its name
    ASSERT_EQ(i_controlP->PlayNext(), noErr);
    ASSERT_TRUE(RunUntilPlaying());
    EXPECT_EQ(i_controlP->EndTime300(), 30 * 300);
}

TEST_F(PlayTest, WhatLiesReadyFollowsTheListAndGoesAfterAStop) {
    for (const char* const nameZ : {"a", "b", "c"}) Add(Sound(std::string(nameZ) + ".wav", 60));
    ASSERT_TRUE(Starts(0, true));
    ASSERT_TRUE(RunUntil([&] { return i_controlP->IsNextReady(); }));
    const PLItemID last[] = {Row(2)};
    (void)i_listP->MoveItems(last, 2);   // before the second
    EXPECT_TRUE(RunUntil([&] { return Logged("pre-cache next song: c") && i_controlP->IsNextReady(); }));
    i_controlP->Stop();
    EXPECT_TRUE(i_controlP->IsNextReady());                              // it is likely to be wanted at once
    EXPECT_TRUE(RunUntil([&] { return !i_controlP->IsNextReady(); }));   // a stick can be taken out
}

TEST_F(PlayTest, TheWindowLeavesTheFullScreenWhenNothingFollows) {
    struct Window final : CPortWindow {
        bool IsFullScreen() const override { return fullB; }
        bool IsVisible() const override { return true; }
        void SetFullScreen(bool onB) override { done += onB ? "full " : "normal ", fullB = onB; }
        void SetAlwaysOnTop(bool) override {}
        void ShowAndSelect() override {}
        void Hide() override { done += "hide "; }
        OSErr SetOpacity(float) override { return noErr; }
        OSErr SetTransparent(bool) override { return noErr; }
        bool fullB = false;
        std::string done;
    } window;
    Screen screen(CGraphicsPort::kScreen_VIDEO, &window);
    i_ports.Enter(screen.port);
    i_preferences.SetBool("Auto Full Screen During Play", true);
    i_preferences.SetBool("Stop at playlist end", true);
    Add(Sound("a.wav", 0.3), Graphics("a.cdg", 90));
    Add(Sound("b.wav", 0.3), Graphics("b.cdg", 90));
    ASSERT_EQ(Play(0), noErr);
    EXPECT_TRUE(RunUntilIdle());
    EXPECT_EQ(i_sung.size(), 2U);
    EXPECT_EQ(window.done, "full normal ");   // not between the two
    window.done.clear();
    ASSERT_TRUE(Starts(0));
    i_controlP->Stop();
    EXPECT_EQ(window.done, "full normal ");
    i_ports.Leave(screen.port);
}

TEST_F(PlayTest, ASelectionOfOneIsPlayedAndOneOfSeveralIsAsked) {
    Add(Sound("a.wav", 1));
    Add(Sound("b.wav", 1));
    SDB_Selection selection(i_listP);
    EXPECT_EQ(i_controlP->Play(selection), paramErr);
    selection.SetItems({Row(0), Row(1)});
    i_ui.answers = {Answer{0, false}, Answer{1, false}};
    EXPECT_EQ(i_controlP->Play(selection), userCanceledErr);
    EXPECT_TRUE(std::exchange(i_deselectedB, false));
    EXPECT_EQ(i_controlP->Play(selection), userCanceledErr);
    EXPECT_FALSE(i_deselectedB);
    selection.SetItems({Row(1)});
    EXPECT_EQ(i_controlP->Play(selection), noErr);
    EXPECT_EQ(i_controlP->CurrentItem(), Row(1));
}

}   // namespace
