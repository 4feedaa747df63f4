#pragma once
#include <deque>

#include "Audio/CSpooler.h"

/** Bytes in memory between a writer and a reader, without a bound: whoever reads them from a pump waits for them. The
    end comes when the writer has closed.
    Threads  reader and writer on two. */
class CAS_Deque : public CSpooler {
public:
    explicit CAS_Deque(std::size_t unitBytes = kSpool_AudioUnitBytes);
    ~CAS_Deque() override;

protected:
    OSErr Open_i(bool writeB, std::uint64_t& sizeL) override;
    OSErr Close_i(bool writeB) override;
    OSErr Read_i(std::span<std::byte> buffer, std::size_t& gotL) override;
    OSErr Write_i(std::span<const std::byte> bytes) override;
    std::uint64_t Available_i() override;
    bool IsAtEnd_i() override;

private:
    std::deque<std::byte> i_deque;   // both under the data lock
    bool i_writtenAllB = false;
};
