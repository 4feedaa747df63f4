#include "Meta/CDataTraits.h"

#include <algorithm>
#include <array>
#include <limits>

#include "Core/Assertions.h"
#include "Core/NumberForms.h"
#include "Values/DateForms.h"

namespace {

SuperString TitleOf(const MetaKeyRow& row, const TraitsSetup& setup) {
    const std::string_view title = row.titleZ;
    const bool forPeopleB = !title.empty() && !title.starts_with("* ");
    return forPeopleB && setup.translate != nullptr ? setup.translate(row.titleZ) : SuperString(title);
}

unsigned FlagsOf(const MetaKeyRow& row, const TraitsSetup& setup) {
    if ((row.extras & kRow_IfSingerID) == 0) return row.flags;
    return row.flags | (setup.showSingerIDB ? kKeyFlag_Column : kKeyFlag_Hidden);
}

CMetaValue DefaultOf(const MetaKeyRow& row) {
    switch (row.type) {
        case ValType::ValType_STRING:
            return CMetaValue(CMetaText::Of(row.defaultTextZ));
        case ValType::ValType_BOOL:
            return CMetaValue(BoolValueType::kFalse);
        case ValType::ValType_INTEGER:
            return CMetaValue(row.defaultL);
        case ValType::ValType_FLOAT:
            return CMetaValue(row.defaultF);
        case ValType::ValType_SONGFILE:
            return CMetaValue::File(SDB_SongFileStatus_NONE, {});
        case ValType::ValType_DICT:
            return CMetaValue(CCFDictionary());
        default:
            return {};
    }
}

constexpr std::array<const char*, 3> kBoolWords = {"false", "true", "mix"};

}   // namespace

CDataTraits::CDataTraits(const MetaKeyRow& row, std::uint16_t indexS, const TraitsSetup& setup)
    : i_key(row.key),
      i_indexS(indexS),
      i_type(row.type),
      i_property(row.property),
      i_minS(row.minS),
      i_maxS(row.maxS),
      i_initialS(row.initialS == 0 ? row.minS : row.initialS),
      i_justification(row.justification),
      i_flags(FlagsOf(row, setup)),
      i_sharedB((row.extras & kRow_Shared) != 0),
      i_title(TitleOf(row, setup)),
      i_defaultText(row.defaultTextZ),
      i_defaultL(row.defaultL),
      i_defaultF(row.defaultF),
      i_default(DefaultOf(row)) {
    constexpr std::int16_t kLargerBy = 4;
    if ((row.extras & kRow_LargeTitle) != 0) i_titleFontS = static_cast<std::int16_t>(setup.smallFontS + kLargerBy);
    if ((row.extras & kRow_RelativeDate) != 0) i_columnFlags |= kColumn_RelativeDate;
    if ((row.extras & kRow_Mutable) != 0) i_columnFlags |= kColumn_Mutable;
    if (Has(kKeyFlag_Editable)) {   // an editable value is drawn by the program, whatever the row says
        i_columnFlags |= kColumn_Mutable;
        i_property = kProperty_Custom;
    }
}

SuperString CDataTraits::GetMenuItemText(long value) const {
    if (!Has(kKeyFlag_Popup)) return {};
    const long index = ValueToMenuIndex(value);
    const auto countL = static_cast<long>(i_menuTexts.size());
    return index >= 1 && index <= countL ? i_menuTexts[static_cast<std::size_t>(index - 1)] : SuperString();
}

bool CDataTraits::IsLegal(long) const {
    (void)AssertWords(Type() == ValType::ValType_INTEGER, "i_type == CData::ValType_INTEGER");
    return true;
}
long CDataTraits::Legalize(long value) const {
    (void)AssertWords(Type() == ValType::ValType_INTEGER, "i_type == CData::ValType_INTEGER");
    return value;
}
SuperString CDataTraits::IntegerToDisplay(long value) const { return std::to_string(value); }

const CMetaValue& CDataTraits::DefaultValue() const {
    (void)AssertWords(i_key != "xxxx"_key, "key != 'xxxx'");
    return i_default;
}

bool CDataTraits::IsDefault(const CMetaValue& value) const {
    if (!value) return true;
    // A place with the status "none" holds no file, whatever its path.
    if (value.Type() == ValType::ValType_SONGFILE) return value.FileStatus() == SDB_SongFileStatus_NONE;
    return value == DefaultValue();
}

std::int32_t CDataTraits::Usable(std::int64_t value) const {
    using Limits = std::numeric_limits<std::int32_t>;
    const long legal = Legalize(static_cast<long>(std::clamp<std::int64_t>(value, Limits::min(), Limits::max())));
    return IsLegal(legal) ? static_cast<std::int32_t>(legal) : i_defaultL;
}

SuperString CDataTraits::Display(const CMetaValue& value) const {
    switch (value.Type()) {
        case ValType::ValType_STRING:
            return value.Text();
        case ValType::ValType_BOOL:
            return kBoolWords[static_cast<std::size_t>(value.Bool()) % kBoolWords.size()];
        case ValType::ValType_INTEGER:
            return Has(kKeyFlag_Popup) ? GetMenuItemText(value.Integer()) : IntegerToDisplay(value.Integer());
        case ValType::ValType_FLOAT:
            return ShownNumber(value.Float(), 2);
        case ValType::ValType_DATE:
            return PrintDate(value.Date(), DateForm::kDay);
        case ValType::ValType_SONGFILE:
            return value.FilePath();
        default:
            return Type() == ValType::ValType_FLOAT && i_defaultF != 0 ? SuperString(ShownNumber(i_defaultF, 2))
                                                                       : i_defaultText;
    }
}

CMetaValue CDataTraits::TextValue(std::string_view text) const {
    return CMetaValue(i_sharedB ? CMetaText::Interned(text) : CMetaText::Of(text));
}

bool CDataTraits::Discover(ValType type) noexcept {
    if (i_key == CM_Key_NONE) return false;
    ValType expected = ValType::ValType_NONE;
    return i_type.compare_exchange_strong(expected, type, std::memory_order_relaxed) || expected == type;
}
