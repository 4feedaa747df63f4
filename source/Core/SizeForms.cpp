#include "Core/SizeForms.h"

#include <array>

#include "Core/NumberForms.h"

SuperString SizeText(std::uint64_t bytesL) {
    constexpr std::array<const char*, 7> kUnits = {"bytes", "KB", "MB", "GB", "TB", "PB", "EB"};
    if (bytesL < 1024) return std::to_string(bytesL) + " bytes";
    auto value = static_cast<double>(bytesL);
    std::size_t unit = 0;
    for (; value >= 1024.0 && unit + 1 < kUnits.size(); ++unit) value /= 1024.0;
    const std::string text = FixedText(value, 1);
    return (text.ends_with(".0") ? text.substr(0, text.size() - 2) : ShownNumber(value, 1)) + " " + kUnits[unit];
}

SuperString DurationText(double secondsT) {
    struct UnitRow {
        const char* nameZ;
        std::int64_t secondsL;
    };
    constexpr UnitRow kUnits[] = {{"Days", 86400}, {"Hours", 3600}, {"Minutes", 60}, {"Seconds", 1}};
    constexpr double kMost = 1e15;
    std::int64_t leftL = secondsT > 0 && secondsT < kMost ? static_cast<std::int64_t>(secondsT) : 0;
    if (leftL == 0) return "0 Seconds";
    std::string text;
    for (const UnitRow& unit : kUnits) {
        const std::int64_t countL = leftL / unit.secondsL;
        leftL %= unit.secondsL;
        if (countL == 0) continue;
        if (!text.empty()) text += ' ';
        text += std::to_string(countL) + ' ' + unit.nameZ;
        if (countL == 1) text.pop_back();   // one has no "s"
    }
    return text;
}

SuperString CDFrameText(std::int64_t framesL) {
    constexpr std::int64_t kFrames_Second = 75;
    if (framesL < 0) framesL = 0;
    const std::int64_t wholeL = framesL / kFrames_Second;
    const double secondsF = static_cast<double>(framesL % kFrames_Second) / 75.0 + static_cast<double>(wholeL % 60);
    const std::string minutes = std::to_string(wholeL / 60);
    return std::string(minutes.size() < 2 ? "0" : "") + minutes + ":" + ShownNumber(secondsF, 3);
}
