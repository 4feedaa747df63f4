#include "Audio/CSpooler.h"

#include <algorithm>
#include <cmath>
#include <mutex>
#include <optional>

#include "Audio/CAS_CloseSpool.h"
#include "Audio/CSpoolPump.h"
#include "Core/Assertions.h"
#include "Core/CLog.h"
#include "Threads/CMutex_ThreadQue.h"
#include "Threads/CS_MainThread_AbortProc.h"
#include "Threads/CThreadHost.h"
#include "Threads/ThreadInfo.h"

namespace {
constexpr double kSeek_AgainT = 0.1;
constexpr OSErr kIgnorable[] = {eofErr, userCanceledErr, alreadyReportedErr, notThreadSafeErr, abortErr};

/** A place where a whole stereo frame, or a whole packet of sub-code, begins. */
std::uint64_t WholeFrames(std::uint64_t unitsL, std::size_t unitBytesL) {
    return unitsL - unitsL % (unitBytesL == kSpool_GraphicsUnitBytes ? kSpool_UnitsPerPacket : kSpool_UnitsPerFrame);
}
}   // namespace

/** The lock of one side, if it has one. */
class CSpooler::SideLock {
public:
    explicit SideLock(const CMutex* lockP) {
        if (lockP != nullptr) i_scope.emplace(*lockP);
    }

private:
    std::optional<CMutex::Scope> i_scope;
};

/** By which a hook finds the spool, as long as there is one. */
struct CSpooler::Life {
    std::mutex lock;
    CSpooler* spoolP;

    Ref<CSpooler> Spool() {
        const std::scoped_lock guard(lock);
        return spoolP != nullptr && spoolP->TryRetain() ? Ref<CSpooler>::Adopt(spoolP) : nullptr;
    }
};

CSpooler::CSpooler(SpoolTraits traits)
    : i_lowWaterL(traits.ringB ? kSpool_LowWater : 0),
      i_highWaterL(traits.ringB ? kSpool_HighWater : 0),
      i_unitBytesL(traits.unitBytes),
      i_scaleL(traits.ringB ? 2 : 1),
      i_ownPositionB(traits.ownPositionB),
      i_spoolType(traits.type),
      i_trackedName("Spooler: " + traits.name),
      i_source(std::move(traits.source)),
      i_info(std::move(traits.info)),
      i_ownWriteLockP(std::move(traits.writeMutexP)),
      i_readLockP(traits.lock == SpoolLock::kWrite ? nullptr : &i_dataLock),
      i_writeLockP(traits.lock == SpoolLock::kReadAndOwnWrite ? i_ownWriteLockP.get()
                   : traits.lock == SpoolLock::kRead          ? nullptr
                                                              : &i_dataLock),
      i_lifeP(std::make_shared<Life>()) {
    i_lifeP->spoolP = this;
    AssertWords(traits.lock != SpoolLock::kReadAndOwnWrite || i_ownWriteLockP != nullptr, "writeMutexP");
    if (traits.waitsForDataB) i_spoolDataSem = std::make_unique<CSemaphore>("spool data");
}

CSpooler::~CSpooler() {
    {
        const std::scoped_lock guard(i_lifeP->lock);
        i_lifeP->spoolP = nullptr;
    }
    for (const bool writeB : {false, true}) TellCompletion(writeB, abortErr);   // never closed
}

void CSpooler::Track(std::string_view text) {
    i_trackedName += text;
    Log(i_trackedName);
}

OSErr CSpooler::Open(bool writeB, std::uint64_t& sizeL) {
    const char* const sideZ = writeB ? "writing" : "reading";
    Log((writeB ? "Open for write: " : "Open for read: ") + i_trackedName);
    bool takenB = false;
    std::uint64_t knownL = 0;
    {
        const CMutex::Scope guard(i_openLock);
        takenB = std::exchange(i_sides[writeB].openB, true);
        if (!takenB && (writeB || sizeL != 0)) i_sizeL = sizeL;
        knownL = i_sizeL;
    }
    if (!AssertWords(!takenB, "a side is opened once")) return paramErr;
    if (!writeB) sizeL = knownL;
    OSErr err = Err();
    if (!Failed(err)) {
        const SideLock lock(Lock(writeB));
        // A ring keeps its position: it may have been sought before its reader came.
        if (!writeB && i_highWaterL == 0) i_readL.store(0);
        if (writeB && i_highWaterL == 0) i_writtenL.store(0);
        err = Open_i(writeB, sizeL);
    }
    err = FirstOf(err, Err());
    if (Failed(err)) {
        LogF("### Error opening spooler for %s: %s: %s", sideZ, i_trackedName.c_str(), ErrorText(err).c_str());
        SetError(writeB, err);
        const CMutex::Scope guard(i_openLock);
        i_sides[writeB].openB = false;
        return err;
    }
    if (writeB || sizeL != knownL)
        SetTotal(sizeL);
    else if (i_highWaterL == 0)
        i_totalL.store(sizeL * i_scaleL);
    return noErr;
}

