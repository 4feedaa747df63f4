#include "Storage/BackupNames.h"

#include <algorithm>

#include "Core/UTF8.h"

namespace {

constexpr std::string_view kBytes_Prefix = "~bytes/", kDigits = "0123456789ABCDEF", kPlain_Marks = " ._-/";

bool IsPlainByte(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
           kPlain_Marks.find(c) != std::string_view::npos;
}

/** Every reader of zips takes it for the very same name: "\" is a separator to many, "C:" a disc. */
bool IsSafeInZip(std::string_view name) {
    if (name.find('\\') != std::string_view::npos || (name.size() >= 2 && name[1] == ':')) return false;
    while (!name.empty()) {
        const UTF8Char next = NextUTF8(name);
        if (!next.validB || next.code == 0) return false;
        name.remove_prefix(next.bytesL);
    }
    return true;
}

std::optional<std::string> Unescaped(std::string_view text) {
    std::string bytes;
    for (std::size_t n = 0; n < text.size(); ++n) {
        if (text[n] != '%') {
            bytes += text[n];
            continue;
        }
        if (text.size() - n < 3) return std::nullopt;
        const std::size_t high = kDigits.find(text[n + 1]), low = kDigits.find(text[n + 2]);
        if (high == std::string_view::npos || low == std::string_view::npos) return std::nullopt;
        bytes += static_cast<char>(high << 4 | low);
        n += 2;
    }
    return bytes;
}

}   // namespace

bool IsLibraryFile(const std::filesystem::path& fromRoot) {
    if (std::ranges::any_of(fromRoot, [](const auto& part) { return part.string().starts_with('~'); })) return false;
    return fromRoot.extension() == ".xml" || fromRoot.filename() == "Songs.vlb";
}

std::string BackupMemberName(const std::filesystem::path& fromRoot) {
    const std::string& name = fromRoot.native();
    if (IsSafeInZip(name)) return name;
    std::string escaped(kBytes_Prefix);
    for (const char c : name) {
        if (IsPlainByte(c)) {
            escaped += c;
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        escaped += '%';
        escaped += kDigits[byte >> 4];
        escaped += kDigits[byte & 15U];
    }
    return escaped;
}

std::optional<std::filesystem::path> PathOfBackupMember(std::string_view name) {
    const bool escapedB = name.starts_with(kBytes_Prefix);
    auto bytes = escapedB ? Unescaped(name.substr(kBytes_Prefix.size())) : std::string(name);
    if (!escapedB && !IsSafeInZip(name)) return std::nullopt;
    if (!bytes || bytes->empty() || bytes->find('\0') != std::string::npos) return std::nullopt;
    std::filesystem::path path(*std::move(bytes));
    // "a//b" and "a/./b" too: a path has one spelling, so that no two members are one file.
    const bool climbsB = std::ranges::any_of(path, [](const auto& part) { return part == ".." || part == "."; });
    if (climbsB || path.is_absolute() || path.lexically_normal().native() != path.native()) return std::nullopt;
    return IsLibraryFile(path) ? std::optional(std::move(path)) : std::nullopt;
}
