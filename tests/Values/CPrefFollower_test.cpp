#include <optional>

#include "Platform/CClock.h"
#include "Threads/ThreadTest.h"
#include "Values/CPreferences.h"

// Work that follows preferences.

namespace {

class PrefFollowers : public ThreadTest {
protected:
    /** A follower of `pref` that counts. */
    std::unique_ptr<CPrefFollower> Count(BoolPref pref, int& timesL) {
        return i_prefs->Follow([this, pref, &timesL] {
            (void)i_prefs->GetBool(pref);
            ++timesL;
        });
    }
    void Pass() {
        for (int n = 0; n < 5; ++n) i_host.RunLoopPass();
    }
    std::optional<CPreferences> i_prefs{std::in_place, PrefsFilesFor(i_folder), PrefsOptions{.saveAtEndB = false}};
};

TEST_F(PrefFollowers, AreToldOfWhatTheyReadAlone) {
    int cuesL = 0, topsL = 0;
    const auto cues = Count("Auto-cue", cuesL);
    auto tops = Count("Always on top", topsL);
    EXPECT_EQ(cuesL + topsL, 2);   // at once
    for (int n = 0; n < 101; ++n) {
        i_prefs->SetBool("Auto-cue", n % 2 != 0);
        i_prefs->SetLong("Current Volume (0-100)", n);
    }
    EXPECT_EQ(cuesL, 1);   // never under whoever sets it
    Pass();
    EXPECT_EQ(cuesL, 2);   // all at once
    EXPECT_EQ(topsL, 1);
    OnWorker([&] { i_prefs->SetBool("Always on top", true); });
    Pass();
    EXPECT_EQ(topsL, 2);
    tops.reset();
    i_prefs->SetBool("Always on top", false);
    Pass();
    EXPECT_EQ(topsL, 2);
    i_prefs->SetBool("Auto-cue", true);
    i_prefs.reset();   // what was on its way, and the follower that is left, find nobody
    Pass();
    EXPECT_EQ(cuesL, 2);
}

TEST_F(PrefFollowers, WhatIsReadTheLastTimeCounts) {
    int timesL = 0;
    const auto follower = i_prefs->Follow([&] {
        ++timesL;
        if (i_prefs->GetBool("Auto-cue")) (void)i_prefs->GetBool("Always on top");
    });
    i_prefs->SetBool("Auto-cue", false);
    Pass();
    EXPECT_EQ(timesL, 2);
    i_prefs->SetBool("Always on top", true);   // of no interest any more
    Pass();
    EXPECT_EQ(timesL, 2);
}

TEST_F(PrefFollowers, OneThatThrowsKeepsNoOtherFromBeingTold) {
    int timesL = 0;
    bool badB = false;
    const auto first = i_prefs->Follow([&] {
        (void)i_prefs->GetBool("Auto-cue");
        if (badB) throw std::runtime_error("no settings");
    });
    const auto second = Count("Auto-cue", timesL);
    badB = true;
    i_prefs->SetBool("Auto-cue", false);
    Pass();
    EXPECT_EQ(timesL, 2);
    EXPECT_TRUE(Logged("no settings"));
}

TEST_F(PrefFollowers, MayEndEachOtherAndThemselves) {
    int firstL = 0, secondL = 0;
    std::unique_ptr<CPrefFollower> second, first = i_prefs->Follow([&] {
        ++firstL;
        if (!i_prefs->GetBool("Auto-cue")) second.reset(), first.reset();
    });
    second = Count("Auto-cue", secondL);
    i_prefs->SetBool("Auto-cue", false);
    Pass();
    i_prefs->SetBool("Auto-cue", true);
    Pass();
    EXPECT_EQ(firstL, 2);
    EXPECT_EQ(secondL, 1);
}

}   // namespace
