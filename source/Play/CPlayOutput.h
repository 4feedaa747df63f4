#pragma once
#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Audio/CAudioPlayer.h"
#include "Core/Ref.h"
#include "Platform/CAudioOutput_Null.h"

/** The device that plays, which one song has at a time: the next one is made ready meanwhile, and waits here for the
    one before to let go. Another device is the next song's. Threads  Take and Release on workers; the rest any. Owner
   Ref: the control, and each song that plays. */
class CPlayOutput final : public RefCounted {
public:
    /** Waits until the output is free. False, and it was not taken, once `givenUpB` is set; Nudge tells of that. */
    [[nodiscard]] bool Take(const std::atomic<bool>& givenUpB);
    void Release();
    /** Somebody gave up. */
    void Nudge();
    /** This one from the next Take on; before the first. */
    void Replace(AudioOutputChoice choice);

    /** For who has taken it. */
    [[nodiscard]] CAudioOutput& Output() noexcept { return *i_now.outputP; }
    [[nodiscard]] const std::string& Device() const noexcept { return i_now.device; }
    /** A clock without sound, in its place. */
    [[nodiscard]] CAudioOutput& Silence() noexcept { return i_silence; }
    [[nodiscard]] AudioLevel& Level() noexcept { return i_level; }

private:
    AudioOutputChoice i_now;   // of who has taken it
    CAudioOutput_Null i_silence;
    AudioLevel i_level;
    std::mutex i_lock;   // guards the rest
    std::condition_variable i_changed;
    AudioOutputChoice i_next;   // empty: as now
    bool i_takenB = false;
};
