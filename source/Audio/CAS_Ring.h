#pragma once
#include <array>
#include <atomic>
#include <cstddef>
#include <memory>
#include <optional>

#include "Audio/CSpooler.h"

/** The bounded store between the pump and the render thread: the reader drains a front block, the writer fills a back
    one, and an empty front changes places with the back.
    Units    of 2 bytes; it is meant for floats, so that a sample of the source counts as two. Positions are the
             source's.
    Threads  the reader allocates nothing, logs nothing, and takes only locks that others hold for a copy. Seek, Close
             and Abort on any other thread; several seeks at once are fine, the last one wins.
    Owner    whoever reads closes it, which ends the pump.
    Errors   Seek answers eofErr without a pump, or when the source cannot be sought: all stays as it was then. When the
             source fails, what is here is played first, and then the reader hears of it; after an abort both sides fail
             at once. */
class CAS_Ring : public CSpooler {
public:
    /** All memory is taken here. */
    CAS_Ring();
    ~CAS_Ring() override;

    OSErr Seek(double position) override;

    /** So many stereo frames of floats can be read at once, or no more will ever come. Any thread; no lock. */
    [[nodiscard]] bool HasFrames(std::size_t frames) const noexcept {
        return i_writtenAllB.load() || i_fillL.load() / (2 * sizeof(float)) >= frames;
    }

protected:
    OSErr Open_i(bool writeB, std::uint64_t& sizeL) override;
    OSErr Close_i(bool writeB) override;
    OSErr Read_i(std::span<std::byte> buffer, std::size_t& gotL) override;
    OSErr Write_i(std::span<const std::byte> bytes) override;
    std::uint64_t Available_i() override;
    bool IsAtEnd_i() override;
    std::uint64_t Consumed_i(std::size_t gotL) override;
    std::uint64_t Stored_i(std::size_t wroteL) override;
    std::uint64_t Fill_i() const override;
    OSErr OnClosed(bool writeB, OSErr err) override;
    OSErr BeforeChunk_i(CSpooler& source) override;
    bool EndOfSource_i() override;
    bool GoesOn_i() override;
    bool SourceFailed_i(OSErr err) override;
    OSErr EndErr_i() const override { return FirstOf(i_sourceErr.load(), eofErr); }
    bool IsWriterWanted_i() const override;
    void SetPump_i(bool runsB) override;

private:
    struct Block {
        std::unique_ptr<std::byte[]> bytesP;
        std::size_t readL = 0, writtenL = 0;   // readL <= writtenL <= kBlockBytes
    };
    /** The writer passes the high mark by one chunk of floats at most; a second one for a writer that does not wait. */
    static constexpr std::size_t kBlockBytes = (kSpool_HighWater + 4 * kSamplesAtATime) * kSpool_AudioUnitBytes;

    struct SeekRequest {
        long numberL;
        double position;
    };

    bool SwapBlocks();
    /** The last seek, unless it is done. */
    [[nodiscard]] std::optional<SeekRequest> Asked() const;
    void EndSeek(long numberL, OSErr err);
    void Empty(std::uint64_t positionL);

    std::array<Block, 2> i_blocks;
    Block* i_frontP = &i_blocks[0];   // under the read lock, and to be changed under both
    Block* i_backP = &i_blocks[1];    // under the write lock
    /** Bytes in both blocks: a writer adds under the write lock after its copy, a reader takes off under the read lock. */
    std::atomic<std::size_t> i_fillL{0};
    std::size_t i_takenL = 0;    // bytes read, and written, that the counts of the spool lack yet: under the lock of
    std::size_t i_storedL = 0;   // their side
    std::atomic<bool> i_stopSwapB{false};     // a seek is asked for and not done: what is in the back block is stale
    std::atomic<bool> i_writtenAllB{false};   // the source is used up and no seek is asked for
    std::atomic<OSErr> i_sourceErr{noErr};    // what ended it; stored before i_writtenAllB

    mutable CMutex i_seekLock;   // guards those below; nothing is locked, waited for or read under it
    bool i_pumpB = false;        // a pump will carry out what is asked for
    bool i_readerGoneB = false;
    long i_askedL = 0;   // the number of the last seek; done when equal to i_doneL
    long i_doneL = 0;
    double i_askedPosition = 0;
    OSErr i_seekErr = noErr;   // of the seek i_doneL
};
