#include "Graphics/CSubCodeStream_Memory.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "Graphics/CSubCodeStream_File.h"

namespace {
constexpr std::size_t kMostUnits = std::size_t{1} << 28;
constexpr std::size_t kLoadPart_Units = std::size_t{1} << 16;   // 256 KB

}   // namespace

CSubCodeStream_Memory::CSubCodeStream_Memory(std::span<const std::uint8_t> bytes)
    : i_bytes(std::make_unique_for_overwrite<std::uint8_t[]>(bytes.size())), i_lengthL(bytes.size() / kUnitBytes) {
    std::ranges::copy(bytes, i_bytes.get());
}

OSErr CSubCodeStream_Memory::LoadFile(const std::filesystem::path& file, const std::function<bool()>& cancelled) {
    CSubCodeStream_File stream;
    if (const OSErr err = stream.Open(file); Failed(err)) return err;
    if (stream.LengthUnits() > kMostUnits) return memFullErr;
    const std::size_t sizeL = stream.LengthUnits() * kUnitBytes;
    // Not zeroed: each byte given out was read.
    std::unique_ptr<std::uint8_t[]> bytes(new (std::nothrow) std::uint8_t[sizeL]);
    if (bytes == nullptr) return memFullErr;
    std::size_t doneL = 0;
    for (SubCodeRead got; !Failed(got.err) && doneL < stream.LengthUnits(); doneL += got.unitsL) {
        if (cancelled && cancelled()) return abortErr;
        const std::size_t partL = std::min(stream.LengthUnits() - doneL, kLoadPart_Units);
        got = stream.Read({bytes.get() + doneL * kUnitBytes, partL * kUnitBytes});
        if (Failed(got.err) && got.err != eofErr) return got.err;
    }
    i_bytes = std::move(bytes);
    i_lengthL = doneL;
    i_positionL = 0;
    return noErr;
}

SubCodeRead CSubCodeStream_Memory::Read(std::span<std::uint8_t> bytes) {
    const std::size_t wantedL = bytes.size() / kUnitBytes;
    const std::size_t unitsL = std::min(wantedL, i_lengthL - i_positionL);
    if (unitsL > 0) std::memcpy(bytes.data(), i_bytes.get() + i_positionL * kUnitBytes, unitsL * kUnitBytes);
    i_positionL += unitsL;
    return {unitsL, unitsL < wantedL ? eofErr : noErr};
}

OSErr CSubCodeStream_Memory::Rewind() {
    i_positionL = 0;
    return noErr;
}
