#pragma once
#include <vector>

#include "Audio/CSpooler.h"

/** Spools read one after the other as if they were one. All have the same unit. The whole can be sought when the parts
    can.
    Owner    retains the parts, and is the only one that uses them while it is open.
    Errors   the first error of a part; a part that ends early or late just ends there. */
class CAS_MultiSpool : public CSpooler {
public:
    explicit CAS_MultiSpool(std::vector<Ref<CSpooler>> parts, std::size_t unitBytes = kSpool_AudioUnitBytes,
                            std::string name = "Multiple Files");
    OSErr GetEOF(std::uint64_t& sizeL) override;

protected:
    OSErr Open_i(bool writeB, std::uint64_t& sizeL) override;
    OSErr Close_i(bool writeB) override;
    OSErr Read_i(std::span<std::byte> buffer, std::size_t& gotL) override;
    std::uint64_t Available_i() override;
    OSErr Seek_i(std::uint64_t positionL) override;
    void Abort_i() override;

    [[nodiscard]] const std::vector<Ref<CSpooler>>& Parts() const noexcept { return i_parts; }

private:
    OSErr CloseParts();

    const std::vector<Ref<CSpooler>> i_parts;
    std::vector<std::uint64_t> i_sizes;   // this and the next under the read lock
    std::size_t i_currentL = 0;           // i_parts.size() at the end
};
