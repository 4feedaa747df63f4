#include "Audio/CAS_Memory.h"

#include <algorithm>

#include "Core/Assertions.h"

namespace {
SpoolTraits InMemory(SpoolTraits traits) {
    traits.lock = SpoolLock::kBoth;   // writing moves the bytes that are read
    traits.ownPositionB = true;
    return traits;
}

SpoolTraits MemoryTraits(std::size_t unitBytes) {
    SpoolTraits traits;
    traits.name = "Memory";
    traits.unitBytes = unitBytes;
    return traits;
}
}   // namespace

CAS_Memory::CAS_Memory(std::vector<std::byte> bytes, std::size_t unitBytes)
    : CAS_Memory(MemoryTraits(unitBytes), std::move(bytes)) {}

CAS_Memory::CAS_Memory(SpoolTraits traits, std::vector<std::byte> bytes)
    : CSpooler(InMemory(std::move(traits))), i_bytes(std::move(bytes)) {}

std::vector<std::byte> CAS_Memory::Bytes() const {
    const CMutex::Scope guard(*ReadLock());
    return i_bytes;
}

OSErr CAS_Memory::GetEOF(std::uint64_t& sizeL) {
    const CMutex::Scope guard(*ReadLock());
    sizeL = i_bytes.size() / UnitBytes();
    return noErr;
}

OSErr CAS_Memory::Open_i(bool writeB, std::uint64_t& sizeL) {
    if (writeB)
        i_bytes.clear();
    else
        sizeL = i_bytes.size() / UnitBytes();
    i_positionL = 0;
    return noErr;
}

OSErr CAS_Memory::Read_i(std::span<std::byte> buffer, std::size_t& gotL) {
    gotL = 0;
    if (!Assert(buffer.size() <= i_bytes.size() - i_positionL)) return paramErr;
    const auto from = i_bytes.begin() + static_cast<std::ptrdiff_t>(i_positionL);
    std::copy(from, from + static_cast<std::ptrdiff_t>(buffer.size()), buffer.begin());
    i_positionL += buffer.size();
    gotL = buffer.size();
    return noErr;
}

OSErr CAS_Memory::Write_i(std::span<const std::byte> bytes) {
    i_bytes.insert(i_bytes.end(), bytes.begin(), bytes.end());
    return noErr;
}

std::uint64_t CAS_Memory::Available_i() { return (i_bytes.size() - i_positionL) / UnitBytes(); }

OSErr CAS_Memory::Seek_i(std::uint64_t positionL) {
    i_positionL =
        static_cast<std::size_t>(std::min<std::uint64_t>(positionL, i_bytes.size() / UnitBytes())) * UnitBytes();
    SetRead(i_positionL / UnitBytes());
    return noErr;
}
