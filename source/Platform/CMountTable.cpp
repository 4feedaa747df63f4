#include "Platform/CMountTable.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>

namespace {

/** A blank, a tab, a line end and a backslash are written as three octal digits. */
std::string Unescaped(std::string_view text) {
    std::string plain;
    while (!text.empty()) {
        const auto isOctal = [](char c) { return c >= '0' && c <= '7'; };
        const bool escapedB = text.size() >= 4 && text[0] == '\\' && std::ranges::all_of(text.substr(1, 3), isOctal);
        if (escapedB)
            plain += static_cast<char>((text[1] - '0') * 64 + (text[2] - '0') * 8 + (text[3] - '0'));
        else
            plain += text.front();
        text.remove_prefix(escapedB ? 4 : 1);
    }
    return plain;
}

}   // namespace

CMountTable::Mounts CMountTable::Parse(std::string_view text) {
    Mounts mounts;
    std::istringstream lines{std::string(text)};
    for (std::string line; std::getline(lines, line);) {
        std::istringstream fields(line);
        std::string id, parent, volume, root, folder;
        if (fields >> id >> parent >> volume >> root >> folder) mounts.emplace(Unescaped(folder), volume);
    }
    return mounts;
}

std::vector<CMountTable::Path> CMountTable::Changed() {
    std::ifstream in(i_file, std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(in), {}};
    if (text.empty() || text == i_text) return {};
    const bool firstB = i_text.empty();
    i_text = std::move(text);
    Mounts now = Parse(i_text);
    std::swap(now, i_mounts);
    std::vector<Path> changed;
    if (firstB) return changed;
    std::vector<Mounts::value_type> differing;
    std::ranges::set_symmetric_difference(now, i_mounts, std::back_inserter(differing));
    for (const auto& [folder, volume] : differing)
        if (changed.empty() || changed.back() != folder) changed.emplace_back(folder);
    return changed;
}

std::vector<CMountTable::Path> CMountTable::Volumes() const {
    std::ifstream in(i_file, std::ios::binary);
    std::vector<Path> volumes;
    for (const auto& [folder, volume] : Parse(std::string{std::istreambuf_iterator<char>(in), {}}))
        for (const std::string_view top : {"/media/", "/run/media/", "/mnt/"})
            if (folder.starts_with(top)) volumes.emplace_back(folder);
    return volumes;
}