OSErr CSpooler::Close(bool writeB) {
    if (IsPreemptiveThread() || CAS_CloseSpool::Start(std::make_unique<CAS_CloseSpool>(Ref(this), writeB)) == 0)
        return CloseNow(writeB);
    return noErr;
}

OSErr CSpooler::CloseNow(bool writeB) {
    {
        const CMutex::Scope guard(i_openLock);
        Side& side = i_sides[writeB];
        if (!side.openB || std::exchange(side.closingB, true)) return noErr;
    }
    Log((writeB ? "Close for write: " : "Close for read: ") + i_trackedName);
    OSErr err = noErr;
    {
        const SideLock lock(Lock(writeB));
        err = Close_i(writeB);
    }
    {
        const CMutex::Scope guard(i_openLock);
        i_sides[writeB] = Side{};
    }
    const OSErr result = FirstOf(Err(), err);
    if (writeB && i_highWaterL == 0) SetTotal(GetWritten());   // a ring knows more of its end
    err = FirstOf(err, OnClosed(writeB, err));
    if (writeB && i_spoolDataSem) i_spoolDataSem->Signal();
    if (Failed(err) && err != abortErr && err != userCanceledErr)
        LogF("### Error closing spooler for %s: %s: %s", writeB ? "writing" : "reading", i_trackedName.c_str(),
             ErrorText(err).c_str());
    TellCompletion(writeB, FirstOf(result, err));
    return err;
}

bool CSpooler::IsOpen(bool writeB) const {
    const CMutex::Scope guard(i_openLock);
    return i_sides[writeB].openB;
}

OSErr CSpooler::Read(std::span<std::byte> buffer, std::size_t& gotL) {
    gotL = 0;
    if (const CMutex_ThreadQue* const queP = i_queP.load(); queP != nullptr && queP->IsToldToStop()) Abort();
    if (const OSErr err = Err(); Failed(err)) return err;
    if (buffer.size() < i_unitBytesL) return buffer.empty() ? noErr : paramErr;
    OSErr err = noErr;
    {
        const SideLock lock(i_readLockP);
        const std::uint64_t unitsL = std::min<std::uint64_t>(Available_i(), buffer.size() / i_unitBytesL);
        if (unitsL == 0) return IsAtEnd_i() ? TellEnd() : noErr;
        err = Read_i(buffer.first(static_cast<std::size_t>(unitsL) * i_unitBytesL), gotL);
        if (err == eofErr) err = gotL > 0 ? noErr : TellEnd();   // after some, the next one tells
        if (Failed(err)) gotL = 0;
        i_readL.fetch_add(Consumed_i(gotL));
    }
    err = FirstOf(Err(), err);
    if (Failed(err)) gotL = 0;
    // The writer stores its flag, then looks at the fill; we change the fill, then look at the flag: one of us sees it.
    if (i_lowWaterL != 0 && Fill_i() < i_lowWaterL && i_writerWaitsB.load()) i_refillB.Signal();
    return err;
}

/** A failure that was kept for the end is this spool's own from now on. The render thread may be the one that reads: no
    log, and the pump, which is gone, needs no signal. */
OSErr CSpooler::TellEnd() {
    const OSErr err = EndErr_i();
    if (OSErr none = noErr; err != eofErr) i_err.compare_exchange_strong(none, err);
    return err;
}

