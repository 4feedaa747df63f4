#include "Audio/CAS_Ring.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <optional>
#include <random>

#include "Audio/AllocationCounter.h"
#include "Audio/SpoolTest.h"

namespace {
class CAS_RingTest : public SpoolTest {
protected:
    void Make(std::uint32_t framesL) {
        i_sourceP = MakeRef<NumberSource>(framesL);
        i_ringP = MakeRef<NumberRing>();
    }
    Ref<NumberSource> i_sourceP;
    Ref<NumberRing> i_ringP;
};
constexpr std::uint32_t kSong_Frames = 44100 * 30;
constexpr double kSong_FramesF = kSong_Frames;

/** The frame at which a seek to `position` begins. */
std::uint32_t FrameAt(double position, std::uint32_t framesL) {
    return static_cast<std::uint32_t>(std::llround(position * framesL * 2.0) / 2);
}
}   // namespace

TEST_F(CAS_RingTest, AgreesWithAQueueOfBytes) {
    std::mt19937 random(1);
    const auto ringP = MakeRef<CAS_Ring>();
    CAS_Ring& ring = *ringP;
    std::uint64_t sizeL = 0;
    ASSERT_EQ(ring.Open(true, sizeL), noErr);
    std::deque<std::byte> queue;
    std::uint32_t nextL = 0;
    std::uint64_t readL = 0;
    for (int round = 0; round < 3000; ++round) {
        std::vector<std::uint32_t> some(random() % 2448);
        if (random() % 2 == 0 && queue.size() < kSpool_HighWater) {
            for (auto& n : some) n = nextL++;
            const auto bytes = std::as_bytes(std::span(some));
            ASSERT_EQ(ring.Write(bytes), noErr);
            queue.insert(queue.end(), bytes.begin(), bytes.end());
        } else {
            auto bytes = std::as_writable_bytes(std::span(some));
            std::size_t gotL = 0;
            ASSERT_EQ(ring.Read(bytes, gotL), noErr);
            ASSERT_EQ(gotL, std::min(bytes.size(), queue.size()));
            ASSERT_TRUE(std::equal(bytes.begin(), bytes.begin() + static_cast<long>(gotL), queue.begin()));
            queue.erase(queue.begin(), queue.begin() + static_cast<long>(gotL));
            readL += gotL;
        }
        ASSERT_EQ(ring.Available(), queue.size() / 2);
        ASSERT_EQ(ring.GetPos(), readL / 4);
        ASSERT_EQ(ring.GetWritten(), (readL + queue.size()) / 4);
    }
    ASSERT_EQ(ring.Close(true), noErr);   // the main thread: a task does it
    ASSERT_TRUE(RunUntil([&] { return !ring.IsOpen(true); }));
    std::vector<std::byte> rest(queue.size() + 8);
    std::size_t gotL = 0;
    ASSERT_EQ(ring.Read(rest, gotL), noErr);
    EXPECT_EQ(gotL, queue.size());
    EXPECT_EQ(ring.Read(rest, gotL), eofErr);
    EXPECT_EQ(gotL, 0U);
    EXPECT_EQ(ring.GetTotal(), ring.GetPos());
}

