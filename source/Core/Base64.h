#pragma once
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/** The common alphabet of RFC 4648, with padding, without line ends. */
[[nodiscard]] std::string EncodeBase64(std::span<const std::byte> bytes);
/** White space is skipped anywhere; nothing when another character stands in the text or the end is cut. */
[[nodiscard]] std::optional<std::vector<std::byte>> DecodeBase64(std::string_view text);
