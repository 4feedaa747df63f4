#pragma once
#include "Files/CByteSource.h"
#include "Files/CDataFork.h"

/** A whole file as bytes, with the size that it has when it is opened. Threads, errors: as CByteSource and CDataFork. */
class CByteSource_File final : public CByteSource {
public:
    OSErr Open(const CFileRef& file);

    OSErr Read(std::span<std::byte> to, std::size_t& got) override;
    OSErr Seek(std::uint64_t position) override;
    [[nodiscard]] std::uint64_t Position() const override { return i_fork.GetPos(); }
    [[nodiscard]] std::uint64_t Size() const override { return i_sizeL; }

private:
    CDataFork i_fork;
    std::uint64_t i_sizeL = 0;
};
