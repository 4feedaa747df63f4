#pragma once
#include <cstddef>

/** What hand-made vector code of foreign libraries (swscale, libavcodec, Cairo, Qt) may touch beyond the pixels that it
    was told of: it works in whole vectors, and how wide they are depends on the processor. Memory of ours that such a
    library gets has this room; memory that a library takes itself (frames, packets, samples) has it already.
    Units  bytes. */
inline constexpr std::size_t kForeign_Align = 64;     // where a buffer begins, and what a row of pixels is padded to
inline constexpr std::size_t kForeign_Padding = 64;   // behind the last byte

[[nodiscard]] constexpr std::size_t ForeignRow(std::size_t bytes) noexcept {
    return (bytes + kForeign_Align - 1) / kForeign_Align * kForeign_Align;
}
