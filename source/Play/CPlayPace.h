#pragma once
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>

class CGraphicsClock;

/** The sound as far as the picture must know it. Any thread; waits for nothing. */
class CHeardSound {
public:
    virtual ~CHeardSound() = default;
    /** Frames that the output has taken. */
    [[nodiscard]] virtual std::uint64_t FramesPlayed() const = 0;
    /** Frames that it was given. */
    [[nodiscard]] virtual std::uint64_t FramesGiven() const = 0;
    /** The place in the song, in 300ths, that frame `outputL` of the output is. */
    [[nodiscard]] virtual double PlaceOf(std::uint64_t outputL) const = 0;
    /** Nothing will come any more. */
    [[nodiscard]] virtual bool IsOver() const = 0;
};

/** When the clock of the picture runs. It is a clock of its own, so that a stall of the sound does not stop the words,
    but it starts and stops with what is heard: the blocks that wait in the output count. After a start, a pause and a
    seek it begins at the place of the first new frame, at the moment when the output takes it; a pause lets it run up
    to the last frame that was given; a new tempo counts from the frame that has it.
    Units    300ths of the song; frames of the output.
    Threads  Tick on the clock's, the rest on the main one. Shared: the thread may outlive the song. */
class CPlayPace {
public:
    explicit CPlayPace(CGraphicsClock& clock) : i_clockP(&clock) {}

    /** How the thread that ticks is woken when the clock goes on; runs under the lock. Forgotten by Detach. */
    void SetWake(std::function<void()> wake);
    /** Null: a picture without sound, which runs at once. */
    void SetSound(std::shared_ptr<const CHeardSound> soundP);
    /** Just before the sound is let go. */
    void Run();
    /** Just after it was told to pause. */
    void Pause();
    /** The sound is about to be somewhere else: the clock stands at `target300`. */
    void BeginSeek(long target300);
    /** It is there. */
    void EndSeek();
    /** The song goes. */
    void Detach();

    /** The clock runs by itself: what is heard now was heard without a break since it began to. */
    [[nodiscard]] bool IsRunning() const;
    /** Of the thread: the period to sleep, in microseconds. */
    [[nodiscard]] long Period() const;
    void SetTempo(double tempo);
    /** Of what is heard. */
    [[nodiscard]] double Tempo() const;
    /** A sector's time has gone by. False when the clock stands, until the thread is woken. */
    bool Tick();

private:
    enum class Mode { kStands, kWaits, kRuns, kStops };
    void Wait();
    void TickWaiting();
    bool TickStopping();
    /** So that the clock is at `target300`, as far as it can tell. */
    void MoveTo(double target300);

    mutable std::mutex i_lock;   // guards all; held for a few additions
    CGraphicsClock* i_clockP;    // null once the song has gone
    std::shared_ptr<const CHeardSound> i_soundP;
    std::function<void()> i_wake;
    long i_quietL = 0;   // kStops: ticks in which nothing moved
    Mode i_mode = Mode::kStands;
    bool i_runsB = false;   // wished for; a seek does not change it
    bool i_seekingB = false;
    bool i_soughtB = false;      // what comes before i_fromL is of another place
    std::uint64_t i_fromL = 0;   // kWaits: the first new frame of the output
    double i_place300 = 0;       // where it is
    bool i_placeB = false;       // which is known
    double i_tempo = 1, i_nextTempo = 1;
    std::uint64_t i_tempoFromL = 0;   // i_nextTempo holds from this frame on
};

/** Microseconds of a CD sector at `tempo`, truncated. */
[[nodiscard]] long SectorMicroseconds(double tempo);
