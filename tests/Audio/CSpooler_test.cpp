#include "Audio/CSpooler.h"

#include <gtest/gtest.h>

#include "Audio/CAS_Deque.h"
#include "Audio/CAS_Memory.h"
#include "Audio/CAS_MultiSpool.h"
#include "Audio/CAS_Null.h"
#include "Audio/SpoolTest.h"
#include "Threads/CMutex_ThreadQue.h"

namespace {
class CSpoolerTest : public SpoolTest {};

std::vector<std::byte> Numbers(std::uint32_t fromL, std::uint32_t toL) {
    std::vector<std::byte> bytes((toL - fromL) * 4);
    for (std::uint32_t n = fromL; n < toL; ++n) std::memcpy(&bytes[(n - fromL) * 4], &n, 4);
    return bytes;
}

class FailingSink final : public CAS_Null {
public:
    OSErr i_openErr = noErr, i_writeErr = noErr, i_closeErr = noErr;

protected:
    OSErr Open_i(bool, std::uint64_t&) override { return i_openErr; }
    OSErr Close_i(bool) override { return i_closeErr; }
    OSErr Write_i(std::span<const std::byte>) override { return i_writeErr; }
};
}   // namespace

TEST_F(CSpoolerTest, APumpCarriesAllOfItOnBothKindsOfTask) {
    for (const bool cooperativeB : {false, true})
        for (const std::uint32_t framesL : {0U, 1U, 153U, 2447U, 2448U, 2449U, 30000U}) {
            SCOPED_TRACE(testing::Message() << framesL << (cooperativeB ? " cooperative" : " preemptive"));
            const auto sourceP = MakeRef<NumberSource>(framesL);
            const auto sinkP = MakeRef<CAS_Memory>();
            ASSERT_EQ(StartSpooling(sourceP, sinkP, cooperativeB), noErr);
            EXPECT_EQ(sinkP->WaitPumped(), noErr);
            EXPECT_EQ(sinkP->Bytes(), Numbers(0, framesL));
            EXPECT_EQ(sinkP->GetWritten(), framesL * 2);
            ASSERT_TRUE(RunUntil([&] { return !sinkP->IsOpen(true); }));
            EXPECT_EQ(sinkP->GetTotal(), framesL * 2);
            EXPECT_LE(sourceP->i_largestL, cooperativeB ? kSpool_CooperativeChunkBytes : kSpool_ChunkBytes);
            ASSERT_TRUE(RunUntil([&] { return sourceP->i_closedL == 1 && !sinkP->IsOpen(true); }));
            EXPECT_FALSE(sinkP->SourceSpool() || sourceP->Destination() || sourceP->IsPumpRunning());
        }
    EXPECT_FALSE(Logged("Spooler Error"));
}

TEST_F(CSpoolerTest, FailuresEndInBothSpoolsAndInOneAlert) {
    enum class At { kSourceOpen, kSourceRead, kSourceClose, kSinkOpen, kSinkWrite, kSinkClose };
    const struct {
        At at;
        OSErr err;
        bool atStartB, sinkB, alertB;
    } cases[] = {
        {At::kSourceOpen, fnfErr, true, true, true},
        {At::kSourceOpen, userCanceledErr, true, true, false},
        {At::kSourceOpen, alreadyReportedErr, true, true, false},
        {At::kSourceOpen, notThreadSafeErr, true, true, false},
        {At::kSourceOpen, abortErr, true, true, false},
        {At::kSourceRead, ioErr, true, true, true},
        {At::kSinkOpen, dskFulErr, true, true, true},
        {At::kSinkWrite, dskFulErr, true, true, true},
        {At::kSinkClose, ioErr, false, true, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "at " << static_cast<int>(c.at) << ", error " << Number(c.err));
        std::filesystem::remove(i_folder / "log.txt");
        CLog::Get().Close();
        const auto sourceP = MakeRef<NumberSource>(10U);
        const auto sinkP = MakeRef<FailingSink>();
        std::atomic<long> toldL{0};
        OSErr result = noErr;
        sinkP->SetCompletion(true, new MT_Told([&](OSErr told) {
                                 result = told;
                                 ++toldL;
                             }));
        if (c.at == At::kSourceOpen) sourceP->i_openErr = c.err;
        if (c.at == At::kSourceRead) sourceP->i_failAtL = 0, sourceP->i_readErr = c.err;
        if (c.at == At::kSinkOpen) sinkP->i_openErr = c.err;
        if (c.at == At::kSinkWrite) sinkP->i_writeErr = c.err;
        if (c.at == At::kSinkClose) sinkP->i_closeErr = c.err;
        const OSErr err = StartSpooling(sourceP, sinkP, false);
        EXPECT_EQ(c.atStartB ? err : c.err, c.err);
        EXPECT_EQ(sinkP->WaitPumped(), c.err);
        EXPECT_EQ(sinkP->Err(), c.err);
        EXPECT_EQ(sourceP->Err(), c.err);
        EXPECT_EQ(c.atStartB ? Logged("Spooler Error") : c.alertB, c.alertB);
        ASSERT_TRUE(RunUntil([&] { return toldL > 0; }));
        EXPECT_EQ(result, c.err);
        EXPECT_EQ(toldL, 1);
    }
}

