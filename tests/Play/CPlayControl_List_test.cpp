#include "Play/CPlayControl.h"
#include "Graphics/CPortWindow.h"
#include "Graphics/PortTest.h"
#include "Play/PlayTest.h"

namespace {

using enum PlayState;

TEST_F(PlayTest, WhatComesNextIsTheListsAndThePreferences) {
    for (const char* const nameZ : {"a", "b", "c"}) Add(Sound(std::string(nameZ) + ".wav", 1));
    i_preferences.Set("Stop at playlist end", CCFValue(true));
    ASSERT_EQ(Play(0), noErr);
    ASSERT_TRUE(RunUntilIdle());
    EXPECT_EQ(i_sung, (Words{"a", "b", "c"}));
    EXPECT_TRUE(Logged("pre-cache next song: b"));
    EXPECT_TRUE(Logged("Going to next song"));

    i_preferences.Set("Pause between tracks", CCFValue(true));
    ASSERT_EQ(Play(0), noErr);
    ASSERT_TRUE(RunUntil([&] { return i_controlP->CurrentItem() == Row(1) && i_controlP->State() == kPlaying; }));
    EXPECT_TRUE(i_controlP->IsPaused());
    i_preferences.Set("Stop between tracks", CCFValue(true));
    i_controlP->SetPaused(false);
    ASSERT_TRUE(RunUntilIdle());
    EXPECT_EQ(i_sung.size(), 5U);

    // By hand the end of the list is none.
    EXPECT_EQ(i_controlP->PlayNext(), noErr);
    EXPECT_EQ(i_controlP->CurrentItem(), Row(2));
    EXPECT_EQ(i_controlP->PlayNext(), noErr);
    EXPECT_EQ(i_controlP->CurrentItem(), Row(0));
    EXPECT_EQ(i_controlP->PlayPrevious(), noErr);
    EXPECT_EQ(i_controlP->CurrentItem(), Row(2));
    EXPECT_EQ(i_messages.back(), "Previous: c");
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
    EXPECT_TRUE(i_controlP->IsNextReady());   // it is likely to be wanted at once
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
    i_preferences.Set("Auto Full Screen During Play", CCFValue(true));
    i_preferences.Set("Stop at playlist end", CCFValue(true));
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
