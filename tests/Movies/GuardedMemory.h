#pragma once

/** While it lives, each block that the calling thread takes by aligned `new` (the pixels of a COffscreen) ends at a
    page that may not be touched: one byte behind it ends the program, whoever touches it. */
class GuardedMemory {
public:
    GuardedMemory();
    ~GuardedMemory();
    GuardedMemory(const GuardedMemory&) = delete;
    GuardedMemory& operator=(const GuardedMemory&) = delete;
};
