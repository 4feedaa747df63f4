#include "Zip/ZipRecords.h"

#include <zlib.h>

#include "Zip/CZipUnpacker.h"

namespace {

constexpr std::uint16_t kExtra_Zip64 = 0x0001, kExtra_UnicodePath = 0x7075;
constexpr std::uint32_t kIn64 = 0xFFFFFFFF;

std::uint64_t Number(ZipBytes bytes, std::size_t at, std::size_t countL) noexcept {
    std::uint64_t number = 0;
    for (std::size_t n = countL; n > 0; --n) number = number << 8 | std::to_integer<std::uint64_t>(bytes[at + n - 1]);
    return number;
}

bool ReadZip64(ZipBytes field, CZipMember& member) noexcept {
    for (std::uint64_t* const numberP : {&member.sizeL, &member.packedL, &member.headerAt}) {
        if (*numberP != kIn64) continue;
        if (field.size() < 8) return false;
        *numberP = ZipU64(field, 0);
        field = field.subspan(8);
    }
    return true;
}

}   // namespace

std::uint16_t ZipU16(ZipBytes bytes, std::size_t at) noexcept {
    return static_cast<std::uint16_t>(Number(bytes, at, 2));
}
std::uint32_t ZipU32(ZipBytes bytes, std::size_t at) noexcept {
    return static_cast<std::uint32_t>(Number(bytes, at, 4));
}
std::uint64_t ZipU64(ZipBytes bytes, std::size_t at) noexcept { return Number(bytes, at, 8); }

std::string_view ZipText(ZipBytes bytes) noexcept {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

bool ReadZipExtra(ZipBytes extra, std::string_view plainName, CZipMember& member) {
    bool is64B = false;
    const bool wanted64B = member.sizeL == kIn64 || member.packedL == kIn64 || member.headerAt == kIn64;
    // Padding and other programs' odd ends stand here too: what is no whole field ends the reading, without a fault.
    while (extra.size() >= 4) {
        const std::uint16_t id = ZipU16(extra, 0), sizeL = ZipU16(extra, 2);
        if (sizeL > extra.size() - 4) break;
        const ZipBytes field = extra.subspan(4, sizeL);
        if (id == kExtra_Zip64 && !is64B) {
            if (!ReadZip64(field, member)) return false;
            is64B = true;
        }
        if (id == kExtra_UnicodePath && field.size() > 5 && field[0] == std::byte{1}) {
            const uLong crc =
                crc32(0, reinterpret_cast<const Bytef*>(plainName.data()), static_cast<uInt>(plainName.size()));
            if (crc == ZipU32(field, 1)) member.name = ZipName(ZipText(field.subspan(5)), true);
        }
        extra = extra.subspan(std::size_t{4} + sizeL);
    }
    // Without the field, 0xFFFFFFFF is a number like any other, which the checks of sizes and places then refuse.
    return is64B || !wanted64B || member.headerAt != kIn64;
}

ZipFault ReadZipAt(CByteSource& source, std::uint64_t at, std::span<std::byte> to) {
    if (at > source.Size() || to.size() > source.Size() - at) return ZipFault::kTruncated;
    std::size_t got = 0;
    if (Failed(source.Seek(at)) || Failed(source.Read(to, got)) || got < to.size()) return ZipFault::kRead;
    return ZipFault::kNone;
}

void JudgeZipMember(CZipMember& member) noexcept {
    if (member.fault != ZipFault::kNone) return;
    const auto isMethod = [&](ZipMethod method) { return member.method == static_cast<std::uint16_t>(method); };
    if (member.IsEncrypted())
        member.fault = ZipFault::kEncrypted;
    else if (isMethod(ZipMethod::kStored) ? member.sizeL != member.packedL
                                          : member.sizeL > CZipUnpacker::MostUnpacked(member.method, member.packedL))
        member.fault = ZipFault::kSizes;
    if (member.fault != ZipFault::kEncrypted && !isMethod(ZipMethod::kStored) && !isMethod(ZipMethod::kDeflate) &&
        !isMethod(ZipMethod::kDeflate64))
        member.fault = ZipFault::kMethod;
}
