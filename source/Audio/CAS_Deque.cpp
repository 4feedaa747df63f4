#include "Audio/CAS_Deque.h"

#include <algorithm>

#include "Core/Assertions.h"
#include "Core/CLog.h"

namespace {
SpoolTraits DequeTraits(std::size_t unitBytes) {
    SpoolTraits traits;
    traits.name = "Deque";
    traits.unitBytes = unitBytes;
    traits.waitsForDataB = true;
    return traits;
}
}   // namespace

CAS_Deque::CAS_Deque(std::size_t unitBytes) : CSpooler(DequeTraits(unitBytes)) {}

CAS_Deque::~CAS_Deque() { Log("deleting deq"); }

OSErr CAS_Deque::Open_i(bool writeB, std::uint64_t&) {
    if (writeB) i_writtenAllB = false;
    return noErr;
}

OSErr CAS_Deque::Close_i(bool writeB) {
    if (writeB) i_writtenAllB = true;
    return noErr;
}

OSErr CAS_Deque::Read_i(std::span<std::byte> buffer, std::size_t& gotL) {
    gotL = 0;
    if (!Assert(buffer.size() <= i_deque.size())) return paramErr;
    const auto end = i_deque.begin() + static_cast<std::ptrdiff_t>(buffer.size());
    std::copy(i_deque.begin(), end, buffer.begin());
    i_deque.erase(i_deque.begin(), end);
    gotL = buffer.size();
    return noErr;
}

OSErr CAS_Deque::Write_i(std::span<const std::byte> bytes) {
    i_deque.insert(i_deque.end(), bytes.begin(), bytes.end());
    return noErr;
}

std::uint64_t CAS_Deque::Available_i() { return i_deque.size() / UnitBytes(); }

bool CAS_Deque::IsAtEnd_i() { return i_writtenAllB && i_deque.size() < UnitBytes(); }
