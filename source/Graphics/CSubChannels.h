#pragma once
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "Graphics/CDGConstants.h"
#include "Platform/OSErr.h"

/** What lies in the queue of sub-code bytes. */
enum class SubChannelMode : short {
    kRaw = 0,           // the writing side: packets leave as they are
    kPlain = 1,         // packets in their order; corrected
    kInterleaved = 2,   // as a disc carries them; put in order, then corrected
};

/** What the corrector found in a packet; both may be true. */
struct PacketCorrection {
    bool correctedB = false;   // symbols were wrong and are right now; mere masking does not count
    bool droppedB = false;     // no graphics packet: zeroed
};

/** The error correction of sub-code packets and the interleave of the disc, over a queue of bytes.
    Units    packets of 24 bytes, sectors of 96 bytes; only the low six bits of a byte carry anything.
    Threads  one at a time; the static calls any.
    Errors   a packet beyond repair stands as it is. Pop and Encode answer paramErr when the queue has another length
             than they ask for, which is a fault of the caller. */
class CSubChannels {
public:
    /** Empties the queue; kRaw then fills it with two sectors of zeros, the delay of an encoder. */
    void SetMode(SubChannelMode mode);
    [[nodiscard]] SubChannelMode Mode() const noexcept { return i_mode; }

    void PushSector(std::span<const std::uint8_t, kSubCodeBytesPerSector> sector);
    [[nodiscard]] std::size_t QueuePackets() const noexcept { return QueueBytes() / kSubCodePacket_Bytes; }
    /** Takes a packet off the front by the rule of the mode; two sectors must stand in the queue. */
    OSErr Pop(SubCodePacket& packet);
    /** Mode kRaw: masks the packet, gives it both parities and spreads it over the queue; then Pop is due. */
    OSErr Encode(const SubCodePacket& packet);

    /** Corrects in place: masks and repairs what carries parity, zeroes the parity, and the whole packet if it is no
        graphics packet. A clean packet costs a few table look-ups. */
    static PacketCorrection Correct(SubCodePacket& packet) noexcept;
    static void Correct(std::span<SubCodePacket> packets) noexcept;
    /** Masks the packet and writes both parities. */
    static void WriteParity(SubCodePacket& packet) noexcept;

private:
    [[nodiscard]] std::size_t QueueBytes() const noexcept { return i_queue.size() - i_frontL; }
    void TakeFront();

    SubChannelMode i_mode = SubChannelMode::kPlain;
    std::vector<std::uint8_t> i_queue;
    std::size_t i_frontL = 0;   // bytes at the start of i_queue that were taken already
};
