#include "Audio/CAS_Null.h"

namespace {
SpoolTraits NullTraits(std::size_t unitBytes) {
    SpoolTraits traits;
    traits.name = "Null";
    traits.unitBytes = unitBytes;
    traits.ownPositionB = true;
    return traits;
}
}   // namespace

CAS_Null::CAS_Null(std::size_t unitBytes) : CSpooler(NullTraits(unitBytes)) {}

OSErr CAS_Null::Write_i(std::span<const std::byte>) { return noErr; }

OSErr CAS_Null::Seek_i(std::uint64_t) { return noErr; }
