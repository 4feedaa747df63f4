#pragma once
#include <cstddef>

/** Counts what the calling thread takes from the heap by `new`, in the program and in its libraries, while it lives. */
class AllocationCounter {
public:
    AllocationCounter();
    [[nodiscard]] std::size_t Count() const;

private:
    std::size_t i_beforeL;
};
