#include "Audio/AllocationCounter.h"

#include <cstdlib>
#include <new>

namespace {
thread_local std::size_t s_countL = 0;

void* Try(std::size_t sizeL) noexcept {
    ++s_countL;
    return std::malloc(sizeL == 0 ? 1 : sizeL);
}
void* Take(std::size_t sizeL) {
    if (void* const memoryP = Try(sizeL); memoryP != nullptr) return memoryP;
    throw std::bad_alloc();
}
}   // namespace

// All forms but the aligned ones: a sanitizer has its own of those that are left out, and they would not fit together.
void* operator new(std::size_t sizeL) { return Take(sizeL); }
void operator delete(void* memoryP) noexcept { std::free(memoryP); }
void operator delete(void* memoryP, std::size_t) noexcept { std::free(memoryP); }
void* operator new[](std::size_t sizeL) { return Take(sizeL); }
void operator delete[](void* memoryP) noexcept { std::free(memoryP); }
void operator delete[](void* memoryP, std::size_t) noexcept { std::free(memoryP); }

void* operator new(std::size_t sizeL, const std::nothrow_t&) noexcept { return Try(sizeL); }
void* operator new[](std::size_t sizeL, const std::nothrow_t&) noexcept { return Try(sizeL); }
void operator delete(void* memoryP, const std::nothrow_t&) noexcept { std::free(memoryP); }
void operator delete[](void* memoryP, const std::nothrow_t&) noexcept { std::free(memoryP); }

AllocationCounter::AllocationCounter() : i_beforeL(s_countL) {}
std::size_t AllocationCounter::Count() const { return s_countL - i_beforeL; }
