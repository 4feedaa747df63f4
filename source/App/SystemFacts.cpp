#include "App/SystemFacts.h"

#include <array>
#include <clocale>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <sys/utsname.h>
#include <unistd.h>

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace {

/** The value behind `key` and its colon, in a file of "key : value" lines. */
std::string ValueOf(const std::filesystem::path& file, std::string_view key) {
    std::ifstream in(file);
    for (std::string line; std::getline(in, line);) {
        if (!line.starts_with(key)) continue;
        const std::size_t colon = line.find(':');
        if (colon == std::string::npos) continue;
        const std::size_t begin = line.find_first_not_of(" \t", colon + 1);
        if (begin != std::string::npos) return line.substr(begin);
    }
    return "unknown";
}

std::string ClockSpeed() {
    double megahertz = 0;
    if (std::sscanf(ValueOf("/proc/cpuinfo", "cpu MHz").c_str(), "%lf", &megahertz) != 1) return "unknown";
    std::array<char, 32> text{};
    if (megahertz < 1000.0)
        std::snprintf(text.data(), text.size(), "%d MHz", static_cast<int>(megahertz));
    else
        std::snprintf(text.data(), text.size(), "%.2f GHz", megahertz / 1000.0);
    return text.data();
}

std::string TotalMemory() {
    const long pagesL = ::sysconf(_SC_PHYS_PAGES);
    const long pageBytesL = ::sysconf(_SC_PAGESIZE);
    if (pagesL <= 0 || pageBytesL <= 0) return "unknown";
    return std::to_string(pagesL / 1024 * pageBytesL / 1024) + " MB";
}

std::string NetworkAddress() {
    std::error_code err;   // without the folder there is no network: the loop does not run
    for (const auto& entry : std::filesystem::directory_iterator("/sys/class/net", err)) {
        std::string address;
        if (std::ifstream in(entry.path() / "address"); in >> address && address != "00:00:00:00:00:00") return address;
    }
    return "unknown";
}

std::string SystemVersion() {
    utsname name{};
    if (::uname(&name) != 0) return "unknown";
    return std::string(name.sysname) + " " + name.release + " " + name.machine;
}

}   // namespace

unsigned MediaLibraryVersion() { return avcodec_version(); }

std::string MediaLibraryVersionText() {
    const unsigned version = avcodec_version();
    return std::to_string(version >> 16) + "." + std::to_string(version >> 8 & 255U) + "." +
           std::to_string(version & 255U);
}

std::vector<std::string> SystemFactLines() {
    const char* const localeZ = std::setlocale(LC_ALL, nullptr);
    return {"System: " + SystemVersion(),
            "Media library: libavcodec " + MediaLibraryVersionText(),
            "Clock Speed: " + ClockSpeed(),
            "Processor: " + ValueOf("/proc/cpuinfo", "model name"),
            "Total RAM: " + TotalMemory(),
            "MAC address: " + NetworkAddress(),
            "Locale: " + std::string(localeZ == nullptr ? "unknown" : localeZ)};
}
