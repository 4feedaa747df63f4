#include "Library/FileSystemName.h"

std::string FileSystemName(std::string_view text) {
    constexpr std::string_view kHyphens = "/\\:|", kForbidden = "*?\"<>";
    std::string name;
    for (const char c : text) {
        if (kHyphens.find(c) != std::string_view::npos)
            name += '-';
        else if (kForbidden.find(c) != std::string_view::npos || static_cast<unsigned char>(c) < 0x20 || c == 0x7F)
            name += '_';
        else
            name += c;
    }
    constexpr std::string_view kEnds = " .";
    const std::size_t begin = name.find_first_not_of(kEnds);
    if (begin == std::string::npos) return "_";
    name = name.substr(begin, name.find_last_not_of(kEnds) + 1 - begin);
    return std::string(FrontOf(name, kFileName_MaxBytes));
}

std::string_view FrontOf(std::string_view text, std::size_t bytesL) {
    if (text.size() <= bytesL) return text;
    while (bytesL > 0 && (static_cast<unsigned char>(text[bytesL]) & 0xC0U) == 0x80U) --bytesL;
    return text.substr(0, bytesL);
}
