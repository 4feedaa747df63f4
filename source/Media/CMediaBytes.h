#pragma once
#include <atomic>
#include <cstdint>
#include <memory>
#include <span>

#include "Files/CByteSource.h"

struct AVIOContext;

/** A byte source as FFmpeg reads it, and as packets are fetched again by their place.
    Threads  one at a time; Abort any.
    Owner    the demuxer's class, which is gone before this is. The source is not owned and outlives it.
    Errors   the first failure that was no end is kept; after an abort every read fails. */
class CMediaBytes {
public:
    CMediaBytes() = default;
    ~CMediaBytes();
    CMediaBytes(const CMediaBytes&) = delete;
    CMediaBytes& operator=(const CMediaBytes&) = delete;

    /** memFullErr when there is no room for the buffer. */
    OSErr Open(CByteSource& source);
    [[nodiscard]] AVIOContext* Context() const noexcept { return i_contextP; }
    /** All of `to`, from `at` on; eofErr when the source is shorter. Does not move the reader of the context. */
    OSErr ReadAt(std::uint64_t at, std::span<std::byte> to);
    [[nodiscard]] std::uint64_t Size() const { return Source().Size(); }
    /** Any place is as near as any other, which in a packed source it is not. */
    [[nodiscard]] bool IsNearEverywhere() const;

    /** The bytes that may still be read through the context, a bound on the cost of opening a hostile file; what lies
        beyond it reads as the end. The ways to the places of a packed source have a budget of the same size, or of four
        times what the source is stored in: a long movie with its index at the end opens, a bomb does not. */
    void SetBudget(std::uint64_t bytes) noexcept;
    /** The budget has refused something. */
    [[nodiscard]] bool IsSpent() const noexcept { return i_spentB; }
    void Abort() noexcept;
    [[nodiscard]] bool IsAborted() const noexcept { return i_abortB.load(); }
    OSErr Err() const noexcept { return IsAborted() ? abortErr : i_err; }
    /** For another try; an abort stays. */
    void ForgetErr() noexcept;

    static constexpr std::uint64_t kBudget_None = UINT64_MAX;

private:
    static int ReadPacket(void* selfP, std::uint8_t* toP, int sizeL);
    static std::int64_t SeekTo(void* selfP, std::int64_t offset, int whence);
    [[nodiscard]] CByteSource& Source() const noexcept { return *i_sourceP.load(std::memory_order_relaxed); }
    [[nodiscard]] bool IsInBudget();
    OSErr ReadSome(std::uint64_t at, std::span<std::byte> to, std::size_t& got);

    std::atomic<CByteSource*> i_sourceP{nullptr};   // for Abort; set once
    AVIOContext* i_contextP = nullptr;
    std::uint64_t i_posL = 0;   // the context's own; the source's moves with ReadAt
    bool i_spentB = false;
    std::uint64_t i_budgetL = kBudget_None, i_wayBudgetL = kBudget_None;
    std::atomic<bool> i_abortB{false};
    OSErr i_err = noErr;
};
