#include "App/SystemFacts.h"

#include <sys/utsname.h>
#include <unistd.h>
#include <array>
#include <clocale>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string_view>

#include "Core/NumberForms.h"

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
    const std::optional<double> megahertz = ReadPersonsNumber(ValueOf("/proc/cpuinfo", "cpu MHz"));
    if (!megahertz) return "unknown";
    return *megahertz < 1000.0 ? FixedText(*megahertz, 0) + " MHz" : FixedText(*megahertz / 1000.0, 2) + " GHz";
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
