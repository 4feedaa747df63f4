#include "Audio/AllocationCounter.h"

#include <cstdlib>
#include <new>

namespace {
thread_local std::size_t s_countL = 0;

void* Take(std::size_t sizeL) {
    ++s_countL;
    if (void* const memoryP = std::malloc(sizeL == 0 ? 1 : sizeL); memoryP != nullptr) return memoryP;
    throw std::bad_alloc();
}
}   // namespace

// The library's other forms (arrays, no-throw) end in these; the aligned ones are not counted.
void* operator new(std::size_t sizeL) { return Take(sizeL); }
void operator delete(void* memoryP) noexcept { std::free(memoryP); }
void operator delete(void* memoryP, std::size_t) noexcept { std::free(memoryP); }
void* operator new[](std::size_t sizeL) { return Take(sizeL); }
void operator delete[](void* memoryP) noexcept { std::free(memoryP); }
void operator delete[](void* memoryP, std::size_t) noexcept { std::free(memoryP); }

AllocationCounter::AllocationCounter() : i_beforeL(s_countL) {}
std::size_t AllocationCounter::Count() const { return s_countL - i_beforeL; }