TEST_F(CSpoolerTest, TheEndOfADiscImageIsTold) {
    const auto sourceP = MakeRef<NumberSource>(0U, SpoolType::kBin);
    const auto sinkP = MakeRef<CAS_Memory>();
    EXPECT_EQ(StartSpooling(sourceP, sinkP, false), eofErr);
    EXPECT_EQ(sinkP->WaitPumped(), noErr);
    EXPECT_EQ(sourceP->Err(), eofErr);
    EXPECT_FALSE(Logged("Spooler Error"));
    EXPECT_EQ(StartSpooling(nullptr, sinkP, false), abortErr);
    EXPECT_TRUE(Logged("### Yikes! Crazy Freak Out Error!"));
}

TEST_F(CSpoolerTest, AnAbortEndsAnOpeningAndAWaitForData) {
    const auto sourceP = MakeRef<NumberSource>(10U);
    const auto ringP = MakeRef<CAS_Ring>();
    sourceP->i_openGate.Shut();
    std::thread aborter([&] {
        sourceP->i_openGate.WaitArrival();
        ringP->Abort();
    });
    EXPECT_EQ(StartSpooling(sourceP, ringP, false), abortErr);
    aborter.join();
    EXPECT_EQ(ringP->WaitPumped(), abortErr);

    const auto dequeP = MakeRef<CAS_Deque>();   // nobody ever writes it
    const auto sinkP = MakeRef<CAS_Null>();
    std::thread second([&] {
        while (!dequeP->IsOpen(false)) std::this_thread::yield();
        dequeP->Abort();
    });
    EXPECT_EQ(StartSpooling(dequeP, sinkP, false), abortErr);
    second.join();
    EXPECT_EQ(sinkP->WaitPumped(), abortErr);
    EXPECT_FALSE(Logged("Spooler Error"));
}

TEST_F(CSpoolerTest, AfterTheQuitNothingStarts) {
    const auto sourceP = MakeRef<NumberSource>(1000000U);
    const auto ringP = MakeRef<NumberRing>();
    ASSERT_EQ(StartSpooling(sourceP, ringP, false), noErr);
    ASSERT_TRUE(WaitFull(*ringP));
    CSpoolPump::AbortAll();
    EXPECT_EQ(ringP->WaitPumped(), abortErr);
    EXPECT_EQ(StartSpooling(MakeRef<NumberSource>(10U), MakeRef<NumberRing>(), false), abortErr);
}

TEST_F(CSpoolerTest, ClosingOnTheMainThreadComesBackAtOnce) {
    const auto sourceP = MakeRef<NumberSource>(10U);
    std::uint64_t sizeL = 0;
    ASSERT_EQ(sourceP->Open(false, sizeL), noErr);
    EXPECT_EQ(sizeL, 20U);
    sourceP->i_closeGate.Shut();
    EXPECT_EQ(sourceP->Close(false), noErr);   // would wait for ever here
    sourceP->i_closeGate.WaitArrival();
    EXPECT_TRUE(sourceP->IsOpen(false));
    EXPECT_EQ(sourceP->Close(false), noErr);   // a second one has nothing to do
    sourceP->i_closeGate.Open();
    ASSERT_TRUE(RunUntil([&] { return !sourceP->IsOpen(false); }));
    EXPECT_EQ(sourceP->i_closedL, 1);
    sourceP->i_closeErr = ioErr;
    OnWorker([&] {
        EXPECT_EQ(sourceP->Open(false, sizeL), noErr);
        EXPECT_EQ(sourceP->Close(false), ioErr);
    });
    EXPECT_TRUE(Logged("### Error closing spooler for reading"));
}

