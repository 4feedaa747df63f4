#include "Play/CPlayControl.h"
#include "Play/PlayTest.h"

namespace {

TEST_F(PlayTest, SettingsReachTheSoundAndAreKept) {
    CSong& song = Add(Sound("a.wav", 60));
    song.Meta().SetInteger("PICH"_key, -3);
    song.Meta().SetFloat("TMPO"_key, 1.1);
    song.Meta().SetInteger("vChn"_key, 2);
    song.Meta().SetFloat("volm"_key, 0.4);
    EXPECT_EQ(i_controlP->SetPitch(1), paramErr);   // nothing plays
    ASSERT_EQ(Play(0), noErr);
    EXPECT_EQ(i_controlP->Pitch(), -3);
    EXPECT_NEAR(i_controlP->Tempo(), 1.1, 1e-6);
    EXPECT_EQ(i_controlP->Vocal(), VocalMode::kLeftOnly);
    ASSERT_TRUE(RunUntilPlaying());
    const int settingsL = i_settingsL;
    EXPECT_EQ(i_controlP->SetPitch(12), noErr);
    EXPECT_EQ(i_controlP->SetTempo(0.9), noErr);
    EXPECT_EQ(i_controlP->SetPitch(13), paramErr);
    EXPECT_EQ(i_controlP->SetTempo(0), paramErr);
    EXPECT_EQ(i_controlP->SetTempo(2.6), paramErr);   // no song could keep it
    EXPECT_EQ(i_settingsL, settingsL + 2);
    EXPECT_EQ(song.Meta().GetInteger("PICH"_key), 12);
    EXPECT_NEAR(song.Meta().GetFloat("TMPO"_key), 0.9, 1e-6);
    i_preferences.SetFloat("Tempo change increment (percent)", 2.5);
    EXPECT_EQ(i_controlP->SetTempo(1), noErr);
    for (const int step : {1, 1, 1, 1, -1, -1, -1, -1}) EXPECT_EQ(i_controlP->StepTempo(step), noErr);
    EXPECT_EQ(i_controlP->Tempo(), 1.0);

    // What a row shows is what plays: its song's, unless rows have values of their own.
    i_listP->SetRowValue(Row(0), "PICH"_key, CMetaValue(-7));
    ASSERT_EQ(Play(0), noErr);
    EXPECT_EQ(i_controlP->Pitch(), 12);
    TuneRows();
    ASSERT_EQ(Play(0), noErr);
    EXPECT_EQ(i_controlP->Pitch(), -7);
    EXPECT_EQ(i_controlP->Tempo(), 1.0);
    EXPECT_EQ(i_controlP->SetPitch(-8), noErr);   // of this row alone
    EXPECT_EQ(song.Meta().GetInteger("PICH"_key), 12);
    EXPECT_EQ(i_listP->ValueOf(Row(0), "PICH"_key).Integer(), -8);
    ASSERT_TRUE(RunUntilPlaying());
    // On another output the song goes on as the operator has set it.
    i_controlP->SetVolume(0.7F);
    i_controlP->SetVocalMode(VocalMode::kRightOnly);
    ASSERT_EQ(i_controlP->SetOutputDevice("other"), noErr);
    ASSERT_TRUE(RunUntilPlaying());
    EXPECT_FLOAT_EQ(i_controlP->Volume(), 0.7F);
    EXPECT_EQ(i_controlP->Vocal(), VocalMode::kRightOnly);
    i_controlP->SetMute(true);
    EXPECT_TRUE(i_controlP->IsMuted());
    i_controlP->SetVolume(7);
    EXPECT_EQ(i_controlP->Volume(), 1);
}

/** A song's own level is there with its first sample, and for no song behind it. */
TEST_F(PlayTest, EachSongBeginsAtItsOwnLevelOrTheTransports) {
    i_device.keepB = true;
    i_controlP->SetVolume(0.8F);
    Add(Sound("own.wav", 1)).Meta().SetFloat("volm"_key, 0.25);
    Add(Sound("plain.wav", 1));
    Add(Sound("again.wav", 1)).Meta().SetFloat("volm"_key, 50);
    i_preferences.SetBool("Stop at playlist end", true);
    ASSERT_EQ(Play(0), noErr);
    EXPECT_FLOAT_EQ(i_controlP->Volume(), 0.25F);
    ASSERT_TRUE(RunUntilIdle());
    EXPECT_FLOAT_EQ(i_controlP->Volume(), 0.8F);
    EXPECT_EQ(i_preferences.GetLong("Current Volume (0-100)"), 80);
    ASSERT_EQ(i_sung.size(), 3U);
    ASSERT_TRUE(RunUntilOutputIsFree());
    const auto songs = i_device.Songs();
    ASSERT_EQ(songs.size(), 3U);
    constexpr int kPeaks[] = {2048, 6554, 4096};   // of 0x2000
    for (std::size_t n = 0; n < 3; ++n) {
        const auto first = std::ranges::find_if(songs[n], [](std::int16_t sample) { return sample != 0; });
        ASSERT_NE(first, songs[n].end());
        EXPECT_NEAR(*first, kPeaks[n], 1) << n;
        EXPECT_NEAR(std::ranges::max(songs[n]), kPeaks[n], 1) << n;
    }
    ASSERT_TRUE(Starts(2));
    i_controlP->SetVolume(0.6F);   // by hand: the transport's from now on
    ASSERT_TRUE(Starts(1));
    EXPECT_FLOAT_EQ(i_controlP->Volume(), 0.6F);
}

TEST_F(PlayTest, TheSlipIsToldInSecondsAndKept) {
    CSong& song = Add(Sound("a.wav", 60), Graphics("a.cdg", 18000));
    song.Meta().SetFloat("Slip"_key, 0.5);
    ASSERT_EQ(Play(0), noErr);   // the clock of the picture comes later, with what is told here
    EXPECT_EQ(i_controlP->SlipSong(1), "Song Sync Slip: 0.6 seconds");
    EXPECT_EQ(i_controlP->SlipSong(-8), "Song Sync Slip: -0.2 seconds");
    EXPECT_NEAR(song.Meta().GetFloat("Slip"_key), -0.2, 1e-6);
    EXPECT_EQ(i_controlP->SlipGlobal(3), "Global Sync Slip: 0.3 seconds");
    EXPECT_EQ(i_preferences.GetLong("Global Song Sync Slip (300ths)"), 90);
    EXPECT_EQ(i_messages.back(), "Global Sync Slip: 0.3 seconds");
    ASSERT_TRUE(RunUntilPlaying());
    // -60 of the song and 90 of all: the picture is 30 ahead.
    i_controlP->SetPaused(false);
    i_controlP->SeekTo300(3000);
    ASSERT_TRUE(RunUntil([&] { return i_controlP->CurTime300() > 3100; }));
    i_controlP->VideoIdle(false);
    EXPECT_NEAR(static_cast<double>(i_controlP->Current()->Packets() - i_controlP->CurTime300()), 30, 25);
}

TEST_F(PlayTest, ADeviceThatCannotBeOpenedEndsTheSongWithOneAlert) {
    Add(Sound("a.wav", 1));
    i_device.openErr.store(ioErr);
    ASSERT_EQ(Play(0), noErr);
    ASSERT_TRUE(RunUntilIdle());
    EXPECT_EQ(i_controlP->PlayErr(), ioErr);
    i_device.openErr.store(noErr);
    ASSERT_EQ(Play(0), noErr);
    EXPECT_TRUE(RunUntilPlaying());
    EXPECT_EQ(i_controlP->PlayErr(), noErr);
}

class UnhurriedPlayTest : public PlayTest {
protected:
    UnhurriedPlayTest() : PlayTest(2) {}
};

/** What is drawn stands for a fifteenth of a second: its middle is what is heard. */
TEST_F(UnhurriedPlayTest, ThePictureIsAheadOfTheClockByHalfALook) {
    Add(Sound("a.wav", 600), Graphics("a.cdg", 18000));
    ASSERT_TRUE(Starts(0));
    for (const double tempo : {1.0, 1.5}) {
        ASSERT_EQ(i_controlP->SetTempo(tempo), noErr);
        RunFor(2);   // what was given before has another tempo
        long mostL = 0, leastHeardL = 0, mostHeardL = 0;
        for (int n = 0; n < 200; ++n) {
            Pass();
            const long drawnL = i_controlP->Current()->Packets();
            mostL = std::max(mostL, drawnL - i_controlP->CurTime300());
            leastHeardL = std::min(leastHeardL, drawnL - i_controlP->Current()->Heard300());
            mostHeardL = std::max(mostHeardL, drawnL - i_controlP->Current()->Heard300());
        }
        EXPECT_NEAR(static_cast<double>(mostL), 10 * tempo, 1);
        // Against what is heard: the look either way, and a step of the clock.
        RecordProperty("least " + std::to_string(tempo), std::to_string(leastHeardL));
        RecordProperty("most " + std::to_string(tempo), std::to_string(mostHeardL));
        EXPECT_GT(leastHeardL, -20 * tempo);
        EXPECT_LT(mostHeardL, 20 * tempo);
    }
}

/** Sound that is far behind the words jumps to them, once it moves again. */
TEST_F(UnhurriedPlayTest, AStallLeavesTheSoundWhereTheWordsAre) {
    Add(Sound("a.wav", 600), Graphics("a.cdg", 3000));
    ASSERT_EQ(Play(0), noErr);
    ASSERT_TRUE(RunUntil([&] { return i_controlP->CurTime300() > 300; }));
    EXPECT_LT(std::abs(i_controlP->Current()->Heard300() - i_controlP->CurTime300()), 150);
    i_clock.Skip(30);   // the device is fed late; the clock of the words is not
    EXPECT_TRUE(RunUntil([&] { return Logged("the sound goes there"); }));
    EXPECT_TRUE(RunUntil([&] { return std::abs(i_controlP->Current()->Heard300() - i_controlP->CurTime300()) < 150; }));
    EXPECT_GT(i_controlP->CurTime300(), 30 * 300);
}

}   // namespace
