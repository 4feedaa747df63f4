#pragma once
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "Files/CByteSource.h"
#include "Zip/CZipMember.h"

/** The records of a zip, little-endian, as both roads through an archive read them.
    Source   .ZIP File Format Specification (APPNOTE.TXT), 4.3.7 to 4.3.16 and 4.5.3. */
using ZipBytes = std::span<const std::byte>;

inline constexpr std::uint32_t kZip_Local = 0x04034b50, kZip_Central = 0x02014b50, kZip_End = 0x06054b50,
                               kZip_End64 = 0x06064b50, kZip_Locator64 = 0x07064b50, kZip_Descriptor = 0x08074b50;
inline constexpr std::size_t kZip_LocalBytes = 30, kZip_CentralBytes = 46, kZip_EndBytes = 22, kZip_End64Bytes = 56,
                             kZip_Locator64Bytes = 20;
inline constexpr std::size_t kZip_MostMembers = 1'000'000;
inline constexpr std::uint64_t kZip_DirectoryMost = 64ULL << 20;   // bytes of a directory, or of all names without one

/** The number at `at`; the caller has checked that it is there. */
[[nodiscard]] std::uint16_t ZipU16(ZipBytes bytes, std::size_t at) noexcept;
[[nodiscard]] std::uint32_t ZipU32(ZipBytes bytes, std::size_t at) noexcept;
[[nodiscard]] std::uint64_t ZipU64(ZipBytes bytes, std::size_t at) noexcept;
[[nodiscard]] std::string_view ZipText(ZipBytes bytes) noexcept;

/** The extra field's say: 64-bit sizes and offset for those that are 0xFFFFFFFF in the record, and a name in UTF-8
    for which the checksum of the plain one agrees. False when the field ends before what it must hold. */
bool ReadZipExtra(ZipBytes extra, std::string_view plainName, CZipMember& member);

/** Fills `to` from `at` on; kTruncated when the source ends first, kRead for a status of the file. */
ZipFault ReadZipAt(CByteSource& source, std::uint64_t at, std::span<std::byte> to);
/** Whether the member's method, flags and sizes can be read at all, into `member.fault`. */
void JudgeZipMember(CZipMember& member) noexcept;
