#include "Meta/CDataTraits_Menus.h"

#include <algorithm>
#include <array>
#include <limits>

namespace {

/** value + by, at the ends of the range rather than around them. */
constexpr long Plus(long value, long by) {
    using Limits = std::numeric_limits<long>;
    if (by > 0 && value > Limits::max() - by) return Limits::max();
    if (by < 0 && value < Limits::min() - by) return Limits::min();
    return value + by;
}
/** from - value, likewise. */
constexpr long Minus(long from, long value) {
    return value < from - std::numeric_limits<long>::max() ? std::numeric_limits<long>::max() : from - value;
}

constexpr std::array<const char*, 4> kVocalChannels = {"None", "Left", "Right", "Both"};
constexpr std::array<const char*, 8> kLabels = {"None", "Red", "Orange", "Yellow", "Green", "Blue", "Purple", "Gray"};
static_assert(kLabels.size() == CDataTraits_LabelPop::kColors);

}   // namespace

long CDataTraits_VocalChannelPop::ValueToMenuIndex(long value) const { return Plus(value, 1); }
long CDataTraits_VocalChannelPop::MenuIndexToValue(long index) const { return Plus(index, -1); }
SuperString CDataTraits_VocalChannelPop::GetMenuItemText(long value) const {
    const bool itemB = value >= 0 && value < static_cast<long>(kVocalChannels.size());
    return itemB ? kVocalChannels[static_cast<std::size_t>(value)] : "";
}
long CDataTraits_VocalChannelPop::Legalize(long value) const { return value == -1 || value == 255 ? 0 : value; }

long CDataTraits_PitchPop::ValueToMenuIndex(long value) const { return Minus(kMost + 1, value); }
long CDataTraits_PitchPop::MenuIndexToValue(long index) const { return index == 0 ? kNone : Minus(kMost + 1, index); }
SuperString CDataTraits_PitchPop::GetMenuItemText(long value) const {
    if (value == kNone) return "None";
    if (value < -kMost || value > kMost) return "";   // the menu ends there
    return (value > 0 ? "+" : "") + std::to_string(value);
}
long CDataTraits_PitchPop::Legalize(long value) const {
    return value == kNone ? 0 : std::clamp(value, -kMost, kMost);   // "none" is no pitch of 7
}

long CDataTraits_LabelPop::ValueToMenuIndex(long value) const { return value == 0 ? 1 : Plus(value, 2); }
long CDataTraits_LabelPop::MenuIndexToValue(long index) const { return index == 1 ? 0 : Plus(index, -2); }
SuperString CDataTraits_LabelPop::GetMenuItemText(long value) const {
    return IsLegal(value) ? kLabels[static_cast<std::size_t>(value)] : "";
}

long CDataTraits_GraphicChannelsPop::ValueToMenuIndex(long value) const {
    long index = 0;
    for (; value > 1; value >>= 1) ++index;
    return index;
}
long CDataTraits_GraphicChannelsPop::MenuIndexToValue(long index) const {
    return 1L << std::clamp(index, 0L, kMostChannel) | 1L;
}
SuperString CDataTraits_GraphicChannelsPop::GetMenuItemText(long value) const {
    return IsLegal(value) ? "Channel " + std::to_string(ValueToMenuIndex(value)) : std::string();
}

long CDataTraits_Singer_SMS::ValueToMenuIndex(long value) const { return Plus(value, 1); }
long CDataTraits_Singer_SMS::MenuIndexToValue(long index) const { return Plus(index, -1); }
