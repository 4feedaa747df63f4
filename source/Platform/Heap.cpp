#include "Platform/Heap.h"

#include <malloc.h>

void ShareHeaps() {
    constexpr int kHeaps = 2;
    ::mallopt(M_ARENA_MAX, kHeaps);
}
