#pragma once
#include "Meta/CDataTraits.h"

/** The keys whose value is chosen from a menu. A menu's items are numbered from 1; index 0 is "nothing chosen". Numbers
    that no menu has are mapped without overflow, to something that has no item. */

/** The channel that carries the lead vocal: 0 none, 1 left, 2 right, 3 both (the difference is played). */
class CDataTraits_VocalChannelPop final : public CDataTraits {
public:
    using CDataTraits::CDataTraits;
    [[nodiscard]] std::int16_t GetMenuID() const override { return 212; }
    [[nodiscard]] long ValueToMenuIndex(long value) const override;
    [[nodiscard]] long MenuIndexToValue(long index) const override;
    [[nodiscard]] SuperString GetMenuItemText(long value) const override;
    [[nodiscard]] bool IsLegal(long value) const override { return value > -1; }
    [[nodiscard]] long Legalize(long value) const override;
};

/** Semitones, -12 to 12, from the highest down. 255 says that none is set, which is 0 to those who play. */
class CDataTraits_PitchPop final : public CDataTraits {
public:
    static constexpr long kNone = 255, kMost = 12;
    using CDataTraits::CDataTraits;
    [[nodiscard]] long ValueToMenuIndex(long value) const override;
    [[nodiscard]] long MenuIndexToValue(long index) const override;
    [[nodiscard]] SuperString GetMenuItemText(long value) const override;
    [[nodiscard]] bool IsLegal(long value) const override { return value != kNone; }
    [[nodiscard]] long Legalize(long value) const override;
};

/** A colour, 0 for none, 1 to 7; item 2 of its menu is the line below "None". */
class CDataTraits_LabelPop final : public CDataTraits {
public:
    static constexpr long kColors = 8;
    using CDataTraits::CDataTraits;
    [[nodiscard]] long ValueToMenuIndex(long value) const override;
    [[nodiscard]] long MenuIndexToValue(long index) const override;
    [[nodiscard]] SuperString GetMenuItemText(long value) const override;
    [[nodiscard]] bool IsLegal(long value) const override { return value >= 0 && value < kColors; }
    [[nodiscard]] long Legalize(long value) const override { return IsLegal(value) ? value : 0; }
};

/** The channels of a CD+G that are shown, a bit each: channel 0 always, and another one. */
class CDataTraits_GraphicChannelsPop final : public CDataTraits {
public:
    static constexpr long kMostChannel = 15;
    using CDataTraits::CDataTraits;
    [[nodiscard]] long ValueToMenuIndex(long value) const override;
    [[nodiscard]] long MenuIndexToValue(long index) const override;
    [[nodiscard]] SuperString GetMenuItemText(long value) const override;
    [[nodiscard]] bool IsLegal(long value) const override { return value > 1; }
    [[nodiscard]] long Legalize(long value) const override { return IsLegal(value) ? value : 0; }
};

/** A row of a list of carriers or regions, whose texts are given at start. */
class CDataTraits_Singer_SMS : public CDataTraits {
public:
    using CDataTraits::CDataTraits;
    [[nodiscard]] long ValueToMenuIndex(long value) const override;
    [[nodiscard]] long MenuIndexToValue(long index) const override;
    [[nodiscard]] bool IsLegal(long value) const override { return value >= 0; }
    [[nodiscard]] long Legalize(long value) const override { return IsLegal(value) ? value : 0; }
};
class CDataTraits_Singer_SMS_Carrier final : public CDataTraits_Singer_SMS {
    using CDataTraits_Singer_SMS::CDataTraits_Singer_SMS;
};
class CDataTraits_Singer_SMS_Region final : public CDataTraits_Singer_SMS {
    using CDataTraits_Singer_SMS::CDataTraits_Singer_SMS;
};
