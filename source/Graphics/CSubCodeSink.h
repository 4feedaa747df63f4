#pragma once
#include <cstdint>
#include <span>

#include "Platform/OSErr.h"

/** Where finished sub-code goes: a file, a buffer, a burner.
    Threads  the writer's.
    Errors   the status of the write; what was given is then lost to the sink. */
class CSubCodeSink {
public:
    virtual ~CSubCodeSink() = default;
    /** Copies the bytes before it returns. */
    virtual OSErr Write(std::span<const std::uint8_t> bytes) = 0;
};
