#pragma once
#include <array>
#include <optional>

#include "Graphics/CSubChannels.h"
#include "Graphics/CSubCodeSink.h"

/** Makes a file of packets from raw sub-code: corrects each packet, and blanks a load of colours that repeats the last
    of its half.
    Units    bytes in; whole packets of 24 bytes out.
    Threads  one at a time.
    Owner    of nothing: the sink outlives it.
    Errors   the sink's status; paramErr for a size that the mode does not take. */
class CAS_Adapt_SubChannels {
public:
    CAS_Adapt_SubChannels(CSubCodeSink& sink, SubChannelMode mode);

    /** Whole 4-byte units. Interleaved: exactly one sector; else a short last packet is filled up with zeros. */
    OSErr Write(std::span<const std::uint8_t> bytes);
    /** Interleaved: drives the packets that still stand in the queue out with two empty sectors. Once. */
    OSErr Close();

private:
    using Colors = std::array<std::uint8_t, 16>;

    OSErr WriteSector(std::span<const std::uint8_t> sector);
    OSErr WritePackets(std::span<SubCodePacket> packets);
    void Finish(SubCodePacket& packet);

    CSubCodeSink& i_sink;
    CSubChannels i_channels;
    std::optional<Colors> i_lastLow, i_lastHigh;   // the last load of each half that went out
    bool i_closedB = false;
};
