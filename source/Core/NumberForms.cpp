#include "Core/NumberForms.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace {

std::string& Mark() {
    static std::string s_mark = ".";
    return s_mark;
}

constexpr std::string_view kBlanks = " \t\r\n";

bool IsDigit(char c) noexcept { return c >= '0' && c <= '9'; }
bool IsSeparator(char c) noexcept { return c == '.' || c == ','; }

/** The sign, digits and separators at the front; a separator without a digit behind it is no part, unless it is the
    last. */
std::size_t NumberLength(std::string_view text) {
    std::size_t at = !text.empty() && (text[0] == '-' || text[0] == '+') ? 1 : 0;
    while (at < text.size() && (IsDigit(text[at]) || IsSeparator(text[at]))) ++at;
    return at;
}

/** The same number with a point alone. */
std::string WithPoint(std::string_view written) {
    const auto last = std::find_if(written.rbegin(), written.rend(), IsSeparator);
    if (last == written.rend()) return std::string(written);
    const auto lastAt = static_cast<std::size_t>(written.rend() - last) - 1;
    const auto sameL = std::ranges::count(written, *last);
    std::string plain;
    for (std::size_t n = 0; n < written.size(); ++n)
        if (!IsSeparator(written[n]))
            plain += written[n];
        else if (n == lastAt && sameL == 1)   // "1,234,567" has none
            plain += '.';
    return plain;
}

/** Takes the number off the front of `text`. */
std::optional<double> Take(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    const std::size_t lengthL = NumberLength(text);
    std::string plain = WithPoint(text.substr(0, lengthL));
    if (plain.starts_with('+')) plain.erase(0, 1);
    double value = 0;
    const auto [endP, fault] = std::from_chars(plain.data(), plain.data() + plain.size(), value);
    if (fault != std::errc() || !std::isfinite(value)) return std::nullopt;
    text.remove_prefix(lengthL);
    return value;
}

}   // namespace

std::string FixedText(double value, int decimals) {
    std::array<char, 512> text{};   // the largest number has 309 digits before the point
    const auto [endP, fault] =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, decimals);
    return fault == std::errc() ? std::string(text.data(), endP) : std::string();
}

void SetDecimalMark(std::string mark) { Mark() = mark.empty() ? "." : std::move(mark); }
const std::string& DecimalMark() noexcept { return Mark(); }

std::string ShownNumber(double value, int decimals) {
    std::string text = FixedText(value, decimals);
    if (const std::size_t at = text.find('.'); at != std::string::npos) text.replace(at, 1, DecimalMark());
    return text;
}

std::optional<double> ReadPersonsNumber(std::string_view text) { return Take(text); }

std::optional<double> ReadWholePersonsNumber(std::string_view text) {
    const auto number = Take(text);
    return text.find_first_not_of(kBlanks) == std::string_view::npos ? number : std::nullopt;
}
