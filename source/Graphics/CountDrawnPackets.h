#pragma once
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>

/** The packets of a whole CD+G stream up to the last one that changes what the room sees; 0 when none does. What lies
    behind it is padding: the graphics are over.
    Units    packets; `bytes` as they lie in the file, an incomplete last packet counts.
    Threads  any.
    Errors   none; once `cancelled` says so the answer is that of no use. */
[[nodiscard]] std::size_t CountDrawnPackets(std::span<const std::uint8_t> bytes, std::uint16_t channelMask,
                                            const std::function<bool()>& cancelled);