TEST_F(CAS_RingTest, AWholeSongArrivesAndItsTotalIsWhatWasThere) {
    Make(200000);
    i_sourceP->i_toldL = 240000;   // an estimate
    std::atomic<long> toldL{0};
    i_ringP->SetCompletion(true, new MT_Told([&](OSErr result) {
                               EXPECT_EQ(result,
                                         noErr);   // the song is loaded, though its reader will abort the chain later
                               ++toldL;
                           }));
    ASSERT_EQ(StartSpooling(i_sourceP, i_ringP, false), noErr);
    EXPECT_GT(i_ringP->Available(), 0U);
    EXPECT_EQ(i_ringP->GetTotal(), 480000U);
    std::uint64_t sizeL = 0;
    ASSERT_EQ(i_ringP->Open(false, sizeL), noErr);
    OSErr err = noErr;
    EXPECT_EQ(ReadToEnd(*i_ringP, 0, err), 200000U);
    EXPECT_EQ(err, eofErr);
    EXPECT_EQ(i_ringP->GetTotal(), 400000U);
    EXPECT_EQ(i_ringP->GetPos(), 400000U);
    EXPECT_EQ(i_ringP->GetProgress(), 1.0);
    ASSERT_TRUE(RunUntil([&] { return toldL == 1; }));
    EXPECT_EQ(i_sourceP->i_largestL, kSpool_ChunkBytes);
    // After its end a song can be sought: the fraction is one of the true total.
    ASSERT_EQ(i_ringP->Seek(0.5), noErr);
    EXPECT_EQ(i_ringP->GetPos(), 200000U);
    EXPECT_EQ(ReadToEnd(*i_ringP, 100000, err), 200000U);
    EXPECT_EQ(err, eofErr);
    ASSERT_EQ(i_ringP->Seek(1), noErr);
    EXPECT_TRUE(ReadFrames(*i_ringP, 1, &err).empty());
    EXPECT_EQ(err, eofErr);
    EXPECT_EQ(i_ringP->GetTotal(), 400000U);
    // The reader's end is the pump's.
    ASSERT_EQ(i_ringP->Close(false), noErr);
    EXPECT_EQ(i_ringP->WaitPumped(), abortErr);
    ASSERT_TRUE(RunUntil([&] { return i_sourceP->i_closedL == 1; }));
    EXPECT_EQ(toldL, 1);
}

TEST_F(CAS_RingTest, TheWriterWaitsAboveTheHighMarkUntilBelowTheLowOne) {
    Make(kSong_Frames);
    ASSERT_EQ(StartSpooling(i_sourceP, i_ringP, false), noErr);
    ASSERT_TRUE(WaitFull(*i_ringP));
    const std::uint64_t fullL = i_ringP->Available();
    EXPECT_LE(fullL, kSpool_HighWater + kSpool_ChunkBytes);
    const std::uint64_t writtenL = i_ringP->GetWritten();
    std::uint32_t nextL = 0;
    while (i_ringP->Available() >= kSpool_LowWater + 4096)
        nextL += static_cast<std::uint32_t>(ReadFrames(*i_ringP, 1024).size());
    EXPECT_EQ(i_ringP->GetWritten(), writtenL) << "written above the low mark";
    nextL += static_cast<std::uint32_t>(ReadFrames(*i_ringP, 2048).size());
    ASSERT_TRUE(WaitFull(*i_ringP));
    EXPECT_EQ(ReadFrames(*i_ringP, 1).at(0), nextL);
}

TEST_F(CAS_RingTest, ASeekWakesAWaitingWriterAndComesBackWithTheFirstBlock) {
    Make(kSong_Frames);
    ASSERT_EQ(StartSpooling(i_sourceP, i_ringP, false), noErr);
    std::mt19937 random(2);
    for (int round = 0; round < 20; ++round) {
        ASSERT_TRUE(WaitFull(*i_ringP));
        const double position = static_cast<double>(random() % 800000) / 1e6;
        ASSERT_EQ(i_ringP->Seek(position), noErr);
        EXPECT_GT(i_ringP->Available(), 0U);
        ASSERT_EQ(i_ringP->GetPos(), FrameAt(position, kSong_Frames) * 2ULL);
        ASSERT_EQ(ReadFrames(*i_ringP, 1).at(0), FrameAt(position, kSong_Frames));
    }
}

