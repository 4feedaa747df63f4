#pragma once
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "Zip/ZipFault.h"

/** One member of a zip, as the directory tells it: nothing here is trusted before it was checked while reading. */
struct CZipMember {
    static constexpr std::uint16_t kFlag_ENCRYPTED = 1, kFlag_SIZES_BEHIND = 8, kFlag_STRONG = 0x40, kFlag_UTF8 = 0x800,
                                   kFlag_MASKED = 0x2000;

    std::string name;           // UTF-8, with its folders as they are told: for showing and choosing, never a path
    std::uint16_t method = 0;   // ZipMethod, or another
    std::uint16_t flags = 0;
    std::uint32_t crc = 0;
    std::uint64_t packedL = 0;          // bytes in the file
    std::uint64_t sizeL = 0;            // bytes unpacked
    std::uint64_t headerAt = 0;         // of its own header, from the start of the file
    ZipFault fault = ZipFault::kNone;   // why it cannot be read

    [[nodiscard]] bool IsEncrypted() const noexcept { return (flags & (kFlag_ENCRYPTED | kFlag_STRONG)) != 0; }
    [[nodiscard]] bool IsFolder() const noexcept { return name.ends_with('/') || name.ends_with('\\'); }
    /** The name wants to lie outside of the folder it is unpacked to: "../x", "/x", "C:\x". */
    [[nodiscard]] bool IsClimbing() const noexcept;
    /** The last part of the name, fit to be a file's name in any folder: no separator of any system, no control
        character, never empty, "." or "..", at most 240 bytes. */
    [[nodiscard]] std::string SafeName() const;
};

/** The name of a member as UTF-8: as it stands with `utf8B` (what is no UTF-8 becomes U+FFFD), else from code page 437.
   A name in valid UTF-8 beyond ASCII is taken for it even without the flag: many programs forget to set it. Source .ZIP
    File Format Specification (APPNOTE.TXT), appendix D. */
[[nodiscard]] std::string ZipName(std::string_view bytes, bool utf8B);
