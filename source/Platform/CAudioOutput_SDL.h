#pragma once
#include <atomic>

#include "Platform/CAudioOutput.h"
#include "Platform/CWakeSignal.h"

/** A device of the machine, through SDL's audio part. SDL calls back on a thread of its own, which takes frames from a
    ring without a lock. News of devices come by a watch on SDL's events, on whatever thread SDL raises them; nobody has
    to pump them.
    Threads  as CAudioOutput. Opening, closing and listing take a lock of the whole process, held over SDL's calls;
    Queue, Room, the counts and the callback never take it. */
class CAudioOutput_SDL final : public CAudioOutput {
public:
    CAudioOutput_SDL() = default;
    ~CAudioOutput_SDL() override;

    std::vector<std::string> DeviceNames() override;
    OSErr Open(std::string_view device, const AudioBlocks& blocks) override;
    OSErr OpenAny(std::string_view device, const AudioBlocks& blocks, std::string& got) override;
    void Close() override;
    OSErr Queue(std::span<const std::int16_t> stereo) override;
    [[nodiscard]] std::size_t Room() const override;
    void WaitForRoom(std::size_t frames, double seconds) override;
    void Rest(double seconds) override;
    void Wake() override { i_wake.Signal(); }
    [[nodiscard]] std::uint64_t FramesPlayed() const override { return i_playedL.load(std::memory_order_acquire); }
    [[nodiscard]] std::uint64_t FramesLate() const override { return i_lateL.load(std::memory_order_relaxed); }
    [[nodiscard]] bool IsLost() const override { return i_lostB.load(std::memory_order_acquire); }
    OSErr Recover(std::string& device) override;
    [[nodiscard]] bool NewDevice() override { return i_newDeviceB.exchange(false, std::memory_order_acq_rel); }
    void LookAgain() override;

private:
    struct Calls;   // what SDL calls back
    OSErr Prepare(std::string_view device, const AudioBlocks& blocks);
    bool BeginSubsystem();
    OSErr OpenDevice(const std::string& device, std::uint32_t& id);
    /** The first of the devices of `names` that opens takes over. */
    bool StartAnyOf(const std::vector<std::string>& names, std::string& got);
    void Start(std::uint32_t id);
    /** The sound that plays gives way without a click. */
    void FadeOut();
    /** The queued frames begin in the middle of a wave. */
    void FadeQueuedIn();
    void Stop();
    void CloseDevice();

    std::string i_device;   // as it was asked for
    std::size_t i_blockFramesL = 0;
    std::vector<std::int16_t> i_ring;             // fixed while a device is open
    std::size_t i_roomL = 0;                      // frames of the ring
    std::uint32_t i_deviceID = 0;                 // SDL's number, 0 for none; the writer's
    std::atomic<std::uint32_t> i_watchedID{0};    // the same, for the watch
    bool i_openB = false, i_subsystemB = false;   // the second is not there where SDL finds no sound system at all
    double i_paceF = 0;    // parts of a frame that are due while there is no device; the writer's
    double i_pacedT = 0;   // by CClock::SteadyT, up to when; 0 with a device
    CWakeSignal i_wake;
    std::atomic<bool> i_lostB{false}, i_newDeviceB{false};
    enum class Leaving : int { kNo, kAsked, kDone };
    std::atomic<Leaving> i_leaving{Leaving::kNo};          // kAsked by the writer, the rest by the callback
    alignas(64) std::atomic<std::uint64_t> i_queuedL{0};   // frames since Open; only Queue adds
    alignas(64) std::atomic<std::uint64_t> i_playedL{0};   // only the callback adds, or the writer without a device
    std::atomic<std::uint64_t> i_lateL{0};
};
