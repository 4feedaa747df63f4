#pragma once
#include <mutex>

#include "Platform/CAudioOutput.h"
#include "Platform/CWakeSignal.h"

/** An output without a device: CClock says how many frames it has taken. Base of the null and the file form.
    Threads  as CAudioOutput; the lock is held for a few additions only. */
class CAudioOutput_Paced : public CAudioOutput {
public:
    std::vector<std::string> DeviceNames() override { return {std::string(kAudioOutput_Default)}; }
    OSErr Open(std::string_view device, const AudioBlocks& blocks) override;
    void Close() override;
    OSErr Queue(std::span<const std::int16_t> stereo) override;
    [[nodiscard]] std::size_t Room() const override;
    void WaitForRoom(std::size_t frames, double seconds) override;
    void Rest(double seconds) override { i_wake.Wait(seconds); }
    void Wake() override { i_wake.Signal(); }
    [[nodiscard]] std::uint64_t FramesPlayed() const override;
    [[nodiscard]] std::uint64_t FramesLate() const override;

protected:
    /** `speed` times real time; 0: frames are taken the moment they are queued. */
    explicit CAudioOutput_Paced(double speed) : i_rateF(speed * kAudioOutput_Rate) {}
    /** What becomes of the frames; on the writer's thread, without the lock. A failure is Queue's answer. */
    virtual OSErr Deliver(std::span<const std::int16_t> /*stereo*/) { return noErr; }

private:
    /** The account of the frames at one moment. */
    struct Account {
        std::uint64_t queuedL = 0, playedL = 0, lateL = 0;
        double sinceT = 0;   // when playedL was exact
    };
    void CatchUp() const;   // under the lock
    [[nodiscard]] std::size_t RoomNow() const;

    const double i_rateF;   // frames a second
    CWakeSignal i_wake;
    mutable std::mutex i_lock;
    mutable Account i_account;   // guarded by i_lock, as is the rest
    std::size_t i_roomL = 0;     // of all blocks; 0 while closed
};
