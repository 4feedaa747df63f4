#include "Values/PreferenceText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <filesystem>

#include "Core/UTF8.h"
#include "Files/CFileRef.h"
#include "Values/FileRefDictionary.h"
#include "Values/PreferenceTable.h"
#include "Values/PropertyListDate.h"

namespace {

bool IsUTF8(std::string_view text) {
    while (!text.empty()) {
        const UTF8Char next = NextUTF8(text);
        if (!next.validB) return false;
        text.remove_prefix(next.bytesL);
    }
    return true;
}

template <class Number_>
std::optional<Number_> WholeText(const std::string& text) {
    Number_ number{};
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size()) return std::nullopt;
    return number;
}

std::optional<CCFValue> BoolOf(const std::string& text) {
    for (const char* const onZ : {"true", "1", "yes", "on"})
        if (text == onZ) return CCFValue(true);
    for (const char* const offZ : {"false", "0", "no", "off"})
        if (text == offZ) return CCFValue(false);
    return std::nullopt;
}

std::string NumberText(double number) {
    std::array<char, 32> text{};
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr};
}

/** The text as a value of `type`; nothing when it does not read as one whole. */
std::optional<CCFValue> ValueOf(const std::string& text, CFType type) {
    switch (type) {
        case CFType::kBool:
            return BoolOf(text);
        case CFType::kInteger:   // the settings are 16 and 32 bits wide
            if (const auto number = WholeText<std::int32_t>(text)) return CCFValue(std::int64_t{*number});
            return std::nullopt;
        case CFType::kFloat:
            if (const auto number = WholeText<double>(text); number && std::isfinite(*number)) return CCFValue(*number);
            return std::nullopt;
        case CFType::kString:
            return IsUTF8(text) ? std::optional(CCFValue(SuperString(text))) : std::nullopt;
        case CFType::kDate:
            if (const auto date = ParsePropertyListDate(text)) return CCFValue(*date);
            return std::nullopt;
        default:
            return std::nullopt;   // no words for data, arrays and dictionaries
    }
}

/** "Music Library Location" and its kin: a reference to a folder that is there. */
OSErr FolderOf(const std::string& text, std::optional<CCFValue>& value, std::string& fault) {
    std::error_code problem;
    const std::filesystem::path folder = std::filesystem::absolute(text, problem).lexically_normal();
    if (text.empty() || problem || !std::filesystem::is_directory(folder, problem)) {
        fault = "“" + text + "” is no folder";
        return fnfErr;
    }
    CFileRef ref(folder);
    CCFDictionary dictionary;
    if (const OSErr err = WriteFileRef(ref, dictionary); Failed(err)) {
        fault = "“" + text + "” cannot be kept as a folder";
        return err;
    }
    value = CCFValue(std::move(dictionary));
    return noErr;
}

}   // namespace

OSErr ParsePreference(const CCFPrefDictionary& prefs, const std::string& key, const std::string& text,
                      std::optional<CCFValue>& value, std::string& fault) {
    const PrefRow* const rowP = FindPreference(key);
    const auto old = prefs.GetByName(key);
    if (rowP == nullptr && !old) {
        fault = "no such preference: " + key;
        return fnfErr;
    }
    if (rowP != nullptr && (rowP->rule == PrefRule::kFixed || key.ends_with("(do not change!)"))) {
        fault = key + " is the program's own and cannot be set";
        return paramErr;
    }
    if (rowP != nullptr && rowP->rule == PrefRule::kFolder) return FolderOf(text, value, fault);
    const CFType type = rowP != nullptr ? rowP->type : old->Type();
    auto read = ValueOf(text, type);
    if (!read) {
        fault = "\"" + text + "\" is no value of type " + std::string(CFTypeName(type));
        return paramErr;
    }
    if (const auto number = rowP != nullptr ? read->Number() : std::nullopt;
        number && (*number < rowP->least || *number > rowP->most)) {
        fault = key + " goes from " + NumberText(rowP->least) + " to " + NumberText(rowP->most);
        return paramErr;
    }
    value = std::move(read);
    return noErr;
}
