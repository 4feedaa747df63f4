#include "Movies/CAS_QuickTimeVideo.h"

#include <gtest/gtest.h>

#include <cmath>
#include <mutex>
#include <random>
#include <thread>

#include "Files/MemorySource.h"
#include "Movies/MovieFiles.h"
#include "Threads/ThreadTest.h"

namespace {

constexpr double kFrameT = 0.04;   // of the test movies

/** A disc that can be read up to its middle. */
class FailingSource final : public CByteSource {
public:
    explicit FailingSource(const std::string& name) : i_whole(MovieFiles::Bytes(name)) {}
    OSErr Read(std::span<std::byte> to, std::size_t& got) override {
        got = 0;
        if (Position() >= Size() / 2) return ioErr;
        return i_whole.Read(to.first(std::min<std::size_t>(to.size(), Size() / 2 - Position())), got);
    }
    OSErr Seek(std::uint64_t position) override { return i_whole.Seek(position); }
    [[nodiscard]] std::uint64_t Position() const override { return i_whole.Position(); }
    [[nodiscard]] std::uint64_t Size() const override { return i_whole.Size(); }

private:
    MemorySource i_whole;
};

/** A movie led by a sound that the test moves by hand. */
class CAS_QuickTimeVideoTest : public ThreadTest {
protected:
    CAS_QuickTimeVideoTest() { MovieFiles::Get(); }
    ~CAS_QuickTimeVideoTest() override { i_movieP = nullptr; }

    OSErr Open(const std::string& name) {
        EXPECT_EQ(MakeSongMovie(CFileRef(MovieFiles::Path(name)), i_movieP), noErr);
        return OpenMade();
    }
    OSErr OpenMade() {
        OSErr err = noErr;
        OnWorker([&] { err = i_movieP->Open(false, i_unitsL); });
        return err;
    }
    void LeadBySound() {
        i_movieP->SetLeader([this] { return i_lead; });
    }
    void Hear(double seconds) {
        i_clock.Advance(std::max(0.0, seconds - i_lead.seconds));
        i_lead.seconds = seconds;
    }
    /** True once the picture that begins at `timeT` is shown. */
    bool Shows(double timeT) {
        return RunUntil([&] {
            static_cast<void>(i_movieP->Show());
            return !i_movieP->IsSeeking() && std::abs(i_movieP->ShownTime() - timeT) < 0.001;
        });
    }

