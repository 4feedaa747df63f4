#pragma once
#include <cstddef>
#include <cstdint>
#include <span>

#include "Platform/OSErr.h"

/** What a read delivered: some units and a status, both at once at the end of a stream. */
struct SubCodeRead {
    std::size_t unitsL = 0;
    OSErr err = noErr;
};

/** A song's sub-code, read from its start on.
    Units    4 bytes; position p is p / 6 packets.
    Threads  the main thread.
    Errors   eofErr once fewer units came than were asked for. */
class CSubCodeStream {
public:
    virtual ~CSubCodeStream() = default;
    /** Fills the front of `bytes` with whole units; what is short of a unit at the end is not touched. */
    virtual SubCodeRead Read(std::span<std::uint8_t> bytes) = 0;
    [[nodiscard]] virtual std::size_t Position() const = 0;   // units
    virtual OSErr Rewind() = 0;
};
