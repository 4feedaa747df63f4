#include "Audio/CSpoolPump.h"

#include <algorithm>
#include <mutex>
#include <vector>

#include "Core/CLog.h"
#include "Platform/CClock.h"
#include "Threads/CThreadManager.h"
#include "Threads/ThreadInfo.h"

namespace {
constexpr double kPump_YieldT = 0.005;
}

/** Every pump from its making to its end. Never freed: a thread that outlives the quit may still leave. */
struct CSpoolPump::Register {
    std::mutex lock;   // guards the two; nothing else is locked under it
    std::vector<CSpoolPump*> pumps;
    bool endingB = false;
};

CSpoolPump::Register& CSpoolPump::Pumps() {
    static auto* const s_registerP = new Register;
    return *s_registerP;
}

CSpoolPump::CSpoolPump(Ref<CSpooler> sourceP, Ref<CSpooler> destinationP)
    : i_sourceP(std::move(sourceP)), i_destinationP(std::move(destinationP)) {
    if (!i_sourceP || !i_destinationP) return;
    i_firstWriteL = i_destinationP->i_firstWrite.Next();
    i_sourceP->PumpBegins();
    i_destinationP->PumpBegins();
    i_destinationP->ExpectFirstWrite(i_firstWriteL);
    i_destinationP->SetPump_i(true);
    // Linked from here on, so that an abort finds the whole chain even while it is being opened.
    i_destinationP->i_sourceP.Set(i_sourceP);
    i_sourceP->i_destinationP.Set(i_destinationP);
    i_sourceP->i_pumpRunningB.Set(true);
    bool endingB = false;
    {
        const std::scoped_lock guard(Pumps().lock);
        Pumps().pumps.push_back(this);
        endingB = Pumps().endingB;
    }
    const OSErr err = endingB ? abortErr : FirstOf(i_sourceP->i_endedBy.load(), i_destinationP->i_endedBy.load());
    if (Failed(err)) {
        i_sourceP->End(err);   // one that was ended before it had a neighbour
        i_destinationP->End(err);
    }
}

CSpoolPump::~CSpoolPump() {
    if (!i_leftB) Leave(abortErr);
}

OSErr CSpoolPump::Run() {
    if (!i_sourceP || !i_destinationP) {
        Log("### Yikes! Crazy Freak Out Error!");
        return abortErr;
    }
    const OSErr err = Pump();
    Leave(err);
    return err;
}

OSErr CSpoolPump::Pump() {
    std::uint64_t sizeL = 0;
    if (const OSErr err = i_sourceP->Open(false, sizeL); Failed(err)) return err;
    std::uint64_t destinationSizeL = sizeL * i_sourceP->UnitBytes() / i_destinationP->UnitBytes();
    OSErr err = i_destinationP->Open(true, destinationSizeL);
    if (!Failed(err)) {
        err = Loop();
        // Known before the closing, so that a completion hears of it and a half-written file is not taken for a whole
        // one.
        if (Failed(err)) i_sourceP->SetError(false, err);
        TellDestination(err);
        i_destinationP->SetPump_i(false);
        const OSErr closeErr = i_destinationP->Close(true);
        if (Failed(closeErr)) i_destinationP->SetError(true, closeErr);
        err = FirstOf(err, closeErr);
    }
    return FirstOf(err, i_sourceP->Close(false));
}

