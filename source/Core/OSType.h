#pragma once
#include <cstdint>

/** A 32-bit code that spells four characters, the first in the highest byte. */
using OSType = std::uint32_t;

/** The code of a literal: FourCC("soID"). A literal of another length does not compile. */
[[nodiscard]] consteval OSType FourCC(const char (&textZ)[5]) {
    OSType code = 0;
    for (int n = 0; n < 4; ++n) code = code << 8 | static_cast<unsigned char>(textZ[n]);
    return code;
}