OSErr CSpooler::Write(std::span<const std::byte> bytes) {
    if (i_highWaterL == 0) return WriteChunk(bytes);
    do {   // in pieces: what passes the high mark is bounded
        const auto piece = bytes.first(std::min(bytes.size(), kSpool_ChunkBytes));
        if (const OSErr err = WriteChunk(piece); Failed(err)) return err;
        if (const OSErr err = WaitForRoom(); Failed(err)) return err;
        bytes = bytes.subspan(piece.size());
    } while (!bytes.empty());
    return noErr;
}

OSErr CSpooler::WriteChunk(std::span<const std::byte> bytes) {
    if (const OSErr err = Err(); Failed(err)) return err;
    if (bytes.size() % i_unitBytesL != 0) return LogStep(paramErr, "spool: part of a unit written");
    if (bytes.empty()) return noErr;
    {
        const SideLock lock(i_writeLockP);
        if (const OSErr err = Write_i(bytes); Failed(err)) return err;
        i_writtenL.fetch_add(Stored_i(bytes.size()));
    }
    if (i_spoolDataSem) i_spoolDataSem->Signal();
    if (i_firstWriteCountS == 0) {
        i_firstWriteCountS = 1;
        i_firstWrite.Reach(i_firstNumberL);
    }
    return Err();
}

OSErr CSpooler::WaitForRoom() {
    if (i_highWaterL == 0 || Fill_i() <= i_highWaterL) return Err();
    i_writerWaitsB.store(true);
    OSErr err = noErr;
    while (Fill_i() >= i_lowWaterL && !IsWriterWanted_i()) {
        if (err = Err(); Failed(err)) break;
        err = i_refillB.Wait(WaitMode::kForever);   // a signal says only "look again"
    }
    i_writerWaitsB.store(false);
    return Err();
}

OSErr CSpooler::WaitForData() {
    while (i_spoolDataSem) {
        if (const OSErr err = Err(); Failed(err)) return err;
        {
            const SideLock lock(i_readLockP);
            if (Available_i() > 0 || IsAtEnd_i()) break;
        }
        if (Failed(i_spoolDataSem->Wait(WaitMode::kForever))) break;
    }
    return Err();
}

std::uint64_t CSpooler::Available() {
    const SideLock lock(i_readLockP);
    return Available_i();
}

OSErr CSpooler::Seek(double position) {
    if (const OSErr err = Err(); Failed(err)) return err;
    position = position > 0 ? std::min(position, 1.0) : 0;   // what is no number is the start
    if (i_ownPositionB) {
        const SideLock lock(i_readLockP);
        const double unitsF = position * static_cast<double>(i_totalL.load());
        const std::uint64_t beforeL = i_readL.load();
        i_readL.store(WholeFrames(static_cast<std::uint64_t>(std::llround(unitsF)), i_unitBytesL));
        const OSErr err = Seek_i(i_readL.load());
        if (Failed(err)) i_readL.store(beforeL);
        return err;
    }
    for (;;) {
        const Ref<CSpooler> sourceP = SourceSpool();
        if (!sourceP) return eofErr;
        const OSErr err = sourceP->Seek(position);
        // While the source still grows the place may come; afterwards it never will.
        if (err != eofErr || CSpoolPump::IsEnding() || !sourceP->IsOpen(true)) return err;
        ::Wait(kSeek_AgainT, WaitMode::kMain_EventLoop);
        if (const OSErr ownErr = Err(); Failed(ownErr)) return ownErr;
    }
}

void CSpooler::Abort() { End(abortErr); }

void CSpooler::End(OSErr err) {
    OSErr none = noErr;
    if (!i_endedBy.compare_exchange_strong(none, err)) return;   // neighbours end each other
    SetError(false, err);
    Abort_i();
    if (const Ref<CSpooler> sourceP = SourceSpool()) sourceP->End(err);
    if (const Ref<CSpooler> destinationP = Destination()) destinationP->End(err);
}

std::function<void()> CSpooler::CancelHook() const {
    return [lifeP = i_lifeP] {
        if (const Ref<CSpooler> spoolP = lifeP->Spool()) spoolP->LookForCancel();
    };
}

