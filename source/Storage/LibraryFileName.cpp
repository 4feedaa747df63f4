#include "Storage/LibraryFileName.h"

#include <algorithm>

namespace {

constexpr std::size_t kMost_Bytes = 255 - 16;

/** " (damaged 2024-02-29 12.00.01)" somewhere in the name. */
std::size_t FindDamagedMark(std::string_view name) {
    constexpr std::string_view kForm = " (damaged 0000-00-00 00.00.00)";
    const auto fits = [](char form, char c) { return form == '0' ? c >= '0' && c <= '9' : c == form; };
    for (std::size_t at = 0; at + kForm.size() <= name.size(); ++at)
        if (std::ranges::equal(kForm, name.substr(at, kForm.size()), fits)) return at;
    return std::string_view::npos;
}

}   // namespace

bool IsPassedOver(std::string_view name) {
    return name.starts_with("~") || FindDamagedMark(name) != std::string_view::npos;
}

std::string LibraryFileName(std::string_view title) {
    std::string name(title);
    for (char& c : name)
        if (c == '/' || c == '*' || c == '\\' || static_cast<unsigned char>(c) < 0x20) c = '_';
    for (std::size_t at = FindDamagedMark(name); at != std::string::npos; at = FindDamagedMark(name)) name[at] = '_';
    if (name.starts_with("~") || name.starts_with(".")) name = "_" + name;
    if (name.size() > kMost_Bytes) {
        std::size_t end = kMost_Bytes;
        while (end > 0 && (static_cast<unsigned char>(name[end]) & 0xC0) == 0x80) --end;   // never inside a character
        name.resize(end);
    }
    if (name.ends_with(".") || name.ends_with(" ")) name += '_';
    return name.empty() ? "Untitled" : name;
}

std::string LibraryFileKey(const std::filesystem::path& file) {
    std::string key = file.string();
    std::ranges::transform(key, key.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return key;
}
