#pragma once
#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Audio/CAudioPlayer.h"
#include "Audio/CDeviceNews.h"
#include "Core/Ref.h"

/** The device that plays, which one song has at a time: the next one is made ready meanwhile, and waits here for the
    one before to let go. Another device is the next song's.
    Threads  Take and Release on workers; the rest any.
    Owner    Ref: the control, and each song that plays. */
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
    [[nodiscard]] AudioLevel& Level() noexcept { return i_level; }
    /** Of the devices that play, over all songs. */
    [[nodiscard]] CDeviceNews& News() noexcept { return i_news; }
    /** The song that plays looks for its device again, and the operator hears of it. */
    void LookAgain();

private:
    AudioOutputChoice i_now;   // of who has taken it
    AudioLevel i_level;
    CDeviceNews i_news;
    std::mutex i_lock;   // guards the rest
    std::condition_variable i_changed;
    AudioOutputChoice i_next;   // empty: as now
    bool i_takenB = false;
};
