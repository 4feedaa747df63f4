#include "Graphics/CountDrawnPackets.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

#include "Graphics/CCDGDecoder.h"
#include "Graphics/CSubChannels.h"

namespace {

constexpr std::size_t kPart_Packets = 2048;   // stay in the cache
constexpr std::size_t kFirstLook_Packets = 300, kLook_Growth = 10;

/** A decoder over planes of its own, fed from a stream. */
class Replay {
public:
    Replay(std::span<const std::uint8_t> bytes, std::uint16_t channelMask)
        : i_bytes(bytes),
          i_index(kRow_Bytes * kCDGPlane_Height),
          i_scratch(i_index.size()),
          i_next(kCDGPlane_Width * kCDGPlane_Height),
          i_shown(i_next.size()),
          i_decoder({i_index.data(), kRow_Bytes}, {i_scratch.data(), kRow_Bytes}, channelMask) {}

    /** Runs the packets up to `end` without a look at them. */
    void RunTo(std::size_t end, const std::function<bool()>& cancelled) {
        while (i_at < end && !cancelled()) i_decoder.Execute(Next(end));
        i_decoder.MarkDirty(kCDGPlane_Area);
        i_decoder.Update(Picture(), false);
        i_decoder.ClearDirty();
        i_shown = i_next;
    }
    /** The same, one by one: the packets up to the last that changes the picture, 0 when none of these does. */
    std::size_t LastChange(std::size_t end, const std::function<bool()>& cancelled) {
        std::size_t last = 0;
        while (i_at < end && !cancelled()) {
            const std::size_t first = i_at;
            const std::span<const SubCodePacket> packets = Next(end);
            for (std::size_t n = 0; n < packets.size(); ++n)
                if (Changes(packets.subspan(n, 1))) last = first + n + 1;
        }
        return last;
    }

private:
    static constexpr std::size_t kRow_Bytes = kCDGPlane_Width / 2;

    [[nodiscard]] CDGTrueColor Picture() { return {i_next.data(), kCDGPlane_Width}; }

    std::span<const SubCodePacket> Next(std::size_t end) {
        const std::size_t countL = std::min(end - i_at, i_packets.size());
        const std::span<const std::uint8_t> from = i_bytes.subspan(i_at * kSubCodePacket_Bytes);
        i_packets.fill({});
        std::memcpy(i_packets.data(), from.data(), std::min(from.size(), countL * kSubCodePacket_Bytes));
        i_at += countL;
        const std::span<SubCodePacket> packets = std::span(i_packets).first(countL);
        CSubChannels::Correct(packets);
        return packets;
    }

    bool Changes(std::span<const SubCodePacket> packet) {
        i_decoder.Execute(packet);
        if (i_decoder.Dirty().Empty()) return false;
        const Rect part = i_decoder.Update(Picture(), false);
        i_decoder.ClearDirty();
        bool changedB = i_next.front() != i_shown.front();   // the border, of one colour
        i_shown.front() = i_next.front();
        for (int y = part.top; y < part.bottom; ++y) {
            const std::size_t at = static_cast<std::size_t>(y) * kCDGPlane_Width + static_cast<std::size_t>(part.left);
            const std::size_t bytesL = static_cast<std::size_t>(part.right - part.left) * sizeof(std::uint32_t);
            if (std::memcmp(&i_next[at], &i_shown[at], bytesL) == 0) continue;
            std::memcpy(&i_shown[at], &i_next[at], bytesL);
            changedB = true;
        }
        return changedB;
    }

    const std::span<const std::uint8_t> i_bytes;
    std::vector<std::uint8_t> i_index, i_scratch;
    std::vector<std::uint32_t> i_next, i_shown;
    CCDGDecoder i_decoder;
    std::array<SubCodePacket, kPart_Packets> i_packets{};
    std::size_t i_at = 0;   // packets that were run
};

}   // namespace

std::size_t CountDrawnPackets(std::span<const std::uint8_t> bytes, std::uint16_t channelMask,
                              const std::function<bool()>& cancelled) {
    const std::size_t endL = (bytes.size() + kSubCodePacket_Bytes - 1) / kSubCodePacket_Bytes;
    // From the end: to look at each packet costs more than to run the whole song a few times.
    for (std::size_t lookL = kFirstLook_Packets; endL > 0 && !cancelled(); lookL *= kLook_Growth) {
        const std::size_t from = endL - std::min(endL, lookL);
        Replay replay(bytes, channelMask);
        replay.RunTo(from, cancelled);
        const std::size_t last = replay.LastChange(endL, cancelled);
        if (last > 0 || from == 0) return last;
    }
    return 0;
}
