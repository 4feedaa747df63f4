#include "Audio/CAS_Ring.h"

#include <cstring>

#include "Core/Assertions.h"
#include "Core/CLog.h"
#include "Threads/ThreadInfo.h"

namespace {
SpoolTraits RingTraits() {
    SpoolTraits traits;
    traits.name = "Ring";
    traits.type = SpoolType::kAudio;
    traits.lock = SpoolLock::kReadAndOwnWrite;
    traits.writeMutexP = std::make_unique<CMutex>();
    traits.ringB = true;
    return traits;
}
}   // namespace

CAS_Ring::CAS_Ring() : CSpooler(RingTraits()) {
    for (Block& block : i_blocks)
        block.bytesP = std::make_unique<std::byte[]>(kBlockBytes);   // touched: the pages are there
}

CAS_Ring::~CAS_Ring() = default;

OSErr CAS_Ring::Open_i(bool writeB, std::uint64_t&) {
    if (writeB) i_writtenAllB.store(false);
    return noErr;
}

OSErr CAS_Ring::Close_i(bool writeB) {
    if (writeB && !EndOfSource_i()) i_writtenAllB.store(true);   // a seek that nobody carries out any more
    return noErr;
}

OSErr CAS_Ring::OnClosed(bool writeB, OSErr) {
    if (writeB) return noErr;
    {
        const CMutex::Scope guard(i_seekLock);
        i_readerGoneB = true;
    }
    Abort();   // nobody will read what the pump brings
    return noErr;
}

OSErr CAS_Ring::Read_i(std::span<std::byte> buffer, std::size_t& gotL) {
    gotL = 0;
    do {
        Block& front = *i_frontP;
        const std::size_t countL = std::min(front.writtenL - front.readL, buffer.size() - gotL);
        std::memcpy(buffer.data() + gotL, front.bytesP.get() + front.readL, countL);
        front.readL += countL;
        gotL += countL;
        i_takenL += countL;
        i_fillL.fetch_sub(countL);
    } while (gotL < buffer.size() && SwapBlocks());
    return noErr;
}

bool CAS_Ring::SwapBlocks() {
    if (i_stopSwapB.load() || Failed(ReadLock()->Err()) || Failed(WriteLock()->Err())) return false;
    const CMutex::Scope guard(*WriteLock());
    if (i_backP->writtenL == 0) return false;
    std::swap(i_frontP, i_backP);
    i_backP->readL = i_backP->writtenL = 0;
    return true;
}

OSErr CAS_Ring::Write_i(std::span<const std::byte> bytes) {
    Block& back = *i_backP;
    if (!Assert(bytes.size() <= kBlockBytes - back.writtenL)) return paramErr;   // a writer that does not wait
    std::memcpy(back.bytesP.get() + back.writtenL, bytes.data(), bytes.size());
    back.writtenL += bytes.size();
    i_storedL += bytes.size();
    i_fillL.fetch_add(bytes.size());
    return noErr;
}

std::uint64_t CAS_Ring::Available_i() {
    // While a seek is on its way, the back block holds what nobody wants to hear any more.
    return (i_stopSwapB.load() ? i_frontP->writtenL - i_frontP->readL : i_fillL.load()) / UnitBytes();
}

bool CAS_Ring::IsAtEnd_i() {
    // In this order: the writer fills, then says that this was all.
    return i_writtenAllB.load() && !i_stopSwapB.load() && i_fillL.load() == 0;
}

std::uint64_t CAS_Ring::Consumed_i(std::size_t) { return std::exchange(i_takenL, 0) / UnitBytes(); }
std::uint64_t CAS_Ring::Stored_i(std::size_t) { return std::exchange(i_storedL, 0) / UnitBytes(); }
std::uint64_t CAS_Ring::Fill_i() const { return i_fillL.load() / UnitBytes(); }

