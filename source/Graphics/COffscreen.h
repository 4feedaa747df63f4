#pragma once
#include <memory>

#include "Graphics/CPixels.h"

/** A pixel buffer that owns its memory, all zero at first. */
class COffscreen final : public CPixels {
public:
    /** Null when the bounds are empty, the depth is none of 4, 8, 32, 128, or the memory is not there; logged. */
    [[nodiscard]] static std::unique_ptr<COffscreen> Create(const Rect& bounds, short depthS,
                                                            const CPixels* colorsOfP = nullptr);

private:
    COffscreen() = default;
    std::unique_ptr<std::byte[]> i_memory;
};
