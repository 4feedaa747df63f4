#include "Zip/CZipMember.h"

#include <algorithm>

#include "Core/UTF8.h"

namespace {

/** Code page 437 from 0x80 on. Source: the Unicode Consortium's CP437.TXT. */
constexpr char16_t kCP437[129] =
    u"ÇüéâäàåçêëèïîìÄÅÉæÆôöòûùÿÖÜ¢£¥₧ƒáíóúñÑªº¿⌐¬½¼¡«»░▒▓│┤╡╢╖╕╣║╗╝╜╛┐└┴┬├─┼╞╟╚╔╩╦╠═╬╧╨╤╥╙╘╒╓╫╪┘┌█▄▌▐▀αßΓπΣσµτΦΘΩδ∞φε∩≡"
    u"±≥≤⌠⌡÷≈"
    u"°∙·√ⁿ²■\u00A0";

constexpr std::size_t kSafeName_Most = 240;   // under the 255 of a file system, with room for a number and an ending

void AppendUTF8(std::string& text, char16_t code) {
    const auto add = [&](unsigned byte) { text.push_back(static_cast<char>(byte)); };
    if (code < 0x80) {
        add(code);
    } else if (code < 0x800) {
        add(0xC0U | code >> 6);
        add(0x80U | (code & 0x3F));
    } else {
        add(0xE0U | code >> 12);
        add(0x80U | (code >> 6 & 0x3F));
        add(0x80U | (code & 0x3F));
    }
}

bool IsUTF8(std::string_view bytes) {
    while (!bytes.empty()) {
        const UTF8Char next = NextUTF8(bytes);
        if (!next.validB) return false;
        bytes.remove_prefix(next.bytesL);
    }
    return true;
}

bool IsSeparator(char c) { return c == '/' || c == '\\'; }

}   // namespace

std::string ZipName(std::string_view bytes, bool utf8B) {
    std::string name;
    if (IsUTF8(bytes)) return std::string(bytes);
    if (utf8B) {
        while (!bytes.empty()) {
            const UTF8Char next = NextUTF8(bytes);
            name += next.validB ? bytes.substr(0, next.bytesL) : kUTF8_Replacement;
            bytes.remove_prefix(next.bytesL);
        }
        return name;
    }
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        AppendUTF8(name, byte < 0x80 ? char16_t{byte} : kCP437[byte - 0x80]);
    }
    return name;
}

bool CZipMember::IsClimbing() const noexcept {
    if (name.empty()) return false;
    if (IsSeparator(name.front()) || (name.size() >= 2 && name[1] == ':')) return true;
    for (std::size_t at = 0; at < name.size();) {
        const std::size_t endL = std::min(name.find_first_of("/\\", at), name.size());
        if (std::string_view(name).substr(at, endL - at) == "..") return true;
        at = endL + 1;
    }
    return false;
}

std::string CZipMember::SafeName() const {
    std::string_view last = name;
    while (!last.empty() && IsSeparator(last.back())) last.remove_suffix(1);
    last.remove_prefix(last.find_last_of("/\\") + 1);   // npos + 1 is 0
    if (last.size() >= 2 && last[1] == ':') last.remove_prefix(2);
    std::string safe;
    for (const char c : last) {
        const auto byte = static_cast<unsigned char>(c);
        safe.push_back(byte < 0x20 || byte == 0x7F || c == ':' ? '_' : c);
    }
    if (safe.size() > kSafeName_Most) {
        // The ending says what it is; the front gives way, never inside a character.
        std::size_t dot = safe.rfind('.');
        if (dot == std::string::npos || safe.size() - dot > 16) dot = safe.size();
        std::size_t keep = kSafeName_Most - (safe.size() - dot);
        while (keep > 0 && (static_cast<unsigned char>(safe[keep]) & 0xC0) == 0x80) --keep;
        safe.erase(keep, dot - keep);
    }
    if (safe.empty() || safe == "." || safe == "..") return "member";
    return safe;
}