TEST_F(CAS_RingTest, ASourceThatCannotBeSoughtPlaysOn) {
    Make(kSong_Frames);
    i_sourceP->i_seekableB = false;
    ASSERT_EQ(StartSpooling(i_sourceP, i_ringP, false), noErr);
    for (int round = 0; round < 20; ++round) {   // many: each must leave the writer where it waits
        ASSERT_TRUE(WaitFull(*i_ringP));
        ASSERT_EQ(i_ringP->Seek(0.5), eofErr);
        EXPECT_LE(i_ringP->Available(), kSpool_HighWater + kSpool_ChunkBytes);
    }
    OSErr err = noErr;
    EXPECT_EQ(ReadToEnd(*i_ringP, 0, err), kSong_Frames);
    EXPECT_EQ(i_ringP->Seek(0.5), eofErr);
    EXPECT_TRUE(ReadFrames(*i_ringP, 1, &err).empty());
    EXPECT_EQ(MakeRef<CAS_Ring>()->Seek(0), eofErr);   // nobody fills it
}

TEST_F(CAS_RingTest, TheReaderWaitsForNoSourceAndAllocatesNothing) {
    Make(kSong_Frames);
    ASSERT_EQ(StartSpooling(i_sourceP, i_ringP, false), noErr);
    ASSERT_TRUE(WaitFull(*i_ringP));
    i_sourceP->i_readGate.Shut();   // a disc that does not answer
    std::vector<std::byte> block(8192);
    std::size_t allL = 0, gotL = 0;
    const AllocationCounter allocations;
    for (bool arrivedB = false;;) {
        ASSERT_EQ(i_ringP->Read(block, gotL), noErr);
        allL += gotL;
        // Below the low mark the pump asks the source, and stays there with all that it holds.
        if (!arrivedB && i_ringP->Available() < kSpool_LowWater) {
            i_sourceP->i_readGate.WaitArrival();
            arrivedB = true;
        }
        if (gotL == 0) break;
    }
    EXPECT_EQ(allocations.Count(), 0U);
    EXPECT_EQ(allL, i_ringP->GetWritten() * 4);
    i_sourceP->i_readGate.Open();
    ASSERT_TRUE(WaitFull(*i_ringP));
    EXPECT_EQ(ReadFrames(*i_ringP, 1).at(0), allL / 8);
}

TEST_F(CAS_RingTest, AnAbortEndsASeekAndABlockedSource) {
    for (const auto& [closeB, deafB] : {std::pair{false, false}, {true, false}, {false, true}}) {
        Make(kSong_Frames);
        i_sourceP->i_deafB = deafB;
        std::uint64_t sizeL = 0;
        ASSERT_EQ(i_ringP->Open(false, sizeL), noErr);
        ASSERT_EQ(StartSpooling(i_sourceP, i_ringP, false), noErr);
        i_sourceP->i_seekGate.Shut();
        std::atomic<long> leftL{2};
        std::thread seekers[2];
        for (std::thread& seeker : seekers)
            seeker = std::thread([&] {
                EXPECT_EQ(i_ringP->Seek(0.5), abortErr);
                --leftL;
            });
        i_sourceP->i_seekGate.WaitArrival();
        EXPECT_EQ(leftL, 2);
        OSErr err = ioErr;
        EXPECT_TRUE(ReadFrames(*i_ringP, 1, &err).empty()) << "of the place that was left";
        EXPECT_EQ(err, noErr);
        if (closeB)
            EXPECT_EQ(i_ringP->Close(false), noErr);
        else
            i_ringP->Abort();
        for (std::thread& seeker : seekers) seeker.join();   // whatever the source does
        i_sourceP->i_seekGate.Open();
        EXPECT_EQ(i_ringP->WaitPumped(), abortErr);
        EXPECT_EQ(i_ringP->Seek(0), abortErr);
        std::byte some[8]{};
        EXPECT_EQ(i_ringP->Write(some), abortErr);
    }
}

