#pragma once
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "Values/CCFValue.h"

/** Bytes that programs can still have, as the system's own file of facts tells; nothing when it does not. */
[[nodiscard]] std::optional<std::uint64_t> FreeMemory(const std::filesystem::path& facts = "/proc/meminfo");

/** What the user is told when, with the library loaded, less memory is free than a show with movies may want. Nothing
    when there is enough, or when he was told within the last day. */
[[nodiscard]] std::optional<std::string> MemoryWarning(std::uint64_t freeBytes, CFDate lastTold, CFDate now);

inline constexpr std::uint64_t kMemory_Wanted = std::uint64_t{300} << 20;
