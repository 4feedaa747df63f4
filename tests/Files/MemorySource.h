#pragma once
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <utility>

#include "Files/CByteSource.h"

/** Bytes in memory as a source, for tests and fuzz targets: they can be cut, changed, and end in another way. */
class MemorySource final : public CByteSource {
public:
    explicit MemorySource(std::string bytes) : i_bytes(std::move(bytes)) {}
    OSErr Read(std::span<std::byte> to, std::size_t& got) override {
        got = i_goneB ? 0 : std::min(to.size(), i_bytes.size() - i_posL);
        std::copy_n(std::as_bytes(std::span(i_bytes)).data() + i_posL, got, to.data());
        i_posL += got;
        i_readL += got;
        if (i_goneB) return ioErr;
        return got < to.size() ? i_endErr : noErr;
    }
    OSErr Seek(std::uint64_t position) override {
        if (position > i_bytes.size()) return paramErr;
        i_posL = position;
        return noErr;
    }
    [[nodiscard]] std::uint64_t Position() const override { return i_posL; }
    [[nodiscard]] std::uint64_t Size() const override { return i_bytes.size(); }

    std::string i_bytes;
    std::size_t i_posL = 0, i_readL = 0;
    OSErr i_endErr = eofErr;
    bool i_goneB = false;   // the disc is away
};