TEST_F(CSpoolerTest, ADequeHandsOnWhatAnotherPumpBrings) {
    const auto sourceP = MakeRef<NumberSource>(100000U);
    const auto dequeP = MakeRef<CAS_Deque>();
    const auto sinkP = MakeRef<CAS_Memory>();
    sourceP->i_readGate.Shut();
    std::thread reader([&] { EXPECT_EQ(StartSpooling(dequeP, sinkP, false), noErr); });   // before there is anything
    std::thread writer([&] { EXPECT_EQ(StartSpooling(sourceP, dequeP, false), noErr); });
    sourceP->i_readGate.WaitArrival();
    std::size_t gotL = 1;
    std::byte some[4];
    EXPECT_EQ(dequeP->Read(some, gotL), noErr);   // nothing yet, and no end
    EXPECT_EQ(gotL, 0U);
    sourceP->i_readGate.Open();
    reader.join();
    writer.join();
    EXPECT_EQ(sinkP->WaitPumped(), noErr);
    EXPECT_EQ(sinkP->Bytes(), Numbers(0, 100000));
    EXPECT_EQ(dequeP->Read(some, gotL), eofErr);
}

TEST_F(CSpoolerTest, PartsAreReadAsOne) {
    const auto make = [] {
        std::vector<Ref<CSpooler>> parts;
        for (const auto& [fromL, toL] : {std::pair{0U, 1000U}, {1000U, 1000U}, {1000U, 1001U}, {1001U, 9000U}})
            parts.push_back(MakeRef<CAS_Memory>(Numbers(fromL, toL)));
        return MakeRef<CAS_MultiSpool>(std::move(parts));
    };
    const auto wholeP = make();
    std::uint64_t sizeL = 0;
    OnWorker([&] {
        ASSERT_EQ(wholeP->Open(false, sizeL), noErr);
        EXPECT_EQ(sizeL, 18000U);
        for (const std::uint32_t frameL : {0U, 999U, 1000U, 1001U, 8999U, 1U}) {
            ASSERT_EQ(wholeP->Seek(frameL / 9000.0), noErr);
            std::vector<std::byte> all(9001 * 4);
            std::size_t doneL = 0, gotL = 0;
            while (wholeP->Read(std::span(all).subspan(doneL), gotL) == noErr) doneL += gotL;
            all.resize(doneL);
            EXPECT_EQ(all, Numbers(frameL, 9000)) << "from " << frameL;
            EXPECT_EQ(wholeP->GetPos(), 18000U);
        }
        ASSERT_EQ(wholeP->Close(false), noErr);
    });
    const auto ringP = MakeRef<NumberRing>();
    ASSERT_EQ(StartSpooling(make(), ringP, false), noErr);
    OSErr err = noErr;
    EXPECT_EQ(ReadToEnd(*ringP, 0, err), 9000U);
    ASSERT_EQ(ringP->Seek(0.5), noErr);
    EXPECT_EQ(ReadToEnd(*ringP, 4500, err), 9000U);
}

TEST_F(CSpoolerTest, UnitsAreWholeAndCountsAreUnits) {
    for (const std::size_t unitL : {kSpool_AudioUnitBytes, kSpool_GraphicsUnitBytes}) {
        const auto spoolP =
            MakeRef<CAS_Memory>(std::vector<std::byte>(unitL * 600 + 1), unitL);   // and a byte too many
        std::uint64_t sizeL = 0;
        ASSERT_EQ(spoolP->Open(false, sizeL), noErr);
        EXPECT_EQ(sizeL, 600U);
        std::vector<std::byte> some(unitL * 100 + unitL - 1);
        std::size_t gotL = 0;
        EXPECT_EQ(spoolP->Read(some, gotL), noErr);
        EXPECT_EQ(gotL, unitL * 100);
        EXPECT_EQ(spoolP->GetPos(), 100U);
        EXPECT_EQ(spoolP->Read(std::span(some).first(unitL - 1), gotL), paramErr);
        EXPECT_EQ(spoolP->Read({}, gotL), noErr);
        // A seek begins at a whole frame, or packet, and stays inside.
        EXPECT_EQ(spoolP->Seek(301.0 / 600), noErr);
        EXPECT_EQ(spoolP->GetPos(), 300U);
        EXPECT_EQ(spoolP->Seek(7), noErr);
        EXPECT_EQ(spoolP->GetPos(), 600U);
        EXPECT_EQ(spoolP->Read(some, gotL), eofErr);
        EXPECT_EQ(spoolP->Seek(-1), noErr);
        EXPECT_EQ(spoolP->GetPos(), 0U);
        EXPECT_EQ(spoolP->Write(std::span(some).first(unitL + 1)), paramErr);
    }
    const auto nullP = MakeRef<CAS_Null>();
    std::size_t gotL = 0;
    std::byte some[4]{};
    EXPECT_EQ(nullP->Read(some, gotL), eofErr);
    EXPECT_EQ(nullP->Write(some), noErr);
    EXPECT_EQ(nullP->GetWritten(), 2U);
}

