#pragma once
#include <atomic>
#include <cstddef>
#include <cstdint>

/** The three counters that lead a song's picture, in 300ths of a second: one packet is one unit.
    Threads  AddPending on the drift-free thread; Now on any; the rest on the main thread.
    Owner    the song, by value. */
class CGraphicsClock {
public:
    /** The song begins: its own slip in seconds, rounded to the nearest unit; nothing pending, nothing consumed. */
    void Start(double syncSeconds) noexcept;
    /** 4 for each sector, unless the song is paused. */
    void AddPending(std::int64_t units) noexcept { i_now.fetch_add(units, std::memory_order_relaxed); }
    /** Jumps: all of the song before `target300` is pending. The caller rewinds the stream for a way back. */
    void Seek(std::int64_t target300) noexcept;
    /** Moves what is pending now to consumed. */
    void ConsumePending() noexcept;

    /** Pending plus consumed: the song's current time. */
    [[nodiscard]] std::int64_t Now() const noexcept { return i_now.load(std::memory_order_relaxed); }
    [[nodiscard]] std::int64_t StartSync() const noexcept { return i_startSync; }
    /** Packets that the picture is behind; 0 or less when it is ahead. `slip300` holds packets back when negative. */
    [[nodiscard]] std::int64_t PacketsDue(std::int64_t slip300, std::size_t positionUnits) const noexcept;

    [[nodiscard]] bool StreamEnded() const noexcept { return i_streamEndedB; }
    void SetStreamEnded(bool endedB) noexcept { i_streamEndedB = endedB; }

private:
    std::int64_t i_startSync = 0;
    std::atomic<std::int64_t> i_now{0};   // consumed and pending in one value: no reader sees half of a change
    std::int64_t i_consumed = 0;          // the main thread's; what is above it is pending
    bool i_streamEndedB = false;
};
