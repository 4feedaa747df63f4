#include "Meta/TimeCode.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <string>

#include "Core/NumberForms.h"

namespace {

using LongLong = long long;

/** The digits at the front of `text`, at most `mostL` of them, taken off it; nothing when there are none or more. */
std::optional<std::int64_t> TakeDigits(std::string_view& text, std::size_t mostL) {
    std::size_t countL = 0;
    while (countL < text.size() && text[countL] >= '0' && text[countL] <= '9') ++countL;
    if (countL == 0 || countL > mostL) return std::nullopt;
    std::int64_t value = 0;
    std::from_chars(text.data(), text.data() + countL, value);
    text.remove_prefix(countL);
    return value;
}

}   // namespace

SuperString TimeCodeText(std::int64_t milliseconds) {
    const auto size = milliseconds < 0 ? 0 - static_cast<std::uint64_t>(milliseconds)   // the least number has no twin
                                       : static_cast<std::uint64_t>(milliseconds);
    const auto thousandths = static_cast<LongLong>(size % 1000), seconds = static_cast<LongLong>(size / 1000 % 60);
    const auto minutes = static_cast<LongLong>(size / 60'000 % 60), hours = static_cast<LongLong>(size / 3'600'000);
    const char* signZ = milliseconds < 0 ? "-" : "";
    const char* const markZ = DecimalMark().c_str();
    std::array<char, 64> text{};
    if (hours > 0)
        std::snprintf(text.data(), text.size(), "%s%lld:%02lld:%02lld%s%03lld", signZ, hours, minutes, seconds, markZ,
                      thousandths);
    else
        std::snprintf(text.data(), text.size(), "%s%lld:%02lld%s%03lld", signZ, minutes, seconds, markZ, thousandths);
    return text.data();
}

std::optional<std::int64_t> ParseTimeCode(std::string_view text) {
    constexpr std::size_t kMostDigits = 9, kMostParts = 3;   // no overflow of 64 bits
    const auto blank = [](char c) { return c == ' ' || c == '\t'; };
    while (!text.empty() && blank(text.front())) text.remove_prefix(1);
    while (!text.empty() && blank(text.back())) text.remove_suffix(1);
    const bool minusB = text.starts_with('-');
    if (minusB) text.remove_prefix(1);

    std::int64_t seconds = 0;
    for (std::size_t part = 0;; ++part) {
        const auto number = TakeDigits(text, kMostDigits);
        if (!number || part == kMostParts || (part > 0 && *number > 59)) return std::nullopt;
        seconds = seconds * 60 + *number;
        if (!text.starts_with(':')) break;
        text.remove_prefix(1);
    }
    std::int64_t thousandths = 0;
    if (text.starts_with('.') || text.starts_with(',')) {
        text.remove_prefix(1);
        std::string digits(text.substr(0, 3));   // finer than a thousandth is dropped
        if (!TakeDigits(text, kMostDigits)) return std::nullopt;
        digits.resize(3, '0');
        for (char& c : digits)
            if (c < '0' || c > '9') c = '0';
        std::from_chars(digits.data(), digits.data() + digits.size(), thousandths);
    }
    if (!text.empty()) return std::nullopt;
    const std::int64_t milliseconds = seconds * 1000 + thousandths;
    return minusB ? -milliseconds : milliseconds;
}

std::int64_t MillisecondsOf300ths(std::int64_t units300) {
    return units300 / 3 * 10 + std::lround(static_cast<double>(units300 % 3) * 10 / 3);
}

std::int64_t In300ths(std::int64_t milliseconds) {
    return milliseconds / 10 * 3 + std::lround(static_cast<double>(milliseconds % 10) * 3 / 10);
}

SuperString DurationOf300ths(std::int64_t duration300) {
    constexpr std::int64_t kUnits_Second = 300;
    const std::int64_t whole = duration300 < 0 ? 0 : duration300 / kUnits_Second;
    const auto hours = static_cast<LongLong>(whole / 3600), minutes = static_cast<LongLong>(whole / 60 % 60);
    const auto seconds = static_cast<LongLong>(whole % 60);
    std::array<char, 64> text{};
    if (hours > 0)
        std::snprintf(text.data(), text.size(), "%lld:%02lld:%02lld", hours, minutes, seconds);
    else
        std::snprintf(text.data(), text.size(), "%lld:%02lld", minutes, seconds);
    return text.data();
}
