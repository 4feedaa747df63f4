#pragma once
#include <filesystem>

#include "Graphics/CSubCodeStream.h"

/** A file of sub-code, read where it lies: an hour is run through a small buffer, and no memory is taken for the rest.
    Owner    of its descriptor. */
class CSubCodeStream_File final : public CSubCodeStream {
public:
    CSubCodeStream_File() = default;
    ~CSubCodeStream_File() override;
    CSubCodeStream_File(const CSubCodeStream_File&) = delete;
    CSubCodeStream_File& operator=(const CSubCodeStream_File&) = delete;

    /** Once. fnfErr, afpAccessDenied, paramErr for what is no regular file, ioErr. An empty file is an empty stream. */
    OSErr Open(const std::filesystem::path& file);
    /** Whole units at the time of Open; bytes behind the last one are not seen. */
    [[nodiscard]] std::size_t LengthUnits() const { return i_lengthL; }

    /** eofErr also where the file became shorter meanwhile. */
    SubCodeRead Read(std::span<std::uint8_t> bytes) override;
    [[nodiscard]] std::size_t Position() const override { return i_positionL; }
    OSErr Rewind() override;

private:
    int i_descriptor = -1;
    std::size_t i_lengthL = 0;     // units
    std::size_t i_positionL = 0;   // units, never above i_lengthL
};