/** Only what is here still counts: a task that was closed, or a completion that was told, says nothing any more. */
void CSpooler::LookForCancel() {
    if (const std::shared_ptr<CTaskView> taskP = i_taskRecP.Get(); taskP && taskP->IsCancelled()) End(userCanceledErr);
    for (const auto& completion : i_completions)
        if (completion.With([](const auto& procP) { return procP && procP->IsAborted(); })) End(abortErr);
}

void CSpooler::SetError(bool writeSideB, OSErr err) {
    if (!Failed(err)) return;
    OSErr none = noErr;
    if (i_err.compare_exchange_strong(none, err) && !IsIgnorable(err))
        LogF("### Error spooling, %s side: %s: %s", writeSideB ? "write" : "read", i_trackedName.c_str(),
             ErrorText(err).c_str());
    i_firstWrite.ForceOpen();
    i_refillB.Signal(true);
    if (i_spoolDataSem) i_spoolDataSem->Signal(true);
}

bool CSpooler::IsIgnorable(OSErr err) noexcept { return std::ranges::find(kIgnorable, err) != std::end(kIgnorable); }

double CSpooler::GetProgress() const noexcept {
    const std::uint64_t totalL = i_totalL.load();
    return totalL == 0 ? 0 : static_cast<double>(i_readL.load()) / static_cast<double>(totalL);
}

OSErr CSpooler::GetEOF(std::uint64_t& sizeL) {
    sizeL = 0;
    return noErr;
}

void CSpooler::SetTotal(std::uint64_t sizeL) {
    const CMutex::Scope guard(i_openLock);
    i_sizeL = sizeL;
    i_totalL.store(sizeL * i_scaleL);
}

void CSpooler::SetCompletion(bool writeSideB, CS_MainThread_AbortProc* completionP) {
    if (completionP != nullptr) completionP->OnAbort(CancelHook());   // before: once it is ours it may be told and gone
    i_completions[writeSideB].Set(std::unique_ptr<CS_MainThread_AbortProc>(completionP));
    LookForCancel();   // it may have been aborted in between
}

void CSpooler::SetDone(bool writeSideB) {
    Assert(IsPreemptiveThread());
    TellCompletion(writeSideB, Err());
}

void CSpooler::TellCompletion(bool writeSideB, OSErr err) {
    CS_MainThread_AbortProc* const procP = i_completions[writeSideB].Exchange(nullptr).release();
    if (procP == nullptr) return;
    procP->SetResult(err);
    if (Failed(procP->Call(CallMode::kNoWait))) return;   // what it makes of the result is its own affair
}

void CSpooler::OpenTask(std::string_view text) {
    std::shared_ptr<CTaskView> taskP;
    CThreadHost::With([&](CThreadHost& host) { taskP = host.OpenTask(text); });
    i_taskRecP.Set(taskP);
    if (taskP) taskP->OnCancel(CancelHook());
}

void CSpooler::ReportTask(long doneL, long totalL) {
    if (const std::shared_ptr<CTaskView> taskP = i_taskRecP.Get()) taskP->SetSteps(doneL, totalL);
}

void CSpooler::CloseTask() { i_taskRecP.Set(nullptr); }

void CSpooler::ExpectFirstWrite(long numberL) {
    i_firstWriteCountS = 0;
    i_firstNumberL = numberL;
}

void CSpooler::PumpBegins() {
    i_pumpsL.fetch_add(1);   // before the number: the last one to end reaches no number of a pump that it does not see
    i_pumps.Next();
}

void CSpooler::PumpEnds() {
    const long latestL = i_pumps.Latest();
    if (i_pumpsL.fetch_sub(1) == 1) i_pumps.Reach(latestL);
}

OSErr CSpooler::WaitPumped(WaitMode mode) {
    i_pumps.Wait(i_pumps.Latest(), mode);
    return Err();
}

OSErr CSpooler::Open_i(bool, std::uint64_t&) { return noErr; }
OSErr CSpooler::Close_i(bool) { return noErr; }
OSErr CSpooler::Read_i(std::span<std::byte>, std::size_t&) {
    AssertWords(false, "a spool that cannot be read");
    return eofErr;
}
OSErr CSpooler::Write_i(std::span<const std::byte>) {
    AssertWords(false, "a spool that cannot be written");
    return eofErr;
}
std::uint64_t CSpooler::Available_i() { return 0; }
OSErr CSpooler::Seek_i(std::uint64_t) { return eofErr; }