OSErr CAS_Ring::Seek(double position) {
    if (const OSErr err = Err(); Failed(err)) return err;
    long numberL = 0;
    {
        const CMutex::Scope guard(i_seekLock);
        if (!i_pumpB) return EndErr_i();
        numberL = i_askedL = i_firstWrite.Next();
        i_askedPosition = position > 0 ? std::min(position, 1.0) : 0;
        i_stopSwapB.store(true);
        i_writtenAllB.store(false);
    }
    i_refillB.Signal();   // a writer that waits for room, or has none to write for, carries it out
    i_firstWrite.Wait(numberL, WaitMode::kMain_TimersPaint);
    if (const OSErr err = Err(); Failed(err)) return err;
    const CMutex::Scope guard(i_seekLock);
    return i_doneL == numberL ? i_seekErr : noErr;   // one that a later seek has overtaken is over with that one
}

bool CAS_Ring::IsWriterWanted_i() const {
    const CMutex::Scope guard(i_seekLock);
    return i_askedL != i_doneL || i_readerGoneB;
}

std::optional<CAS_Ring::SeekRequest> CAS_Ring::Asked() const {
    const CMutex::Scope guard(i_seekLock);
    if (i_askedL == i_doneL) return std::nullopt;
    return SeekRequest{i_askedL, i_askedPosition};
}

void CAS_Ring::EndSeek(long numberL, OSErr err) {
    const CMutex::Scope guard(i_seekLock);
    i_doneL = numberL;
    i_seekErr = err;
    if (i_askedL == i_doneL) i_stopSwapB.store(false);
}

OSErr CAS_Ring::BeforeChunk_i(CSpooler& source) {
    while (const auto asked = Asked()) {
        double position = asked->position;
        // The fraction is one of our total, which may have become better than the source's estimate.
        if (source.GetTotal() != 0 && source.GetTotal() != GetTotal())
            position *= static_cast<double>(GetTotal()) / static_cast<double>(source.GetTotal());
        const OSErr err = source.Seek(position);
        if (Failed(err) && err != eofErr) return err;
        if (!Failed(err)) {
            Empty(source.GetPos() * 2);
            ExpectFirstWrite(asked->numberL);
        }
        EndSeek(asked->numberL, err);
        if (Failed(err)) i_firstWrite.Reach(asked->numberL);   // a source that cannot be sought goes on where it is
    }
    return noErr;
}

void CAS_Ring::Empty(std::uint64_t positionL) {
    const CMutex::Scope readGuard(*ReadLock());
    const CMutex::Scope writeGuard(*WriteLock());
    for (Block& block : i_blocks) block.readL = block.writtenL = 0;
    i_fillL.store(0);
    i_takenL = i_storedL = 0;
    i_writtenL.store(positionL);
    i_readL.store(positionL);
}

bool CAS_Ring::EndOfSource_i() {
    SetTotal(GetWritten());   // right also when a seek has been asked for meanwhile
    const CMutex::Scope guard(i_seekLock);
    if (i_askedL != i_doneL) return false;
    i_writtenAllB.store(true);
    return true;
}

bool CAS_Ring::SourceFailed_i(OSErr err) {
    const CMutex::Scope guard(i_seekLock);
    // Somebody waits for what is not here, or there is nothing: then it fails now.
    if (i_askedL != i_doneL || i_fillL.load() == 0) return false;
    i_sourceErr.store(err);
    i_writtenAllB.store(true);
    i_pumpB = false;   // from here on a seek is refused
    return true;
}

bool CAS_Ring::GoesOn_i() {
    if (IsPreemptiveThread()) SetDone(true);   // a cooperative pump tells at its end
    while (!Failed(Err())) {
        if (Asked()) return true;
        if (Failed(i_refillB.Wait(WaitMode::kForever))) break;
    }
    return false;
}

void CAS_Ring::SetPump_i(bool runsB) {
    {
        const CMutex::Scope guard(i_seekLock);
        i_pumpB = runsB;
        if (!runsB && i_askedL != i_doneL) {
            i_doneL = i_askedL;
            i_seekErr = eofErr;
            i_stopSwapB.store(false);
        }
    }
    if (!runsB) i_firstWrite.Reach(i_firstWrite.Latest());   // a seek that nobody will carry out
}
