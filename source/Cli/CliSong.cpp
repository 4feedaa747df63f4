#include "Cli/CliSong.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "Cli/CliWords.h"
#include "Core/UTF8.h"
#include "Library/SongFileFacts.h"
#include "Meta/CMetaManager.h"
#include "Meta/FloatBounds.h"
#include "Values/JSONWriter.h"
#include "Values/PropertyListDate.h"

namespace {

constexpr std::string_view kCleared = "--";

/** As short as single precision allows: a step of the tempo that is kept as 1.1500000000000001 is 1.15. */
std::string FloatJSON(double value) {
    std::array<char, 32> digits{};
    const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), static_cast<float>(value));
    if (std::isfinite(static_cast<float>(value))) return {digits.data(), result.ptr};
    return CopyToJSON(CCFValue(value));   // of an old file
}

std::string ValueJSON(const CMetaValue& value, MetaKey key) {
    if (key == "SIZE"_key) return std::to_string(SizeOfStored(value.Integer()));
    switch (value.Type()) {
        case ValType::ValType_STRING:
            return JSONString(value.Text());
        case ValType::ValType_BOOL:
            return value.Bool() == BoolValueType::kMix    ? "\"mix\""
                   : value.Bool() == BoolValueType::kTrue ? "true"
                                                          : "false";
        case ValType::ValType_INTEGER:
            return std::to_string(value.Integer());
        case ValType::ValType_FLOAT:
            return FloatJSON(value.Float());
        case ValType::ValType_DATE:
            return CopyToJSON(value.Date());
        case ValType::ValType_SONGFILE:
            return JSONString(value.FilePath());
        case ValType::ValType_DICT:
            return CopyToJSON(value.Dictionary());
        case ValType::ValType_CFDATA:
            return CopyToJSON(value.Data());
        case ValType::ValType_NONE:
            break;
    }
    return "null";
}

/** In the order of the table; keys that only a file knew behind them. */
std::vector<MetaEntry> InOrder(CSong& song) {
    std::vector<MetaEntry> entries = song.Meta().AllStored();
    std::erase_if(entries, [](const MetaEntry& entry) { return entry.key == CM_Key_SONG_ID; });   // told first
    const auto& keys = MetaManager().Keys();
    const auto place = [&](const MetaEntry& entry) {
        return std::pair(std::ranges::find(keys, entry.key) - keys.begin(), entry.key);
    };
    std::ranges::sort(entries, {}, place);
    return entries;
}

bool IsUTF8(std::string_view text) {
    while (!text.empty()) {
        const UTF8Char next = NextUTF8(text);
        if (!next.validB) return false;
        text.remove_prefix(next.bytesL);
    }
    return true;
}

std::optional<MetaKey> KnownKey(const std::string& text) {
    const auto& keys = MetaManager().Keys();
    const auto it = std::ranges::find_if(keys, [&](MetaKey key) { return MetaKeyText(key) == text; });
    return it == keys.end() ? std::nullopt : std::optional(*it);
}

/** Why a person does not set this key of a song; empty when he may. */
std::string WhyNotSet(const CDataTraits& traits) {
    constexpr MetaKey kGiven[] = {CM_Key_SONG_ID, CM_Key_PLAYLIST_ID, CM_Key_SORT_INDEX, "piIx"_key, "stIx"_key};
    constexpr MetaKey kSingers[] = {"SNGR"_key, "nick"_key, "PSNT"_key, "sgKJ"_key, "SmsB"_key, "SmsN"_key,
                                    "SmsC"_key, "SmsR"_key, "SNmS"_key, "siID"_key, "sPLI"_key, "Spas"_key};
    constexpr MetaKey kStores[] = {"StrN"_key, "sURL"_key};
    const MetaKey key = traits.Key();
    if (std::ranges::find(kGiven, key) != std::end(kGiven)) return "is given by the library";
    if (std::ranges::find(kSingers, key) != std::end(kSingers)) return "belongs to singers, not to songs";
    if (std::ranges::find(kStores, key) != std::end(kStores)) return "belongs to stores, not to songs";
    if (key == "Msng"_key) return "is found out from the disc, not set";
    if (traits.Has(kKeyFlag_Hidden)) return "is kept by the program itself, not set by hand";
    return {};
}

/** "0.5 is not legal for Slip (from -3600 to 3600)". */
std::string IllegalWords(const std::string& text, const CDataTraits& traits) {
    const FloatBounds bounds = BoundsOf(traits.Key());
    std::string words = text + " is not legal for " + MetaKeyText(traits.Key());
    if (traits.Type() == ValType::ValType_FLOAT)
        words += " (from " + FloatJSON(bounds.least) + " to " + FloatJSON(bounds.most) + ")";
    return words;
}

