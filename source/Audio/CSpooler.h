#pragma once
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "Audio/CSpoolGate.h"
#include "Core/Ref.h"
#include "Media/SpoolUnits.h"
#include "Threads/CMutex.h"
#include "Threads/CSemaphore.h"
#include "Values/CCFDictionary.h"

class CMutex_ThreadQue;
class CS_MainThread_AbortProc;
class CTaskView;

/** What a spool is made with. A subclass fills it in and hands it to CSpooler. */
struct SpoolTraits {
    std::string name;   // for logs: "BIN File", "Deque"
    SpoolType type = SpoolType::kOther;
    std::size_t unitBytes = kSpool_AudioUnitBytes;   // kSpool_GraphicsUnitBytes for sub-code
    SpoolLock lock = SpoolLock::kBoth;
    std::unique_ptr<CMutex> writeMutexP;   // for kReadAndOwnWrite, and then required
    bool waitsForDataB = false;            // a pump waits for data that somebody else writes
    bool ringB = false;                    // water marks; counts two units for one of its source
    bool ownPositionB = false;             // Seek_i works: a file, memory
    CCFDictionary source;                  // the reference of what is read or written
    CCFDictionary info;
};

/** A stream with a read side and a write side, which may be used from two threads at once. A pump (CAS_SpoolRecT) moves
    what one spool gives into another.

    Units    spans are bytes, whole units; all counts and sizes are units. GetPos, GetTotal and the size of Open speak
             of the source's units, whatever form the samples have in this spool.
    Threads  each operation any, but one thread a side. The forms with _i run under that side's lock (SpoolTraits::lock)
             and are what subclasses and adapters override; those marked "no lock" are the exceptions.
    Owner    Ref. Whoever starts a pump into a ring ends it by Close(false) or Abort of the ring.
    Errors   the first one is kept and answered from then on, and nobody waits at this spool any more. eofErr is the end
             of the data, abortErr and userCanceledErr were wished for; IsIgnorable tells which are not worth an alert. */
class CSpooler : public RefCounted {
public:
    explicit CSpooler(SpoolTraits traits);
    ~CSpooler() override;

    /** For write: `sizeL` is what will come, as far as known (0: not known). For read: a known size comes in or goes
        out, and the read count begins at 0. May take as long as the file or the net does. */
    OSErr Open(bool writeB, std::uint64_t& sizeL);
    /** On a preemptive thread closes, tells the completion of that side, and answers the result. Elsewhere a
        CAS_CloseSpool does it, and noErr comes back at once. A side that is not open: noErr. */
    OSErr Close(bool writeB);
    /** Fills the front of `buffer` with as many whole units as there are. noErr with 0 bytes: nothing has come yet;
        eofErr: nothing will come any more. Whatever it answers, `gotL` is set; a failure gives 0. */
    OSErr Read(std::span<std::byte> buffer, std::size_t& gotL);
    /** All of `bytes`, or a failure. A spool with water marks makes a writer wait above the high one until the reader
        is below the low one; no lock is held then. */
    OSErr Write(std::span<const std::byte> bytes);
    /** Units that Read would give now. */
    [[nodiscard]] std::uint64_t Available();
    /** To `position` (0 to 1) of the total. A ring comes back once the first block of the new place is in it, or when
        none will come; the main thread's timers and paint go on. eofErr: this one cannot. */
    virtual OSErr Seek(double position);
    /** abortErr from now on, here and up and down the chain: everybody who waits goes on. Never waits itself. */
    void Abort();

    /** Keeps the first error and lets everybody go on who waits. `writeSideB` says who failed, for the log. */
    void SetError(bool writeSideB, OSErr err);
    /** The first error; userCanceledErr or abortErr once the task or a completion was cancelled. */
    OSErr Err() const noexcept { return i_err.load(); }
    /** An end that was wished for, was told already, or is none: no alert. */
    [[nodiscard]] static bool IsIgnorable(OSErr err) noexcept;

    /** Where the reader is, in units of the source. */
    [[nodiscard]] std::uint64_t GetPos() const noexcept { return i_readL.load() / i_scaleL; }
    /** What there is in all; an estimate until the writer is done. */
    [[nodiscard]] std::uint64_t GetTotal() const noexcept { return i_totalL.load() / i_scaleL; }
    /** What was written since the opening or, in a ring, the position up to which it is filled. */
    [[nodiscard]] std::uint64_t GetWritten() const noexcept { return i_writtenL.load() / i_scaleL; }
    /** 0 to 1. */
    [[nodiscard]] double GetProgress() const noexcept;
    /** The size in units before anything is opened; 0: not known. */
    virtual OSErr GetEOF(std::uint64_t& sizeL);

