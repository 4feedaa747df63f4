#pragma once
#include <vector>

#include "Audio/CSpooler.h"

/** A stream that lies in memory as a whole: a source of the bytes it was made with, or a sink that collects them.
    Writing begins at the start, in place of what was there. Can be sought.
    Threads  reader and writer on two. */
class CAS_Memory : public CSpooler {
public:
    explicit CAS_Memory(std::vector<std::byte> bytes = {}, std::size_t unitBytes = kSpool_AudioUnitBytes);

    /** All that it holds. */
    [[nodiscard]] std::vector<std::byte> Bytes() const;
    OSErr GetEOF(std::uint64_t& sizeL) override;

protected:
    /** For an adapter or a subclass of another kind. */
    CAS_Memory(SpoolTraits traits, std::vector<std::byte> bytes);
    OSErr Open_i(bool writeB, std::uint64_t& sizeL) override;
    OSErr Read_i(std::span<std::byte> buffer, std::size_t& gotL) override;
    OSErr Write_i(std::span<const std::byte> bytes) override;
    std::uint64_t Available_i() override;
    OSErr Seek_i(std::uint64_t positionL) override;

private:
    std::vector<std::byte> i_bytes;   // both under the data lock
    std::size_t i_positionL = 0;      // bytes; never above the size
};
