#include "Files/FileURL.h"

#include <string_view>

std::string FileURL(const std::filesystem::path& path) {
    constexpr std::string_view kPlain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";
    std::string url = "file://";
    for (const char c : path.native()) {
        if (kPlain.find(c) != std::string_view::npos) {
            url += c;
            continue;
        }
        constexpr std::string_view kHex = "0123456789ABCDEF";
        const auto byte = static_cast<unsigned char>(c);
        url += '%';
        url += kHex[byte >> 4U];
        url += kHex[byte & 15U];
    }
    return url;
}
