#include "Movies/GuardedMemory.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <map>
#include <mutex>
#include <new>

namespace {

struct Mapping {
    void* startP = nullptr;
    std::size_t sizeL = 0;
};
thread_local int s_guardsL = 0;
std::mutex s_lock;
std::map<void*, Mapping> s_guarded;   // by what was given out

std::size_t Up(std::size_t sizeL, std::size_t stepL) { return (sizeL + stepL - 1) / stepL * stepL; }

void* TakeGuarded(std::size_t sizeL, std::size_t alignL) {
    const auto pageL = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    const std::size_t roomL = Up(sizeL, pageL);
    const Mapping made{::mmap(nullptr, roomL + pageL, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0),
                       roomL + pageL};
    if (made.startP == MAP_FAILED) return nullptr;
    auto* const startP = static_cast<std::uint8_t*>(made.startP);
    if (::mprotect(startP + roomL, pageL, PROT_NONE) != 0) std::abort();
    void* const givenP = startP + roomL - Up(sizeL, alignL);
    const std::lock_guard guard(s_lock);
    s_guarded[givenP] = made;
    return givenP;
}

void* Take(std::size_t sizeL, std::align_val_t align) noexcept {
    const auto alignL = static_cast<std::size_t>(align);
    return s_guardsL > 0 ? TakeGuarded(sizeL, alignL) : std::aligned_alloc(alignL, Up(sizeL, alignL));
}

void Free(void* memoryP) noexcept {
    const std::lock_guard guard(s_lock);
    const auto it = s_guarded.find(memoryP);
    if (it == s_guarded.end()) return std::free(memoryP);
    ::munmap(it->second.startP, it->second.sizeL);
    s_guarded.erase(it);
}

}   // namespace

// The aligned forms alone: what the tests guard asks for them, and the others are the sanitizers'.
void* operator new(std::size_t sizeL, std::align_val_t align, const std::nothrow_t&) noexcept {
    return Take(sizeL, align);
}
void* operator new(std::size_t sizeL, std::align_val_t align) {
    if (void* const memoryP = Take(sizeL, align); memoryP != nullptr) return memoryP;
    throw std::bad_alloc();
}
void operator delete(void* memoryP, std::align_val_t) noexcept { Free(memoryP); }
void operator delete(void* memoryP, std::size_t, std::align_val_t) noexcept { Free(memoryP); }
void operator delete(void* memoryP, std::align_val_t, const std::nothrow_t&) noexcept { Free(memoryP); }

GuardedMemory::GuardedMemory() { ++s_guardsL; }
GuardedMemory::~GuardedMemory() { --s_guardsL; }