/** False when the text is no value of the key's kind; a song's file is told by its path. */
bool SetByKind(CSong& song, const LibraryPlaces& places, const CDataTraits& traits, const std::string& text,
               std::string& fault) {
    const MetaKey key = traits.Key();
    CMeta& meta = song.Meta();
    switch (traits.Type()) {
        case ValType::ValType_STRING:
            if (!IsUTF8(text)) return false;
            meta.SetString(key, text);
            return true;
        case ValType::ValType_BOOL:
            if (text != "true" && text != "false") return false;
            meta.SetBool(key, text == "true");
            return true;
        case ValType::ValType_INTEGER: {
            // A trim mark as a column shows it, "0:05.5", or as a file has it, in 300ths.
            const bool timeB = (key == "Tsrt"_key || key == "Tend"_key) && text.find(':') != std::string::npos;
            const auto number =
                ReadNumber<std::int32_t>(timeB ? traits.ToDisplayFromString(SuperString(text)).UTF8() : text);
            if (!number) return false;
            if (traits.Usable(*number) == *number)
                meta.SetInteger(key, *number);
            else
                fault = IllegalWords(text, traits);
            return true;
        }
        case ValType::ValType_FLOAT: {
            const auto number = ReadNumber<double>(text);
            if (!number || !std::isfinite(*number)) return false;
            if (BoundsOf(key).Holds(*number))
                meta.SetFloat(key, *number);
            else
                fault = IllegalWords(text, traits);
            return true;
        }
        case ValType::ValType_DATE: {
            const auto date = ParsePropertyListDate(text);
            if (date) meta.SetDate(key, *date);
            return date.has_value();
        }
        case ValType::ValType_SONGFILE: {
            const CFileRef::Path path = std::filesystem::absolute(text).lexically_normal();
            const CSongStatus status(places.musicFolder, places.cacheFolder);
            meta.SetSongFile(key, {status.Of(*SongFileOfKey(key), path), CFileRef(path)});
            return true;
        }
        default:
            fault = MetaKeyText(key) + " cannot be set from a text";
            return true;
    }
}

}   // namespace

std::string SongJSON(CSong& song) {
    std::string json = "{\"soID\":" + std::to_string(Number(song.GetSongID()));
    for (const MetaEntry& entry : InOrder(song)) {
        json += ',';
        AppendJSONString(MetaKeyText(entry.key), json);
        json += ':' + ValueJSON(entry.value, entry.key);
    }
    return json + "}";
}

std::string SongWords(CSong& song) {
    std::string words = "Song ID (soID): " + std::to_string(Number(song.GetSongID())) + "\n";
    for (const MetaEntry& entry : InOrder(song)) {
        const CDataTraits& traits = MetaManager().GetTraits(entry.key);
        std::string text = traits.Display(entry.value).UTF8();
        std::ranges::replace(text, '\n', ' ');
        words += traits.Title().UTF8() + " (" + MetaKeyText(entry.key) + "): " + text + "\n";
    }
    return words + "\n";
}

std::string SongLine(CSong& song) {
    std::string line = std::to_string(Number(song.GetSongID())) + "\t" + song.Meta().GetString("arts"_key).UTF8() +
                       "\t" + song.Name().UTF8();
    if (const CMetaValue length = song.Meta().Stored("drtn"_key))
        line += "\t" + MetaManager().GetTraits("drtn"_key).Display(length).UTF8();
    if (song.Meta().Stored("Msng"_key).Bool() == BoolValueType::kTrue) line += "\tmissing";
    std::ranges::replace(line, '\n', ' ');
    return line;
}

OSErr SetSongValue(CSong& song, const LibraryPlaces& places, const std::string& keyText, const std::string& text,
                   std::string& fault) {
    const auto key = KnownKey(keyText);
    if (!key) {
        fault = "no such key: " + keyText;
        return fnfErr;
    }
    const CDataTraits& traits = MetaManager().GetTraits(*key);
    if (const std::string why = WhyNotSet(traits); !why.empty()) {
        fault = keyText + " " + why;
        return paramErr;
    }
    if (text.empty() || text == kCleared) {
        song.Meta().RemoveValue(*key);
        return noErr;
    }
    if (!SetByKind(song, places, traits, text, fault)) fault = "\"" + text + "\" is no value for " + keyText;
    return fault.empty() ? noErr : paramErr;
}