    [[nodiscard]] SpoolType Type() const noexcept { return i_spoolType.load(); }
    [[nodiscard]] std::size_t UnitBytes() const noexcept { return i_unitBytesL; }
    /** "Spooler: ", the name, and the adapters around it. */
    [[nodiscard]] const std::string& TrackedName() const noexcept { return i_trackedName; }
    [[nodiscard]] const CCFDictionary& Source() const noexcept { return i_source; }
    [[nodiscard]] const CCFDictionary& Info() const noexcept { return i_info; }
    [[nodiscard]] bool IsOpen(bool writeB) const;
    [[nodiscard]] bool IsPumpRunning() const { return i_pumpRunningB.Get(); }
    [[nodiscard]] float Peak() const noexcept { return i_peakF.load(); }
    void SetPeak(float peakF) noexcept { i_peakF.store(peakF); }

    /** A fault is told to nobody for now: the song is only held ready. Any thread. */
    void SetQuiet(bool quietB) noexcept { i_quietB.store(quietB); }
    [[nodiscard]] bool IsQuiet() const noexcept { return i_quietB.load(); }
    /** A queue whose element uses this spool; once it has been told to stop, a read aborts. Null before the element
        ends: the queue is not kept. */
    void SetQue(const CMutex_ThreadQue* queP) noexcept { i_queP.store(queP); }
    /** Called once, with the result, when that side is done, also when the spool goes without having been closed. Takes
        it over; null is none. Aborting it ends the chain as Abort does. */
    void SetCompletion(bool writeSideB, CS_MainThread_AbortProc* completionP);
    /** A line in the task list, if there is one; its cancellation ends the chain as Abort does, with userCanceledErr. */
    void OpenTask(std::string_view text);
    void ReportTask(long doneL, long totalL);
    void CloseTask();

    /** The spool that a pump reads into this one, and the one that it fills from this one; null without a pump. */
    [[nodiscard]] Ref<CSpooler> SourceSpool() const { return i_sourceP.Get(); }
    [[nodiscard]] Ref<CSpooler> Destination() const { return i_destinationP.Get(); }
    /** Until no pump writes into this spool, or reads from it. The result is Err. */
    OSErr WaitPumped(WaitMode mode = WaitMode::kMain_TimersPaint);

protected:
    // The work of a subclass. Opening and closing happens under the locks of the side, with nothing else held.
    virtual OSErr Open_i(bool writeB, std::uint64_t& sizeL);
    virtual OSErr Close_i(bool writeB);
    /** `buffer` is no longer than what Available_i told. */
    virtual OSErr Read_i(std::span<std::byte> buffer, std::size_t& gotL);
    virtual OSErr Write_i(std::span<const std::byte> bytes);
    virtual std::uint64_t Available_i();
    /** Under the read lock; `positionL` in units. */
    virtual OSErr Seek_i(std::uint64_t positionL);
    /** Nothing will come any more; asked when nothing is there. */
    virtual bool IsAtEnd_i() { return true; }
    /** What the reader hears then. */
    virtual OSErr EndErr_i() const { return eofErr; }
    /** How far the reader came by the `gotL` bytes that the last Read_i gave, in units: an adapter that changes the
        tempo overrides it with what it took from its base. */
    virtual std::uint64_t Consumed_i(std::size_t gotL) { return gotL / i_unitBytesL; }
    /** The same for the `wroteL` bytes of the last Write_i: what they are in this spool's own units. */
    virtual std::uint64_t Stored_i(std::size_t wroteL) { return wroteL / i_unitBytesL; }
    /** No lock, any thread: own units between writer and reader, for the water marks. */
    virtual std::uint64_t Fill_i() const { return 0; }
    /** No lock. Ends what waits in the subclass (a net, a decoder); may run beside any other operation, on any thread. */
    virtual void Abort_i() {}
    /** No lock. The side is closed; a failure becomes the result of Close. */
    virtual OSErr OnClosed(bool /*writeB*/, OSErr /*err*/) { return noErr; }

    // What a pump asks of its destination. No lock, on the pump's thread.
    /** Before each chunk. A ring carries out the seek that somebody waits for. */
    virtual OSErr BeforeChunk_i(CSpooler& /*source*/) { return noErr; }
    /** The source is used up: what was written is all there is. False when it was sought meanwhile, and there is more. */
    virtual bool EndOfSource_i() { return true; }
    /** After that. True when the pump is to go on, after a wait: a ring may still be sought. */
    virtual bool GoesOn_i() { return false; }
    /** The source failed with `err`. True when the reader is to have first what was written before, and `err` at its
        end (EndErr_i); false when it fails at once. */
    virtual bool SourceFailed_i(OSErr /*err*/) { return false; }
    /** A writer that waits for room is needed elsewhere. */
    virtual bool IsWriterWanted_i() const { return false; }
    /** A pump begins, or ends. */
    virtual void SetPump_i(bool /*runsB*/) {}