TEST_F(CAS_RingTest, TwoSeeksAtOnceBothEndAndTheLastOneWins) {
    Make(kSong_Frames);
    ASSERT_EQ(StartSpooling(i_sourceP, i_ringP, false), noErr);
    i_sourceP->i_seekGate.Shut();
    std::thread first([&] { EXPECT_EQ(i_ringP->Seek(0.25), noErr); });
    i_sourceP->i_seekGate.WaitArrival();
    std::atomic<bool> askedB{false};
    std::thread opener([&] {
        while (!askedB) std::this_thread::yield();
        i_sourceP->i_seekGate.Open();
    });
    // The second one is asked for from within a message that the first thread of the application handles.
    MT_Lambda nested([&] {
        askedB = true;
        return i_ringP->Seek(0.75);
    });
    EXPECT_EQ(nested.Call(CallMode::kWait), noErr);
    first.join();
    opener.join();
    EXPECT_EQ(ReadFrames(*i_ringP, 1).at(0), FrameAt(0.75, kSong_Frames));
}

TEST_F(CAS_RingTest, AFailingSourceEndsTheSeekAndTheReader) {
    Make(kSong_Frames);
    i_sourceP->i_failAtL = kSong_Frames / 2;
    i_sourceP->i_readErr = ioErr;
    ASSERT_EQ(StartSpooling(i_sourceP, i_ringP, false), noErr);
    EXPECT_EQ(i_ringP->Seek(0.75), ioErr);
    OSErr err = noErr;
    EXPECT_TRUE(ReadFrames(*i_ringP, 1, &err).empty());
    EXPECT_EQ(err, ioErr);
    EXPECT_EQ(i_ringP->WaitPumped(), ioErr);
}

TEST_F(CAS_RingTest, WhatItHoldsIsPlayedBeforeItTellsThatTheSourceFailed) {
    for (const bool abortB : {false, true}) {
        constexpr std::uint32_t kHeld = 20 * 2448;   // below the high mark: the pump is not held up
        Make(kSong_Frames);
        i_sourceP->i_failAtL = kHeld;
        i_sourceP->i_readErr = ioErr;
        OSErr loaded = noErr;
        std::atomic<bool> toldB{false};
        i_ringP->SetCompletion(true, new MT_Told([&](OSErr result) {
                                   loaded = result;
                                   toldB = true;
                               }));
        static_cast<void>(StartSpooling(i_sourceP, i_ringP, false));   // the failure may come before this looks
        EXPECT_EQ(i_ringP->WaitPumped(), noErr);
        ASSERT_TRUE(RunUntil([&] { return toldB.load(); }));
        EXPECT_EQ(loaded, ioErr);   // who waits for the whole song hears at once
        EXPECT_EQ(i_sourceP->Err(), ioErr);
        EXPECT_EQ(i_ringP->Seek(0), ioErr);
        OSErr err = noErr;
        if (abortB) {
            i_ringP->Abort();
            EXPECT_TRUE(ReadFrames(*i_ringP, 1, &err).empty());
            EXPECT_EQ(err, abortErr);
            continue;
        }
        EXPECT_EQ(i_ringP->Err(), noErr);
        EXPECT_EQ(ReadToEnd(*i_ringP, 0, err), kHeld);
        EXPECT_EQ(err, ioErr);
        EXPECT_EQ(i_ringP->Err(), ioErr);
    }
}

TEST_F(CAS_RingTest, ASeekEndsWithAPumpThatEndsWithoutIt) {
    i_sourceP = MakeRef<NumberSource>(1000U, SpoolType::kBin);   // whose end of file ends the pump
    i_ringP = MakeRef<NumberRing>();
    i_sourceP->i_failAtL = 0;
    i_sourceP->i_readErr = eofErr;
    i_sourceP->i_readGate.Shut();
    std::thread seeker([&] {
        i_sourceP->i_readGate.WaitArrival();
        EXPECT_EQ(i_ringP->Seek(0.5), eofErr);
    });
    std::thread opener([&] {
        while (!i_ringP->IsWriterWanted_i()) std::this_thread::yield();
        i_sourceP->i_readGate.Open();
    });
    EXPECT_EQ(StartSpooling(i_sourceP, i_ringP, false), eofErr);
    seeker.join();
    opener.join();
    EXPECT_EQ(i_ringP->WaitPumped(), noErr);
    OSErr err = noErr;
    EXPECT_TRUE(ReadFrames(*i_ringP, 1, &err).empty());
    EXPECT_EQ(err, eofErr);
}

