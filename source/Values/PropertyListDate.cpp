#include "Values/PropertyListDate.h"

#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>

namespace {

using std::chrono::day;
using std::chrono::month;
using std::chrono::seconds;
using std::chrono::sys_days;
using std::chrono::year;

constexpr sys_days kEpoch = year{2001} / 1 / 1;
constexpr double kFirstT = static_cast<double>(seconds{sys_days{year{1} / 1 / 1} - kEpoch}.count());
constexpr double kLastT = static_cast<double>(seconds{sys_days{year{9999} / 12 / 31} - kEpoch}.count()) + 86399;

/** The digits at `at`; -1 when there are others. */
int Digits(std::string_view text, std::size_t at, std::size_t countL) {
    int value = 0;
    for (const char c : text.substr(at, countL)) {
        if (c < '0' || c > '9') return -1;
        value = value * 10 + (c - '0');
    }
    return value;
}

}   // namespace

std::optional<CFDate> ParsePropertyListDate(std::string_view text) {
    constexpr std::string_view kShape = "0000-00-00T00:00:00Z";
    if (text.size() != kShape.size()) return std::nullopt;
    for (std::size_t n = 0; n < text.size(); ++n)
        if (kShape[n] != '0' && text[n] != kShape[n]) return std::nullopt;
    const int years = Digits(text, 0, 4);
    const int months = Digits(text, 5, 2);
    const int days = Digits(text, 8, 2);
    const int hours = Digits(text, 11, 2);
    const int minutes = Digits(text, 14, 2);
    const int secondsL = Digits(text, 17, 2);
    if (years < 1 || months < 1 || days < 1 || hours < 0 || hours > 23 || minutes < 0 || minutes > 59 || secondsL < 0 ||
        secondsL > 59)
        return std::nullopt;
    const std::chrono::year_month_day date{year{years}, month{static_cast<unsigned>(months)},
                                           day{static_cast<unsigned>(days)}};
    if (!date.ok()) return std::nullopt;
    const seconds whole = sys_days{date} - kEpoch;
    return CFDate{static_cast<double>(whole.count() + hours * 3600 + minutes * 60 + secondsL)};
}

std::string PropertyListDate(CFDate date) {
    const double wholeT = std::isnan(date.absoluteT) ? 0 : std::floor(std::clamp(date.absoluteT, kFirstT, kLastT));
    const auto whole = seconds{static_cast<std::int64_t>(wholeT)};
    const auto days = std::chrono::floor<std::chrono::days>(whole);
    const std::chrono::year_month_day civil{kEpoch + days};
    const auto left = static_cast<int>((whole - days).count());
    std::array<char, 64> buffer{};
    std::snprintf(buffer.data(), buffer.size(), "%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(civil.year()),
                  static_cast<unsigned>(civil.month()), static_cast<unsigned>(civil.day()), left / 3600, left / 60 % 60,
                  left % 60);
    return buffer.data();
}