    /** Tells the completion of that side, once. Preemptive threads. */
    void SetDone(bool writeSideB);
    /** `sizeL`, in units of the source, is what there is in all. */
    void SetTotal(std::uint64_t sizeL);
    /** For constructors: a part of the tracked name, such as " -> Adapter: Progress". */
    void Track(std::string_view text);
    /** Where the reader is, in own units; under the read lock. For a Seek_i that lands elsewhere than it was asked to. */
    void SetRead(std::uint64_t unitsL) noexcept { i_readL.store(unitsL); }
    [[nodiscard]] const CMutex* ReadLock() const noexcept { return i_readLockP; }
    [[nodiscard]] const CMutex* WriteLock() const noexcept { return i_writeLockP; }
    /** The next write counts as the first one, and lets those through who wait for `numberL`. Pump's thread. */
    void ExpectFirstWrite(long numberL);

    std::atomic<std::uint64_t> i_writtenL{0};   // own units; stored under the write lock
    std::atomic<std::uint64_t> i_readL{0};      // own units; stored under the read lock
    std::atomic<std::uint64_t> i_totalL{0};     // own units
    const std::uint64_t i_lowWaterL;            // own units; 0: no water marks
    const std::uint64_t i_highWaterL;
    CSpoolGate i_firstWrite;             // "the first block is in": of the start, and of each seek
    CSemaphore i_refillB{"i_refillB"};   // a writer above the high mark, or without work, waits here

private:
    friend class CSpoolPump;
    friend OSErr StartSpooling(const Ref<CSpooler>& sourceP, const Ref<CSpooler>& destinationP, bool cooperativeB);
    class SideLock;
    struct Life;
    struct Side {
        bool openB = false;
        bool closingB = false;
    };

    [[nodiscard]] const CMutex* Lock(bool writeB) const noexcept { return writeB ? i_writeLockP : i_readLockP; }
    OSErr CloseNow(bool writeB);
    void End(OSErr err);
    std::function<void()> CancelHook() const;
    void LookForCancel();
    OSErr TellEnd();
    OSErr WriteChunk(std::span<const std::byte> bytes);
    OSErr WaitForRoom();
    OSErr WaitForData();
    void PumpBegins();
    void PumpEnds();
    void TellCompletion(bool writeSideB, OSErr err);

    const std::size_t i_unitBytesL;
    const std::uint64_t i_scaleL;   // own units for one of the source
    const bool i_ownPositionB;
    std::atomic<SpoolType> i_spoolType;
    std::string i_trackedName;   // fixed after construction
    const CCFDictionary i_source;
    const CCFDictionary i_info;
    std::atomic<const CMutex_ThreadQue*> i_queP{nullptr};
    std::atomic<OSErr> i_err{noErr};       // the first one; never taken back
    std::atomic<OSErr> i_endedBy{noErr};   // abortErr or userCanceledErr, once the whole chain was ended
    std::atomic<float> i_peakF{0};
    std::atomic<bool> i_quietB{false};

    CMutex i_dataLock;
    const std::unique_ptr<CMutex> i_ownWriteLockP;
    const CMutex* const i_readLockP;    // null: that side belongs to one thread
    const CMutex* const i_writeLockP;   // taken after i_readLockP where both are

    mutable CMutex i_openLock;   // guards the two below; nothing else is locked or waited for under it
    Side i_sides[2];             // read, write
    std::uint64_t i_sizeL = 0;

    // Only the thread that writes stores these.
    std::int16_t i_firstWriteCountS = 0;   // 1 once a first write was told
    long i_firstNumberL = 0;               // whom it is told to

    std::atomic<bool> i_writerWaitsB{false};   // the reader signals i_refillB only then
    std::unique_ptr<CSemaphore> i_spoolDataSem;
    std::atomic<long> i_pumpsL{0};   // that read from this spool or write into it
    CSpoolGate i_pumps;              // one number a pump; reached when none is left
    CMutex_bool i_pumpRunningB;
    CMutexT<Ref<CSpooler>> i_sourceP;
    CMutexT<Ref<CSpooler>> i_destinationP;
    CMutexT<std::shared_ptr<CTaskView>> i_taskRecP;
    CMutexT<std::unique_ptr<CS_MainThread_AbortProc>> i_completions[2];   // read, write
    const std::shared_ptr<Life> i_lifeP;
};
