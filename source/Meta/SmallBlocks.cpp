#include "Meta/SmallBlocks.h"

#include <sys/mman.h>

#include <array>
#include <cstdint>
#include <mutex>
#include <new>
#include <utility>

namespace {

constexpr std::size_t kBlock_Step = 8, kBlock_Most = 256, kBlock_Sizes = kBlock_Most / kBlock_Step;
constexpr std::size_t kSpan_Bytes = 64U << 10;   // what one size takes of a chunk at a time
constexpr std::size_t kChunk_Bytes = 2U << 20;   // a huge page
constexpr std::size_t kMap_Bytes = 64U << 20;    // address space, asked of the system at a time
// A sanitizer is to see each block.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kBlocks_Plain = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
constexpr bool kBlocks_Plain = true;
#else
constexpr bool kBlocks_Plain = false;
#endif
#else
constexpr bool kBlocks_Plain = false;
#endif

/** Where the spans come from. The first chunk has plain pages, so that a small library stays small. */
class Chunks {
public:
    std::byte* TakeSpan() {
        const std::lock_guard guard(i_lock);
        if (i_nextP == i_endP) Map();
        std::byte* const spanP = i_nextP;
        const auto at = static_cast<std::size_t>(i_endP - i_nextP);
        if (at % kChunk_Bytes == 0 && !std::exchange(i_firstB, false))
            (void)::madvise(spanP, kChunk_Bytes, MADV_HUGEPAGE);   // where it cannot be, pages stay plain
        i_nextP += kSpan_Bytes;
        return spanP;
    }

private:
    void Map() {
        void* const mapP = ::mmap(nullptr, kMap_Bytes + kChunk_Bytes, PROT_READ | PROT_WRITE,
                                  MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (mapP == MAP_FAILED) throw std::bad_alloc();
        const auto address = reinterpret_cast<std::uintptr_t>(mapP);
        i_nextP = static_cast<std::byte*>(mapP) + (kChunk_Bytes - address % kChunk_Bytes) % kChunk_Bytes;
        i_endP = i_nextP + kMap_Bytes;
    }

    std::mutex i_lock;
    std::byte *i_nextP = nullptr, *i_endP = nullptr;
    bool i_firstB = true;
};

/** The blocks of one size. */
class Shelf {
public:
    void* Take(std::size_t bytes, Chunks& chunks) {
        const std::lock_guard guard(i_lock);
        if (i_freeP != nullptr) return std::exchange(i_freeP, i_freeP->nextP);
        if (static_cast<std::size_t>(i_endP - i_nextP) < bytes) {
            i_nextP = chunks.TakeSpan();
            i_endP = i_nextP + kSpan_Bytes;
        }
        return std::exchange(i_nextP, i_nextP + bytes);
    }
    void Give(void* blockP) noexcept {
        const std::lock_guard guard(i_lock);
        i_freeP = new (blockP) Free{i_freeP};
    }

private:
    struct Free {
        Free* nextP;
    };
    std::mutex i_lock;
    Free* i_freeP = nullptr;
    std::byte *i_nextP = nullptr, *i_endP = nullptr;   // what of the span is untouched
};

struct Store {
    Chunks chunks;
    std::array<Shelf, kBlock_Sizes> shelves;
};
Store& TheStore() {
    static auto* const s_storeP = new Store;   // never destroyed: values in statics may outlive it
    return *s_storeP;
}

constexpr std::size_t ShelfOf(std::size_t bytes) noexcept { return (bytes + kBlock_Step - 1) / kBlock_Step - 1; }
constexpr bool IsSmall(std::size_t bytes) noexcept { return !kBlocks_Plain && bytes > 0 && bytes <= kBlock_Most; }

}   // namespace

void* SmallBlocks::Take(std::size_t bytes) {
    if (!IsSmall(bytes)) return ::operator new(bytes);
    const std::size_t shelf = ShelfOf(bytes);
    Store& store = TheStore();
    return store.shelves[shelf].Take((shelf + 1) * kBlock_Step, store.chunks);
}

void SmallBlocks::Give(void* blockP, std::size_t bytes) noexcept {
    if (blockP == nullptr) return;
    if (!IsSmall(bytes)) return ::operator delete(blockP);
    TheStore().shelves[ShelfOf(bytes)].Give(blockP);
}
