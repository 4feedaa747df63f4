#include "App/MemoryWarning.h"

#include "Core/Localize.h"

#include <fstream>

namespace {
constexpr double kTold_AgainT = 86400;
}   // namespace

std::optional<std::uint64_t> FreeMemory(const std::filesystem::path& facts) {
    std::ifstream in(facts);
    for (std::string line; std::getline(in, line);) {
        unsigned long long kilobytesL = 0;
        if (std::sscanf(line.c_str(), "MemAvailable: %llu kB", &kilobytesL) == 1)
            return std::uint64_t{kilobytesL} << 10;
    }
    return std::nullopt;
}

std::optional<std::string> MemoryWarning(std::uint64_t freeBytes, CFDate lastTold, CFDate now) {
    const double sinceT = now.absoluteT - lastTold.absoluteT;
    const bool toldB = sinceT >= 0 && sinceT < kTold_AgainT;   // a date to come is of a clock that went wrong
    if (freeBytes >= kMemory_Wanted || toldB) return std::nullopt;
    return Localize(
        "Only %1 MB of memory are free, and a show with movies may want %2 MB. Please quit other programs "
        "before the show begins.",
        {std::to_string(freeBytes >> 20), std::to_string(kMemory_Wanted >> 20)});
}
