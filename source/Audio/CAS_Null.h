#pragma once
#include "Audio/CSpooler.h"

/** A sink that counts and forgets, a source of nothing. */
class CAS_Null : public CSpooler {
public:
    explicit CAS_Null(std::size_t unitBytes = kSpool_AudioUnitBytes);

protected:
    OSErr Write_i(std::span<const std::byte> bytes) override;
    OSErr Seek_i(std::uint64_t positionL) override;
};
