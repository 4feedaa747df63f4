#pragma once
#include <atomic>
#include <mutex>

/** The time that leads a movie's picture: that of the sound, whose blocks come in steps of some 46 ms, made into a
    smooth one; or, for a movie without sound, a clock of its own.
    Units    seconds of the song; the delay in milliseconds, positive for a picture that is shown later.
    Threads  Follow, Jump and Run on the main thread; the rest any. */
class CMovieTime {
public:
    static constexpr long kMost_Delay = 2000;

    CMovieTime();
    /** The sound is heard at `heardT`. While it runs a small difference is made up for over two seconds; a large one,
        and any while it stands, at once. Answers what the picture is to show now. */
    double Follow(double heardT, bool runningB, double rate);
    /** Stands at `seconds`, until the next Follow or Run. */
    void Jump(double seconds);
    /** Own clock; the same answer. */
    double Run(bool runningB, double rate = 1);

    [[nodiscard]] double Now() const;
    /** What the picture is to show now. */
    [[nodiscard]] double PictureT() const { return Now() - DelayT(); }
    /** Seconds of song that pass a second; 0 while it stands. */
    [[nodiscard]] double Rate() const;
    /** Limited to kMost_Delay either way. */
    void SetDelay(long milliseconds);
    [[nodiscard]] long Delay() const { return i_delayL.load(std::memory_order_relaxed); }

private:
    [[nodiscard]] double DelayT() const { return static_cast<double>(Delay()) / 1000; }
    [[nodiscard]] double NowLocked(double steadyT) const { return i_baseT + (steadyT - i_atT) * i_rate; }

    mutable std::mutex i_lock;   // guards the line: `i_baseT` at the steady time `i_atT`, rising by `i_rate`
    double i_baseT = 0, i_atT = 0, i_rate = 0;
    std::atomic<long> i_delayL{0};
};
