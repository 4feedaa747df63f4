#pragma once
#include <cstddef>

/** Memory for the values of a library: a million songs hold some seven million small blocks that live as long as it does.
    They lie side by side without a head, those of one size together, in chunks that the system may back by huge pages:
    the first touch of a page is what a load spends most on. A block that is given back goes to the next one of its size,
    never to the system.
    Units    bytes. Larger blocks are the heap's.
    Threads  any; a lock for a few additions.
    Errors   std::bad_alloc. */
namespace SmallBlocks {
[[nodiscard]] void* Take(std::size_t bytes);
/** `bytes` as it was taken. */
void Give(void* blockP, std::size_t bytes) noexcept;
}   // namespace SmallBlocks
