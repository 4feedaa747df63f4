#pragma once
#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

#include "Core/SuperString.h"
#include "Meta/CMetaValue.h"
#include "Meta/MetaKeyTable.h"

/** What is known only when the traits are made. */
struct TraitsSetup {
    bool showSingerIDB = false;     // the preference "Show Singer ID"
    std::int16_t smallFontS = 11;   // system small font, in points
    /** The title in the user's language; null leaves the English one. */
    SuperString (*translate)(const char* englishZ) = nullptr;
};

/** All about one key but the values: their kind, column, default, check and look.
    Threads  any: nothing changes once made, but for the kind of an unknown key, which may become known, and the menu
             texts, which are set at start.
    Owner    CMetaManager, until the process ends. */
class CDataTraits {
public:
    CDataTraits(const MetaKeyRow& row, std::uint16_t indexS, const TraitsSetup& setup);
    virtual ~CDataTraits() = default;
    CDataTraits(const CDataTraits&) = delete;
    CDataTraits& operator=(const CDataTraits&) = delete;

    [[nodiscard]] MetaKey Key() const noexcept { return i_key; }
    /** Its number in the manager, in the order of making. */
    [[nodiscard]] std::uint16_t Index() const noexcept { return i_indexS; }
    [[nodiscard]] ValType Type() const noexcept { return i_type.load(std::memory_order_relaxed); }
    [[nodiscard]] unsigned Flags() const noexcept { return i_flags; }
    [[nodiscard]] bool Has(unsigned keyFlag) const noexcept { return (i_flags & keyFlag) != 0; }
    [[nodiscard]] const SuperString& Title() const noexcept { return i_title; }
    [[nodiscard]] OSType PropertyType() const noexcept { return i_property; }
    [[nodiscard]] std::uint32_t ColumnFlags() const noexcept { return i_columnFlags; }
    [[nodiscard]] std::int16_t MinWidth() const noexcept { return i_minS; }
    [[nodiscard]] std::int16_t MaxWidth() const noexcept { return i_maxS; }
    [[nodiscard]] std::int16_t InitialWidth() const noexcept { return i_initialS; }
    [[nodiscard]] Justification TextJustification() const noexcept { return i_justification; }
    /** Points; 0 is the usual size. */
    [[nodiscard]] std::int16_t TitleFontSize() const noexcept { return i_titleFontS; }
    /** Equal texts of this key are kept once. */

    /** The menu's number, 0 when there is none. */
    [[nodiscard]] virtual std::int16_t GetMenuID() const { return 0; }
    [[nodiscard]] virtual long ValueToMenuIndex(long value) const { return value; }
    [[nodiscard]] virtual long MenuIndexToValue(long index) const { return index; }
    /** The text of the item for `value`; empty when it has none. */
    [[nodiscard]] virtual SuperString GetMenuItemText(long value) const;
    /** For integer keys. */
    [[nodiscard]] virtual bool IsLegal(long value) const;
    [[nodiscard]] virtual long Legalize(long value) const;
    /** What a person typed, in the form that the setters parse. */
    [[nodiscard]] virtual SuperString ToDisplayFromString(const SuperString& text) const { return text; }
    [[nodiscard]] std::int32_t GetDefaultInteger() const noexcept { return i_defaultL; }
    [[nodiscard]] const SuperString& GetDefaultText() const noexcept { return i_defaultText; }
    [[nodiscard]] double GetDefaultFloat() const noexcept { return i_defaultF; }
    [[nodiscard]] virtual SuperString IntegerToDisplay(long value) const;

    /** The default of the key's kind; none for dates and unknown keys, which have no default. */
    [[nodiscard]] const CMetaValue& DefaultValue() const;
    /** True for what is never stored: no value, and the default. */
    [[nodiscard]] bool IsDefault(const CMetaValue& value) const;
    /** Legalize, and the default for what even then is not legal: what the setters store and the getters answer. */
    [[nodiscard]] std::int32_t Usable(std::int64_t value) const;
    /** Any value as people read it. An absent one shows the default text. */
    [[nodiscard]] SuperString Display(const CMetaValue& value) const;
    /** `text` as a value of this key: shared when such texts are. */
    [[nodiscard]] CMetaValue TextValue(std::string_view text) const;

    /** The texts of a menu whose items come from elsewhere, item 1 first. At start, before other threads. */
    void SetMenuTexts(std::vector<SuperString> texts) { i_menuTexts = std::move(texts); }
    /** An unknown key gets the kind of the first value seen of it; false when it has another kind already. */
    bool Discover(ValType type) noexcept;

protected:
    [[nodiscard]] const std::vector<SuperString>& MenuTexts() const noexcept { return i_menuTexts; }

private:
    const MetaKey i_key;
    const std::uint16_t i_indexS;
    std::atomic<ValType> i_type;
    OSType i_property;
    std::uint32_t i_columnFlags = kColumn_Usual;
    std::int16_t i_minS, i_maxS, i_initialS, i_titleFontS = 0;
    Justification i_justification;
    unsigned i_flags;
    bool i_sharedB;
    SuperString i_title, i_defaultText;
    std::int32_t i_defaultL;
    double i_defaultF;
    CMetaValue i_default;
    std::vector<SuperString> i_menuTexts;
};

/** The traits of a row, as the class that the row names. */
[[nodiscard]] std::unique_ptr<CDataTraits> MakeTraits(const MetaKeyRow& row, std::uint16_t indexS,
                                                      const TraitsSetup& setup);
