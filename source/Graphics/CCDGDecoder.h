#pragma once
#include <cstdint>
#include <span>

#include "Graphics/CDGPlane.h"
#include "Graphics/CPixels.h"

/** Red, green and blue of twelve bits; each nibble widens: 0xA becomes 0xAAAA. */
[[nodiscard]] RGBColor ReadCDGColor(std::uint8_t b0, std::uint8_t b1) noexcept;

/** A 300 x 216 plane of 0xAARRGGBB pixels in someone's buffer. */
struct CDGTrueColor {
    std::uint32_t* baseP = nullptr;
    std::size_t rowPixels = 0;   // 300 or more

    [[nodiscard]] std::uint32_t* Row(std::size_t y) const noexcept { return baseP + y * rowPixels; }
};

/** The commands of CD+G against a plane of indices, and that plane's way into true colour.
    Units    pixels; colour indices 0 to 15.
    Threads  one at a time: the main thread.
    Owner    CGraphics; the planes stay the caller's and outlive it.
    Errors   none: what is unknown or lies outside is ignored.
    Source   Red Book (IEC 60908), sub-code channels R to W. */
class CCDGDecoder {
public:
    CCDGDecoder(CDGPlane index, CDGPlane scratch, std::uint16_t channelMask) noexcept;

    /** Black, no offsets, border index 0, the whole plane dirty. */
    void Reset() noexcept;
    /** Runs corrected packets in their order. A plane that a later packet of the same span fills whole is not drawn
        before; the state afterwards is that of one packet at a time, but for a wholly dirty plane. */
    void Execute(std::span<const SubCodePacket> packets) noexcept;
    /** Brings the true-colour picture up to date: the border, and the visible part of what is dirty, taken through the
        offsets. Answers the part of the visible area that was to be copied, empty when none of the dirty part shows;
        then the dirty part stays. `skipCopyB` leaves that part uncopied. */
    Rect Update(const CDGTrueColor& picture, bool skipCopyB) noexcept;

    /** Called by the one who showed the update. */
    void ClearDirty() noexcept { i_dirty = {}; }
    void MarkDirty(const Rect& area) noexcept { i_dirty = Union(i_dirty, area); }
    [[nodiscard]] const Rect& Dirty() const noexcept { return i_dirty; }
    [[nodiscard]] const CPixels::ColorTable& Colors() const noexcept { return i_colors; }
    [[nodiscard]] std::uint8_t Border() const noexcept { return i_border; }
    void SetChannelMask(std::uint16_t mask) noexcept { i_channelMask = mask; }
    /** Counts the changes of the colour table, for copies of it elsewhere. */
    [[nodiscard]] unsigned ColorsSeed() const noexcept { return i_colorsSeed; }

private:
    void ExecuteOne(const SubCodePacket& packet) noexcept;
    void SkipTo(std::span<const SubCodePacket> before) noexcept;
    void MemoryPreset(const SubCodePacket& packet) noexcept;
    void BorderPreset(const SubCodePacket& packet) noexcept;
    void Tile(const SubCodePacket& packet, bool xorB) noexcept;
    void Scroll(const SubCodePacket& packet, bool wrapB) noexcept;
    void Load(const SubCodePacket& packet, std::size_t first) noexcept;
    void PaintBorder(const CDGTrueColor& picture) const noexcept;

    CDGPlane i_index, i_scratch;
    CPixels::ColorTable i_colors{};
    unsigned i_colorsSeed = 0;
    std::uint16_t i_channelMask;
    std::uint8_t i_border = 0;
    int i_horizontal = 0, i_vertical = 0;   // 0 to 7, 0 to 15
    Rect i_dirty;
    bool i_borderStaleB = true;   // the border's colour is not the one in the true-colour picture
};
