#pragma once
#include <cstdint>
#include <string_view>

class CCFDictionary;

/** The id under a key of a library file; 0 when it is none (logged) or not there. */
[[nodiscard]] std::uint32_t ReadID(const CCFDictionary& dictionary, std::string_view key);
