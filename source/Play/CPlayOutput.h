#pragma once
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Audio/CAudioPlayer.h"
#include "Core/Ref.h"
#include "Platform/CAudioOutput_Null.h"

/** The device that plays, which one song has at a time: the next one is made ready meanwhile, and waits here for the
   one before to let go. Threads  Take and Release on workers; the rest any. Owner    Ref: the control, and each song
   that plays. */
class CPlayOutput final : public RefCounted {
public:
    explicit CPlayOutput(AudioOutputChoice choice)
        : i_outputP(std::move(choice.outputP)), i_device(std::move(choice.device)) {}

    /** Waits until the output is free. False, and it was not taken, once `givenUpB` is set; Nudge tells of that. */
    [[nodiscard]] bool Take(const std::atomic<bool>& givenUpB) {
        std::unique_lock guard(i_lock);
        i_changed.wait(guard, [&] { return !i_takenB || givenUpB.load(); });
        if (givenUpB.load()) return false;
        i_takenB = true;
        return true;
    }
    void Release() {
        const std::scoped_lock guard(i_lock);
        i_takenB = false;
        i_changed.notify_all();
    }
    /** Somebody gave up. */
    void Nudge() {
        const std::scoped_lock guard(i_lock);
        i_changed.notify_all();
    }
    /** May take a while. */
    [[nodiscard]] std::vector<std::string> DeviceNames() { return i_outputP->DeviceNames(); }
    /** For who has taken it. */
    [[nodiscard]] CAudioOutput& Output() noexcept { return *i_outputP; }
    /** A clock without sound, in its place. */
    [[nodiscard]] CAudioOutput& Silence() noexcept { return i_silence; }
    [[nodiscard]] const std::string& Device() const noexcept { return i_device; }
    [[nodiscard]] AudioLevel& Level() noexcept { return i_level; }

private:
    const std::unique_ptr<CAudioOutput> i_outputP;
    CAudioOutput_Null i_silence;
    const std::string i_device;
    AudioLevel i_level;
    std::mutex i_lock;   // guards i_takenB
    std::condition_variable i_changed;
    bool i_takenB = false;
};
