#pragma once
#include <filesystem>
#include <functional>
#include <memory>

#include "Graphics/CSubCodeStream.h"

/** A stream that lies in memory whole: an hour of it is 26 MB.
    Owner    of its bytes. */
class CSubCodeStream_Memory final : public CSubCodeStream {
public:
    CSubCodeStream_Memory() = default;
    /** Bytes behind the last whole unit are not seen. */
    explicit CSubCodeStream_Memory(std::span<const std::uint8_t> bytes);
    /** Takes the whole file in the stream's place; on failure the stream stays as it was. fnfErr, permErr, paramErr for
        what is no regular file, memFullErr over 1 GB (41 hours), ioErr. An empty file is an empty stream. `cancelled` is
        asked between the parts of a file that may come slowly: abortErr. */
    OSErr LoadFile(const std::filesystem::path& file, const std::function<bool()>& cancelled = {});

    SubCodeRead Read(std::span<std::uint8_t> bytes) override;
    [[nodiscard]] std::size_t Position() const override { return i_positionL; }
    OSErr Rewind() override;

    [[nodiscard]] std::size_t LengthUnits() const { return i_lengthL; }
    /** All whole units. */
    [[nodiscard]] std::span<const std::uint8_t> Bytes() const { return {i_bytes.get(), i_lengthL * kUnitBytes}; }

private:
    static constexpr std::size_t kUnitBytes = 4;

    std::unique_ptr<std::uint8_t[]> i_bytes;
    std::size_t i_lengthL = 0;     // units
    std::size_t i_positionL = 0;   // units, never above i_lengthL
};
