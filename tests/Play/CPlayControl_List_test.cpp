#include "Play/CPlayControl.h"
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
