#include "Core/CLog.h"
#include "Meta/CMeta.h"
#include "Meta/CMetaManager.h"
#include "Values/FileRefDictionary.h"

// CMeta as a dictionary of property data, and back.

namespace {

constexpr std::string_view kMix = "mix";

void LogIllegal(MetaKey key) {
    LogF("Illegal key type: %s (%u)", MetaKeyText(key).c_str(), static_cast<unsigned>(key));
}

std::optional<CCFValue> ToCF(const CMetaValue& value) {
    switch (value.Type()) {
        case ValType::ValType_STRING:
            return CCFValue(SuperString(value.Text()));
        case ValType::ValType_BOOL:
            if (value.Bool() == BoolValueType::kMix) return CCFValue(SuperString(kMix));
            return CCFValue(value.Bool() == BoolValueType::kTrue);
        case ValType::ValType_INTEGER:
            return CCFValue(value.Integer());
        case ValType::ValType_FLOAT:
            return CCFValue(value.Float());
        case ValType::ValType_DATE:
            return CCFValue(value.Date());
        case ValType::ValType_DICT:
            return CCFValue(value.Dictionary());
        case ValType::ValType_CFDATA:
            return CCFValue(value.Data());
        case ValType::ValType_SONGFILE: {
            CFileRef ref = value.SongFile().ref;
            CCFDictionary dictionary;
            if (Failed(WriteFileRef(ref, dictionary))) return std::nullopt;
            return CCFValue(dictionary);
        }
        case ValType::ValType_NONE:
            break;
    }
    return std::nullopt;
}

/** The four characters of a dictionary's key; nothing for another text. */
std::optional<MetaKey> KeyOf(std::string_view text) {
    if (text.size() != 4) return std::nullopt;
    std::uint32_t code = 0;
    for (const char c : text) code = code << 8 | static_cast<unsigned char>(c);
    return MetaKey{code};
}

ValType KindOf(CFType type) {
    switch (type) {
        case CFType::kBool:
            return ValType::ValType_BOOL;
        case CFType::kInteger:
        case CFType::kFloat:
            return type == CFType::kInteger ? ValType::ValType_INTEGER : ValType::ValType_FLOAT;
        case CFType::kString:
            return ValType::ValType_STRING;
        case CFType::kDate:
            return ValType::ValType_DATE;
        case CFType::kDictionary:
            return ValType::ValType_DICT;
        default:
            return ValType::ValType_NONE;
    }
}

}   // namespace

CCFDictionary CMeta::ToDictionary(FileSlots files, HiddenKeys hidden) const {
    std::vector<MetaEntry> entries = AllStored();   // a copy: a file reference may look at the disc
    std::erase_if(entries, [&](const MetaEntry& entry) {
        if (entry.value.Type() == ValType::ValType_SONGFILE) return files == FileSlots::kWithout;
        return hidden == HiddenKeys::kWithout && i_manager.GetTraits(entry.key).Has(kKeyFlag_Hidden);
    });
    return MakeDictionary(entries);
}

CCFDictionary CMeta::MakeDictionary(std::span<const MetaEntry> entries) {
    CCFDictionary dictionary;
    for (const MetaEntry& entry : entries) {
        if (auto value = ToCF(entry.value))
            dictionary.Set(MetaKeyText(entry.key), *std::move(value));
        else
            LogF("### Error a file reference has no form: %s", MetaKeyText(entry.key).c_str());
    }
    return dictionary;
}

void CMeta::FromDictionary(const CCFDictionary& dictionary) {
    for (const auto& [text, value] : dictionary) {
        const auto key = KeyOf(text);
        if (!key || !Takes(*key)) continue;   // or a word of the file around us: "Song ID", "Item Type"
        CDataTraits& traits = i_manager.GetTraits(*key);
        if (traits.Type() == ValType::ValType_NONE) (void)traits.Discover(KindOf(value.Type()));
        if (!TakeEntry(traits, value)) LogIllegal(*key);
    }
}

bool CMeta::Takes(MetaKey key) const {
    return key != CM_Key_NONE && key != CM_Key_SONG_ID && key != CM_Key_PLAYLIST_ID && key != CM_Key_SORT_INDEX;
}

/** False when the value has no form that the key can take. */
bool CMeta::TakeEntry(CDataTraits& traits, const CCFValue& value) {
    const MetaKey key = traits.Key();
    const SuperString* textP = value.String();
    const auto number = value.Number();
    const auto flag = value.Bool();
    switch (traits.Type()) {
        case ValType::ValType_STRING:
            if (textP != nullptr)
                SetString(key, *textP);
            else if (const auto integer = value.Integer())
                SetString(key, std::to_string(*integer));
            else
                return false;
            return true;
        case ValType::ValType_INTEGER:
            if (textP != nullptr)
                SetString(key, *textP);
            else if (const auto integer = value.Integer())
                SetInteger(key, *integer);
            else if (flag)
                SetInteger(key, *flag ? 1 : 0);
            else if (number && *number > -1e15 && *number < 1e15)
                SetInteger(key, static_cast<std::int64_t>(*number));
            else
                return false;
            return true;
        case ValType::ValType_FLOAT:
            if (textP != nullptr)
                SetString(key, *textP);
            else if (number)
                SetFloat(key, *number);
            else
                return false;
            return true;
        case ValType::ValType_BOOL:
            if (flag)
                SetBool(key, *flag);
            else if (const auto integer = value.Integer())
                SetBool(key, *integer != 0);
            else if (textP != nullptr && std::string_view(*textP) == kMix)
                SetBool(key, BoolValueType::kMix);
            else
                return false;
            return true;
        case ValType::ValType_DATE:
            if (const auto date = value.Date()) return SetDate(key, *date), true;
            return false;
        case ValType::ValType_DICT:
            if (value.Dictionary() != nullptr) return SetDict(key, *value.Dictionary()), true;
            return false;
        case ValType::ValType_SONGFILE: {
            CFileRef ref;
            if (value.Dictionary() == nullptr || Failed(ReadFileRef(*value.Dictionary(), ref))) return false;
            return TakeFile(key, ref), true;
        }
        default:
            return false;
    }
}

bool CMeta::TakeFile(MetaKey key, const CFileRef& ref) {
    return SetSongFile(key, {ref.IsEmpty() ? SDB_SongFileStatus_NONE : SDB_SongFileStatus_REFERENCE, ref});
}
