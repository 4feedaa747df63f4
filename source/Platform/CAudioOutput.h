#pragma once
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/OSErr.h"

/** The form of all sound that goes out: 16-bit samples, left then right, in the machine's byte order. */
inline constexpr std::uint32_t kAudioOutput_Rate = 44100;
inline constexpr std::size_t kAudioOutput_Channels = 2;
/** The name of the device that the system chooses. */
inline constexpr std::string_view kAudioOutput_Default = "System Default";

/** How much an output holds: the writer stays so far ahead of the ear. */
struct AudioBlocks {
    std::size_t framesL = 2048;   // of one block
    std::size_t countL = 5;
};

/** Where the sound leaves the program. Frames are queued ahead, the device takes them at its own pace; what it lacks is
    silence, and counted.
    Units    frames of two samples.
    Threads  Open, Close, Recover and Queue by one writer at a time; the rest from any thread while it is open.
    Owner    whoever made it. An output can be opened again after Close; it counts from 0 then.
    Errors   fnfErr: no device of that name; ioErr: it could not be opened, or has been lost. */
class CAudioOutput {
public:
    CAudioOutput() = default;
    virtual ~CAudioOutput() = default;
    CAudioOutput(const CAudioOutput&) = delete;
    CAudioOutput& operator=(const CAudioOutput&) = delete;

    /** The devices by name, the system's choice first. May take a while: not for the writer. */
    [[nodiscard]] virtual std::vector<std::string> DeviceNames() = 0;

    /** Starts the device; room for `blocks` is made here, and nowhere else. */
    virtual OSErr Open(std::string_view device, const AudioBlocks& blocks) = 0;
    /** The same without a failure for want of the device: the system's choice in its place, else none. Without any, the
        output is lost from the start. `got` is set to the name of what was opened, empty for none. */
    virtual OSErr OpenAny(std::string_view device, const AudioBlocks& blocks, std::string& got) {
        got = device;
        return Open(device, blocks);
    }
    /** The sound that plays fades out over the next 10 ms; frames behind that are dropped. */
    virtual void Close() = 0;

    /** Copies the frames, all of them. paramErr when there is no room or the last frame is half; nothing is taken then.
        Allocates nothing. */
    virtual OSErr Queue(std::span<const std::int16_t> stereo) = 0;
    /** Frames that Queue takes now. */
    [[nodiscard]] virtual std::size_t Room() const = 0;
    /** Sleeps until there is room for `frames`, Wake is called, or the time is over. */
    virtual void WaitForRoom(std::size_t frames, double seconds) = 0;
    /** The same for a writer that has nothing to give now, however much room there is. */
    virtual void Rest(double seconds) = 0;
    /** Ends the wait or rest under way, or the next one. */
    virtual void Wake() = 0;

    /** Queued frames that the device has taken; exact. Frames of silence that it took for want of others do not count. */
    [[nodiscard]] virtual std::uint64_t FramesPlayed() const = 0;
    /** Frames of silence that the device took because nothing was queued. */
    [[nodiscard]] virtual std::uint64_t FramesLate() const = 0;

    /** The device has gone. Frames are still taken at its pace, and heard by nobody, so that the show goes on. */
    [[nodiscard]] virtual bool IsLost() const { return false; }
    /** Opens the device of Open or OpenAny; after a loss the system's choice, too. Frames that are queued stay, and
        sound that plays goes on when there is nothing better. `device` is set to the name. ioErr: no such device is
        there. Takes a while. */
    virtual OSErr Recover(std::string& /*device*/) { return ioErr; }
    /** True once after a device came to the machine, or LookAgain. */
    [[nodiscard]] virtual bool NewDevice() { return false; }
    /** As if a device had come. Any thread, while it is open. */
    virtual void LookAgain() {}
};

/** An output and the name to open it with. */
struct AudioOutputChoice {
    std::unique_ptr<CAudioOutput> outputP;
    std::string device;
};
/** The output that `text` asks for: "dummy" is a clock without sound, "disk:PATH" a file at the same pace, all else the
    name of a device; empty is the system's choice. */
[[nodiscard]] AudioOutputChoice MakeAudioOutput(std::string_view text);