    Ref<CAS_QuickTimeVideo> i_movieP;
    MovieLead i_lead{.runningB = true};
    std::uint64_t i_unitsL = 0;
};

TEST_F(CAS_QuickTimeVideoTest, EachPictureIsShownInTheTimeOfTheSound) {
    ASSERT_EQ(Open("b.mp4"), noErr);
    LeadBySound();
    EXPECT_EQ(i_unitsL, 600U * 6);
    EXPECT_EQ(i_movieP->GetTotal(), 600U * 6);
    EXPECT_EQ(i_movieP->Length300(), 600);
    EXPECT_EQ(i_movieP->Facts().frameRate, 25);
    for (int n = 0; n < 50; ++n) {
        Hear(n * kFrameT + 0.01);
        ASSERT_TRUE(Shows(n * kFrameT)) << n;
        EXPECT_FALSE(i_movieP->IsEnded());
    }
    EXPECT_EQ(i_movieP->Frame(), MakeRect(0, 0, 96, 72));
    Hear(2.01);
    static_cast<void>(i_movieP->Show());
    EXPECT_FALSE(i_movieP->IsEnded());   // the sound goes on
    i_lead.endedB = true;
    EXPECT_TRUE(RunUntil([&] { return static_cast<void>(i_movieP->Show()), i_movieP->IsEnded(); }));
    EXPECT_EQ(i_movieP->Counts().shownL, 50U);
    EXPECT_EQ(i_movieP->Counts().droppedL, 0U);
    EXPECT_EQ(i_movieP->Counts().decodedL, 50U);
}

TEST_F(CAS_QuickTimeVideoTest, LatePicturesAreDroppedAndCountedAndTheSoundNeverWaits) {
    ASSERT_EQ(Open("b.mp4"), noErr);
    LeadBySound();
    ASSERT_TRUE(Shows(0));
    std::mt19937 random(5);
    for (double atT = 0; atT < 1.95; atT += 0.05 * static_cast<double>(1 + random() % 8)) {
        Hear(atT);
        static_cast<void>(i_movieP->Show());   // whatever the decoder has by now
        EXPECT_LE(i_movieP->ShownTime(), i_movieP->CurTime());
        EXPECT_NEAR(i_movieP->CurTime(), atT, 0.02);
    }
    Hear(1.99);
    ASSERT_TRUE(Shows(49 * kFrameT));   // it found its way back
    const MovieCounts counts = i_movieP->Counts();
    EXPECT_GT(counts.droppedL, 0U);
    EXPECT_EQ(counts.shownL + counts.droppedL, 50U);
}

TEST_F(CAS_QuickTimeVideoTest, FarBehindItJumpsAhead) {
    ASSERT_EQ(Open("long.mp4"), noErr);
    LeadBySound();
    ASSERT_TRUE(Shows(0));
    Hear(5000.5);   // no seek was told
    ASSERT_TRUE(RunUntil([&] {
        i_clock.Advance(0.01);
        i_lead.seconds += 0.01;
        static_cast<void>(i_movieP->Show());
        return i_movieP->ShownTime() > 5000;
    }));
    EXPECT_LE(i_movieP->ShownTime(), i_lead.seconds + 0.1);
    EXPECT_LT(i_movieP->Counts().decodedL, 4000U);
    EXPECT_GT(i_movieP->Counts().droppedL, 4900U);
}

TEST_F(CAS_QuickTimeVideoTest, APictureThatStandsForLongIsNotLate) {
    ASSERT_EQ(Open("held.mkv"), noErr);
    LeadBySound();
    i_lead.seconds = 3.5;
    i_movieP->SeekTo(3.5);
    i_lead.endedB = true;
    EXPECT_TRUE(RunUntil([&] {
        i_clock.Advance(0.01);
        i_lead.seconds += 0.01;
        static_cast<void>(i_movieP->Show());
        return i_movieP->IsEnded();
    }));
    EXPECT_LE(i_movieP->Counts().decodedL, 2U);
    EXPECT_EQ(i_movieP->Counts().droppedL, 0U);
}

TEST_F(CAS_QuickTimeVideoTest, ASeekShowsThePictureOfThePlaceAlsoInAPause) {
    ASSERT_EQ(Open("b.mp4"), noErr);
    LeadBySound();
    ASSERT_TRUE(Shows(0));
    i_lead.runningB = false;
    std::mt19937 random(9);
    for (int round = 0; round < 30; ++round) {
        const auto frame = static_cast<double>(random() % 50);
        for (int other = 0; other < round % 3; ++other) i_movieP->SeekTo(static_cast<double>(random() % 200) / 100);
        i_lead.seconds = frame * kFrameT + 0.02;
        i_movieP->SeekTo(i_lead.seconds);
        ASSERT_TRUE(Shows(frame * kFrameT)) << frame;
        i_clock.Advance(10);   // paused: nothing else comes
        EXPECT_FALSE(i_movieP->Show());
        EXPECT_EQ(i_movieP->CurTime(), i_lead.seconds);
    }
    EXPECT_EQ(i_movieP->Counts().droppedL, 0U);
    // As a spool: half of the whole.
    OnWorker([&] { EXPECT_EQ(i_movieP->Seek(0.5), noErr); });
    i_lead.seconds = 1.0;
    ASSERT_TRUE(Shows(1.0));
}

TEST_F(CAS_QuickTimeVideoTest, ASoundThatGoesBackTakesThePictureAlong) {
    ASSERT_EQ(Open("b.mp4"), noErr);
    LeadBySound();
    Hear(1.5);
    ASSERT_TRUE(Shows(37 * kFrameT));
    i_lead.seconds = 0.5;
    ASSERT_TRUE(Shows(12 * kFrameT));
}

TEST_F(CAS_QuickTimeVideoTest, ThePictureDelayMovesThePictureAlone) {
    ASSERT_EQ(Open("b.mp4"), noErr);
    LeadBySound();
    i_movieP->SetPictureDelay(200);
    Hear(1.01);
    ASSERT_TRUE(Shows(20 * kFrameT));
    EXPECT_NEAR(i_movieP->CurTime(), 1.01, 1e-9);
    i_movieP->SetPictureDelay(-200);
    ASSERT_TRUE(Shows(30 * kFrameT));
}

TEST_F(CAS_QuickTimeVideoTest, NoLargerPictureIsMadeThanTheWindowNeeds) {
    ASSERT_EQ(Open("b.mp4"), noErr);
    i_movieP->SetNeededSize(48, 36);
    const auto width = [&] { return i_movieP->Picture() == nullptr ? 0 : i_movieP->Picture()->bounds().Width(); };
    const auto comes = [&](int wanted) {
        return RunUntil([&] { return static_cast<void>(i_movieP->Show()), width() == wanted; });
    };
    ASSERT_TRUE(Shows(0));
    i_movieP->SetNeededSize(40, 30);
    EXPECT_TRUE(comes(40));   // in a pause as well
    EXPECT_EQ(i_movieP->Frame(), MakeRect(0, 0, 96, 72));
    i_movieP->SetNeededSize(1920, 1440);
    EXPECT_TRUE(comes(96));
}

TEST_F(CAS_QuickTimeVideoTest, WithoutSoundItsOwnClockLeads) {
    ASSERT_EQ(Open("silent.mp4"), noErr);
    EXPECT_FALSE(i_movieP->Facts().soundB);
    ASSERT_TRUE(Shows(0));
    i_clock.Advance(5);
    EXPECT_FALSE(i_movieP->Show());   // it was not told to run
    i_movieP->SetTempo(2);
    i_movieP->SetPaused(false);
    static_cast<void>(i_movieP->Show());
    i_clock.Advance(0.51);
    ASSERT_TRUE(Shows(25 * kFrameT));
    i_movieP->SeekTo(0.25);
    ASSERT_TRUE(Shows(6 * kFrameT));
    static_cast<void>(i_movieP->Show());   // now that the picture is there, it runs again
    i_clock.Advance(0.4);
    ASSERT_TRUE(RunUntil([&] { return static_cast<void>(i_movieP->Show()), i_movieP->ShownTime() > 1; }));
    EXPECT_FALSE(i_movieP->IsEnded());
    i_clock.Advance(0.6);
    EXPECT_TRUE(RunUntil([&] { return static_cast<void>(i_movieP->Show()), i_movieP->IsEnded(); }));
}

TEST_F(CAS_QuickTimeVideoTest, AVideoInAZipPlaysWhereItLies) {
    MovieFiles::Run("cd '" + i_folder.string() + "'; cp '" + MovieFiles::Path("b.mp4").string() +
                    "' song.mp4; python3 -c \"import zipfile as z; "
                    "z.ZipFile('packed.zip','w',z.ZIP_DEFLATED).write('song.mp4'); "
                    "z.ZipFile('stored.zip','w').write('song.mp4'); z.ZipFile('none.zip','w').writestr('a.txt','x')\"");
    for (const char* nameZ : {"packed.zip", "stored.zip"}) {
        ASSERT_EQ(MakeSongMovie(CFileRef(i_folder / nameZ), i_movieP), noErr);
        ASSERT_EQ(OpenMade(), noErr);
        LeadBySound();
        i_lead.seconds = 1.5;
        i_movieP->SeekTo(1.5);
        ASSERT_TRUE(Shows(37 * kFrameT)) << nameZ;
    }
    EXPECT_EQ(MakeSongMovie(CFileRef(i_folder / "none.zip"), i_movieP), fnfErr);
}

TEST_F(CAS_QuickTimeVideoTest, WhatCannotBePlayedIsAStatus) {
    EXPECT_EQ(Open("no such file.mp4"), fnfErr);
    EXPECT_EQ(Open("cover.mp3"), paramErr);
    EXPECT_EQ(i_movieP->Picture(), nullptr);
    EXPECT_FALSE(i_movieP->Show());
    EXPECT_TRUE(i_movieP->IsEnded());

    ASSERT_EQ(MakeSongMovie(CFileRef(MovieFiles::Path("b.mp4")), i_movieP), noErr);
    i_movieP->Abort();
    EXPECT_EQ(OpenMade(), abortErr);
}

TEST_F(CAS_QuickTimeVideoTest, ADiscThatFailsLeavesTheLastPictureAndAStatus) {
    i_movieP = MakeRef<CAS_QuickTimeVideo>(SongBytes{[](std::unique_ptr<CByteSource>& bytesP) {
                                                         bytesP = std::make_unique<FailingSource>("vcd.mpg");
                                                         return noErr;
                                                     },
                                                     "mpg"});
    ASSERT_EQ(OpenMade(), noErr);
    LeadBySound();
    i_lead.endedB = true;
    EXPECT_TRUE(RunUntil([&] {
        i_clock.Advance(kFrameT);
        i_lead.seconds += kFrameT;
        return static_cast<void>(i_movieP->Show()), i_movieP->IsEnded();
    }));
    EXPECT_EQ(i_movieP->Result(), ioErr);
    EXPECT_NE(i_movieP->Picture(), nullptr);
    EXPECT_TRUE(Logged("movie: the pictures end here"));
}

/** Openings, seeks and ends beside a picture that is shown. */
TEST_F(CAS_QuickTimeVideoTest, OpensSeeksAndClosesFromTwoThreads) {
    for (int round = 0; round < 12; ++round) {
        ASSERT_EQ(Open(round % 2 == 0 ? "b.mp4" : "vcd.mpg"), noErr);
        LeadBySound();
        std::atomic<bool> doneB{false};
        const Ref<CAS_QuickTimeVideo> movieP = i_movieP;
        std::thread other([&, movieP] {
            TagThread(77, true);
            std::mt19937 random(static_cast<unsigned>(round));
            for (int n = 0; n < 20; ++n) {
                static_cast<void>(movieP->Seek(static_cast<double>(random() % 100) / 100));
                static_cast<void>(movieP->Length300());
            }
            if (round % 3 == 0) movieP->Abort();
            static_cast<void>(movieP->Close(false));
            doneB = true;
        });
        while (!doneB) {
            Hear(i_lead.seconds + 0.01);
            static_cast<void>(i_movieP->Show());
            if (static_cast<int>(i_lead.seconds * 100) % 7 == 0) i_movieP->SeekTo(0.3);
        }
        other.join();
        i_movieP = nullptr;
        i_lead.seconds = 0;
    }
}

}   // namespace