TEST_F(CSpoolerTest, CancellingIsAnError) {
    const auto spoolP = MakeRef<NumberSource>(10U);
    EXPECT_EQ(spoolP->Err(), noErr);
    spoolP->OpenTask("Export");
    EXPECT_EQ(spoolP->Err(), noErr);
    i_host.i_cancelP->Cancel();
    EXPECT_EQ(spoolP->Err(), userCanceledErr);
    std::size_t gotL = 1;
    std::byte some[4]{};
    EXPECT_EQ(spoolP->Read(some, gotL), userCanceledErr);
    EXPECT_EQ(gotL, 0U);
    spoolP->CloseTask();

    const auto otherP = MakeRef<NumberSource>(10U);
    auto* const completionP = new MT_Told([](OSErr result) { EXPECT_EQ(result, abortErr); });
    otherP->SetCompletion(false, completionP);
    EXPECT_EQ(otherP->Err(), noErr);
    completionP->Abort();
    EXPECT_EQ(otherP->Err(), abortErr);
    std::uint64_t sizeL = 0;
    EXPECT_EQ(otherP->Open(false, sizeL), abortErr);
    EXPECT_TRUE(Logged("### Error opening spooler for reading"));
}

TEST_F(CSpoolerTest, CancellingEndsAPumpThatWaits) {
    for (const bool taskB : {true, false}) {   // the user's word in the task list, or the completion's owner
        SCOPED_TRACE(taskB);
        const OSErr wanted = taskB ? userCanceledErr : abortErr;
        const auto fullP = MakeRef<NumberRing>();   // nobody reads: the pump waits for room
        const auto sourceP = MakeRef<NumberSource>(1000000U);
        const auto dequeP = MakeRef<CAS_Deque>();   // nobody writes: the pump waits for data
        const auto sinkP = MakeRef<CAS_Null>();
        i_host.i_cancelP = std::make_shared<CCancelSignal>();
        MT_Told* completions[2] = {};
        for (CSpooler* const spoolP : std::initializer_list<CSpooler*>{fullP.Get(), sinkP.Get()}) {
            if (taskB) {
                spoolP->OpenTask("Export");
            } else {
                const bool ringB = spoolP == fullP.Get();
                completions[ringB] = new MT_Told([wanted](OSErr result) { EXPECT_EQ(result, wanted); });
                spoolP->SetCompletion(true, completions[ringB]);
            }
        }
        ASSERT_EQ(StartSpooling(sourceP, fullP, false), noErr);
        ASSERT_TRUE(WaitFull(*fullP));
        std::thread canceller([&] {
            while (!dequeP->IsOpen(false)) std::this_thread::yield();
            if (taskB) i_host.i_cancelP->Cancel();
            for (MT_Told* const completionP : completions)
                if (completionP != nullptr) completionP->Abort();
        });
        EXPECT_EQ(StartSpooling(dequeP, sinkP, false), wanted);
        canceller.join();
        EXPECT_EQ(sinkP->WaitPumped(), wanted);
        EXPECT_EQ(fullP->WaitPumped(), wanted);
        EXPECT_EQ(sourceP->Err(), wanted);
        EXPECT_EQ(dequeP->Err(), wanted);
    }
}

TEST_F(CSpoolerTest, AClosedTaskCancelsNothing) {
    const auto spoolP = MakeRef<NumberSource>(10U);
    spoolP->OpenTask("Export");
    spoolP->CloseTask();
    MakeRef<NumberSource>(10U)->OpenTask("gone before its task is cancelled");
    i_host.i_cancelP->Cancel();
    EXPECT_EQ(spoolP->Err(), noErr);
    spoolP->OpenTask("cancelled from the start");
    EXPECT_EQ(spoolP->Err(), userCanceledErr);
}

TEST_F(CSpoolerTest, AStoppedQueueAbortsTheRead) {
    CMutex_ThreadQue que(kQue_Rip);
    const auto sourceP = MakeRef<NumberSource>(10U);
    std::atomic<bool> seenB{false};
    CT_QueElement element(
        [&](CT_QueElement&) {
            sourceP->SetQue(&que);
            std::size_t gotL = 0;
            std::byte some[4]{};
            EXPECT_EQ(sourceP->Read(some, gotL), noErr);
            que.Abort();
            EXPECT_EQ(sourceP->Read(some, gotL), abortErr);
            sourceP->SetQue(nullptr);
            EXPECT_EQ(sourceP->Read(some, gotL), abortErr);
            seenB = true;
            return noErr;
        },
        nullptr);
    ASSERT_EQ(que.Add(std::move(element)), noErr);
    ASSERT_TRUE(RunUntil([&] { return seenB.load(); }));
}
