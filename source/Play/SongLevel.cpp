#include "Play/SongLevel.h"

#include <charconv>
#include <cmath>

namespace {

constexpr int kDecimals = 2;

/** The next number of `text`, and the blank behind it, are taken off. */
template <class Number>
bool Take(std::string_view& text, Number& value) {
    const auto [endZ, err] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (err != std::errc()) return false;
    text.remove_prefix(static_cast<std::size_t>(endZ - text.data()));
    if (text.starts_with(' ')) text.remove_prefix(1);
    return true;
}

template <class Number, class... Form>
void Put(std::string& text, Number value, Form... form) {
    char digits[400];
    const auto result = std::to_chars(std::begin(digits), std::end(digits), value, form...);
    if (!text.empty()) text += ' ';
    text.append(digits, result.ptr);
}

}   // namespace

float SongLevel::GainF() const { return static_cast<float>(std::pow(10.0, loudness.GainDB() / 20)); }

std::string SongLevel::ToText() const {
    std::string text;
    Put(text, loudness.lufs, std::chars_format::fixed, kDecimals);
    Put(text, loudness.peakDB, std::chars_format::fixed, kDecimals);
    Put(text, stamp.bytesL);
    Put(text, stamp.secondsL);
    return text;
}

std::optional<SongLevel> SongLevel::Parse(std::string_view text) {
    SongLevel level;
    const bool wholeB = Take(text, level.loudness.lufs) && Take(text, level.loudness.peakDB) &&
                        Take(text, level.stamp.bytesL) && Take(text, level.stamp.secondsL) && text.empty();
    if (!wholeB || std::isnan(level.loudness.lufs) || std::isnan(level.loudness.peakDB)) return {};
    return level;
}
