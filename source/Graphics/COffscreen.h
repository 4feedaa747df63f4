#pragma once
#include <cstddef>
#include <memory>

#include "Graphics/CPixels.h"

/** Pixels with memory of their own, all zero at first, with the room that foreign libraries ask for: the scaler and
    Cairo draw into them, and Qt shows them without a copy. A row's padding holds anything.
    Threads  as CPixels.
    Owner    its creator.
    Errors   memFullErr and a log line when the memory is not there or the size is past kMaxPixels. */
class COffscreen final : public CPixels {
public:
    /** 64 megapixels: far above any screen, and small enough that a broken file cannot eat the machine. */
    static constexpr std::size_t kMaxPixels = std::size_t{64} << 20;

    COffscreen() = default;
    /** Makes the memory anew; the old content is gone. `colorsP` gives the colour table of depth 4, null for black.
        On failure the buffer is as it was. */
    OSErr Create(const Rect& bounds, short depth, const CPixels* colorsP = nullptr);
    /** The same on the heap; null and `err` on failure. */
    [[nodiscard]] static std::unique_ptr<COffscreen> Make(const Rect& bounds, short depth, OSErr& err);

private:
    struct Free_ {
        void operator()(std::uint8_t* bytesP) const noexcept;
    };
    std::unique_ptr<std::uint8_t, Free_> i_memory;
};
