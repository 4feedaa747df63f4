#include <charconv>
#include <cmath>
#include <limits>

#include "Core/Assertions.h"
#include "Core/NumberForms.h"
#include "Meta/CMeta.h"
#include "Meta/CMetaManager.h"
#include "Meta/FloatBounds.h"
#include "Meta/TempoSteps.h"
#include "Meta/TitleText.h"

// Reading and writing of CMeta by the kinds of values.

namespace {

constexpr std::string_view kMixedText = "--";   // what the browser shows for a selection of unlike rows
constexpr MetaKey kKey_Artist = "arts"_key, kKey_Tempo = "TMPO"_key;

/** The number at the front of `text`, as in "3/12" or "1999 (remastered)"; nothing when there is none. */
std::optional<std::int64_t> LeadingNumber(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(" \t\r\n");
    if (begin == std::string_view::npos) return std::nullopt;
    text.remove_prefix(begin);
    if (text.starts_with('+')) text.remove_prefix(1);   // from_chars knows only the minus
    std::int64_t value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec != std::errc()) return std::nullopt;
    return value;
}

}   // namespace

// ---- Reading ----

SuperString CMeta::GetString(MetaKey key) { return GetDisplayString(key); }

SuperString CMeta::GetDisplayString(MetaKey key) { return i_manager.GetTraits(key).Display(Value(key)); }

std::int32_t CMeta::GetInteger(MetaKey key) {
    const CDataTraits& traits = i_manager.GetTraits(key);
    const CMetaValue value = Value(key);
    switch (value.Type()) {
        case ValType::ValType_INTEGER:
            return traits.Usable(value.Integer());
        case ValType::ValType_BOOL:
            return static_cast<std::int32_t>(value.Bool());
        case ValType::ValType_NONE:
            return traits.GetDefaultInteger();
        default:
            (void)AssertWords(false, "GetInteger of a key without a number");
            return traits.GetDefaultInteger();
    }
}

double CMeta::GetFloat(MetaKey key) {
    const CMetaValue value = Value(key);
    if (value.Type() == ValType::ValType_INTEGER) return value.Integer();
    return value ? value.Float() : i_manager.GetTraits(key).GetDefaultFloat();
}

BoolValueType CMeta::GetBool(MetaKey key) { return Value(key).Bool(); }

std::optional<CFDate> CMeta::GetDate(MetaKey key) {
    const CMetaValue value = Value(key);
    if (value.Type() != ValType::ValType_DATE) return std::nullopt;
    return value.Date();
}

CCFDictionary CMeta::GetDict(MetaKey key) { return Value(key).Dictionary(); }
CFData CMeta::GetByteBlock(MetaKey key) { return Value(key).Data(); }
CMetaSongFile CMeta::GetSongFile(MetaKey key) { return Value(key).SongFile(); }

// ---- Writing ----

bool CMeta::MaySet(MetaKey key) const {
    CheckSetter(key);
    return key != CM_Key_NONE && IsEnabled();
}

bool CMeta::SetString(MetaKey key, std::string_view text) {
    if (!MaySet(key)) return false;
    CDataTraits& traits = i_manager.GetTraits(key);
    if (text == kMixedText) text = {};
    switch (traits.Type()) {
        case ValType::ValType_STRING:
            break;
        case ValType::ValType_INTEGER: {
            if (text.empty()) return RemoveValue(key);
            const auto number = LeadingNumber(text);
            return number && SetInteger(key, *number);
        }
        case ValType::ValType_FLOAT: {
            if (text.empty()) return RemoveValue(key);
            const auto number = ReadPersonsNumber(text);
            return number && SetFloat(key, *number);
        }
        default:
            (void)AssertWords(false, "SetString of a key without a text");
            return false;
    }
    std::string changed;
    if (traits.Has(kKeyFlag_NormalizeText)) {
        changed = NormalizedTitle(text);
        text = changed;
    }
    if (key == kKey_Artist && i_manager.MovesArticles() && !i_manager.IsLoading()) {
        changed = ArticleAtEnd(text);
        text = changed;
    }
    if (text.empty() || text == kMixedText) return RemoveValue(key);
    return SetValue(key, traits.TextValue(text));
}

bool CMeta::SetInteger(MetaKey key, std::int64_t value) {
    if (!MaySet(key)) return false;
    CDataTraits& traits = i_manager.GetTraits(key);
    switch (traits.Type()) {
        case ValType::ValType_FLOAT:
            return SetFloat(key, static_cast<double>(value));
        case ValType::ValType_BOOL:
            return SetBool(key, value != 0);
        case ValType::ValType_NONE:
            if (!traits.Discover(ValType::ValType_INTEGER)) return false;
            [[fallthrough]];
        case ValType::ValType_INTEGER:
            return SetValue(key, CMetaValue(traits.Usable(value)));
        default:
            (void)AssertWords(false, "SetInteger of a key without a number");
            return false;
    }
}

bool CMeta::SetFloat(MetaKey key, double value) {
    if (!MaySet(key) || !std::isfinite(value)) return false;
    if (key == kKey_Tempo)
        value = QuantizedTempo(static_cast<float>(value));   // the nearest that there is
    else if (!BoundsOf(key).Holds(value))
        return false;
    return SetValue(key, CMetaValue(value));
}

bool CMeta::SetBool(MetaKey key, BoolValueType value) { return MaySet(key) && SetValue(key, CMetaValue(value)); }

bool CMeta::SetDate(MetaKey key, CFDate value) {
    return MaySet(key) && std::isfinite(value.absoluteT) && SetValue(key, CMetaValue(value));
}

bool CMeta::SetDict(MetaKey key, const CCFDictionary& value) { return MaySet(key) && SetValue(key, CMetaValue(value)); }

bool CMeta::SetByteBlock(MetaKey key, const CFData& value) { return MaySet(key) && SetValue(key, CMetaValue(value)); }

bool CMeta::SetSongFile(MetaKey key, const CMetaSongFile& value) {
    return MaySet(key) && SetValue(key, CMetaValue(value));
}

// ---- Tags ----

bool CMeta::GetBasics(MetaTags& tags) {
    tags = {GetString("name"_key), GetString("arts"_key),  GetString("albm"_key),
            GetString("genr"_key), GetString("cmmt"_key),  GetString("rdtn"_key),
            GetString("cprt"_key), GetInteger("trak"_key), GetInteger("cryr"_key)};
    const bool emptyB = tags.name.Empty() && tags.artist.Empty() && tags.album.Empty() && tags.genre.Empty() &&
                        tags.comment.Empty() && tags.rendition.Empty() && tags.copyright.Empty();
    return !emptyB || tags.trackL != 0 || tags.yearL != 0;
}

void CMeta::SetBasics(const MetaTags& tags) {
    SetString("soft"_key, i_manager.Software());
    SetString("name"_key, tags.name);
    SetString("arts"_key, tags.artist);
    SetString("albm"_key, tags.album);
    SetString("genr"_key, tags.genre);
    SetString("cmmt"_key, tags.comment);
    SetString("rdtn"_key, tags.rendition);
    SetString("cprt"_key, tags.copyright);
    if (tags.trackL != 0) SetInteger("trak"_key, tags.trackL);
    if (tags.yearL != 0) SetInteger("cryr"_key, tags.yearL);
}