/** One thread renders, the other seeks, pauses, stops and aborts; ten thousand calls in all. */
TEST_F(CAS_RingTest, SurvivesTenThousandRandomCalls) {
    std::mt19937 random(3);
    long callsL = 0;
    while (callsL < 10000) {
        const std::uint32_t framesL = 1 + static_cast<std::uint32_t>(random() % 300000);
        Make(framesL);
        std::uint64_t sizeL = 0;
        ASSERT_EQ(i_ringP->Open(false, sizeL), noErr);
        ASSERT_EQ(StartSpooling(i_sourceP, i_ringP, false), noErr);
        std::mutex renderLock;
        std::atomic<bool> endB{false};
        std::atomic<long> readsL{0};
        std::thread render([&] {
            while (!endB) {
                {
                    const std::scoped_lock guard(renderLock);
                    OSErr err = noErr;
                    const auto frames = ReadFrames(*i_ringP, 512, &err);
                    for (std::size_t n = 1; n < frames.size(); ++n) EXPECT_EQ(frames[n], frames[0] + n);
                    ++readsL;
                    EXPECT_TRUE(!Failed(err) || err == eofErr || err == abortErr) << Number(err);
                }
                std::this_thread::yield();
            }
        });
        std::thread second([this, seed = random()] {   // a phone that seeks too
            std::mt19937 own(seed);
            for (int n = 0; n < 50; ++n) {
                const OSErr err = i_ringP->Seek(static_cast<double>(own() % 1001) / 1000);
                EXPECT_TRUE(!Failed(err) || err == abortErr) << Number(err);
            }
        });
        bool endedB = false;
        for (int n = 0; n < 200 && !endedB; ++n) {
            const double position = static_cast<double>(random() % 1001) / 1000;
            switch (random() % 8) {
                case 0: {   // paused: nobody reads
                    const std::scoped_lock guard(renderLock);
                    EXPECT_EQ(i_ringP->Seek(position), noErr);
                    break;
                }
                case 1:
                    EXPECT_LE(i_ringP->GetPos(), i_ringP->GetTotal() + 2);
                    break;
                case 2: {
                    const std::scoped_lock guard(renderLock);
                    OSErr err = noErr;
                    ReadFrames(*i_ringP, random() % 4096, &err);
                    break;
                }
                case 3:
                    endedB = random() % 16 == 0;
                    if (endedB)
                        random() % 2 == 0 ? i_ringP->Abort() : static_cast<void>(i_ringP->Close(false) == noErr);
                    break;
                default:
                    EXPECT_EQ(i_ringP->Seek(position), noErr);
            }
            ++callsL;
        }
        second.join();
        callsL += 50;
        if (!endedB) {   // alone now: the place is exact
            const std::scoped_lock guard(renderLock);
            const double position = static_cast<double>(random() % 1000) / 1000;
            ASSERT_EQ(i_ringP->Seek(position), noErr);
            const std::uint32_t frameL = FrameAt(position, framesL);
            const auto frames = ReadFrames(*i_ringP, 1);
            if (frameL < framesL) {
                ASSERT_EQ(frames.size(), 1U);
                EXPECT_EQ(frames[0], frameL);
            }
        }
        i_ringP->Abort();
        EXPECT_EQ(i_ringP->WaitPumped(), abortErr);
        endB = true;
        render.join();
        callsL += std::min(readsL.load(), 250L);   // no more than the others made
    }
}