OSErr CSpoolPump::Loop() {
    const bool cooperativeB = !IsPreemptiveThread();
    std::vector<std::byte> buffer(kSpool_ChunkBytes);
    const std::span<std::byte> chunk(buffer.data(), cooperativeB ? kSpool_CooperativeChunkBytes : kSpool_ChunkBytes);
    double yieldT = CClock::Get().SteadyT();
    for (;;) {
        if (cooperativeB && CClock::Get().SteadyT() - yieldT > kPump_YieldT) {
            YieldToCooperative();
            yieldT = CClock::Get().SteadyT();
        }
        if (const OSErr err = i_destinationP->Err(); Failed(err)) return err;
        if (const OSErr err = i_destinationP->BeforeChunk_i(*i_sourceP); Failed(err)) return err;
        if (const OSErr err = i_destinationP->WaitForRoom(); Failed(err)) return err;
        if (i_destinationP->IsWriterWanted_i()) continue;   // sought while it waited: there may be no room still
        if (const OSErr err = i_sourceP->WaitForData(); Failed(err)) return SourceFailed(err);
        std::size_t gotL = 0;
        if (const OSErr err = i_sourceP->Read(chunk, gotL); err == eofErr) {
            bool goOnB = false;
            if (const OSErr endErr = AtEndOfFile(goOnB); !goOnB) return endErr;
            continue;
        } else if (Failed(err)) {
            return SourceFailed(err);
        }
        if (gotL == 0) {
            WaitOneTurn();   // a source that has nothing yet and no signal for it
            continue;
        }
        if (const OSErr err = i_destinationP->WriteChunk(chunk.first(gotL)); Failed(err)) return err;
        if (i_sourceP->Type() == SpoolType::kBin) i_destinationP->SetPeak(i_sourceP->Peak());
    }
}

OSErr CSpoolPump::SourceFailed(OSErr err) {
    i_playsOutB = !Failed(i_destinationP->Err()) && i_destinationP->SourceFailed_i(err);
    return err;
}

/** How the source ended. */
void CSpoolPump::TellDestination(OSErr err) {
    if (!Failed(err) || err == eofErr) return;
    if (i_playsOutB)
        i_destinationP->TellCompletion(true, err);   // the loading is over all the same
    else
        i_destinationP->SetError(true, err);
}

OSErr CSpoolPump::AtEndOfFile(bool& goOnB) {
    goOnB = false;
    if (IsEnding() || i_destinationP->Type() == SpoolType::kMultiple || i_sourceP->Type() == SpoolType::kBin)
        return eofErr;
    if (!i_destinationP->EndOfSource_i()) {
        goOnB = true;
        return noErr;
    }
    i_destinationP->i_firstWrite.Reach(i_destinationP->i_firstNumberL);   // in case nothing was written
    goOnB = i_destinationP->GoesOn_i();
    return i_destinationP->Err();
}

void CSpoolPump::Leave(OSErr err) {
    i_leftB = true;
    if (!i_sourceP || !i_destinationP) return;
    {
        const std::scoped_lock guard(Pumps().lock);
        std::erase(Pumps().pumps, this);
    }
    if (Failed(err)) i_sourceP->SetError(false, err);
    TellDestination(err);
    i_destinationP->SetPump_i(false);
    i_destinationP->TellCompletion(true, FirstOf(err, i_destinationP->Err()));   // one that a closing has not told yet
    i_sourceP->TellCompletion(false, FirstOf(err, i_sourceP->Err()));
    i_destinationP->i_sourceP.Set(nullptr);
    i_sourceP->i_destinationP.Set(nullptr);
    i_sourceP->i_pumpRunningB.Set(false);
    i_destinationP->i_firstWrite.Reach(i_firstWriteL);
    i_sourceP->PumpEnds();
    i_destinationP->PumpEnds();
}

void CSpoolPump::AbortAll() {
    std::vector<Ref<CSpooler>> destinations;
    {
        const std::scoped_lock guard(Pumps().lock);
        Pumps().endingB = true;
        for (const CSpoolPump* pumpP : Pumps().pumps) destinations.push_back(pumpP->i_destinationP);
    }
    for (const Ref<CSpooler>& destinationP : destinations) destinationP->Abort();
}

void CSpoolPump::AllowAll() noexcept {
    const std::scoped_lock guard(Pumps().lock);
    Pumps().endingB = false;
}

bool CSpoolPump::IsEnding() noexcept {
    const std::scoped_lock guard(Pumps().lock);
    return Pumps().endingB || CThreadManager::IsKilling();
}
