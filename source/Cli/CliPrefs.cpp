#include "Cli/CliPrefs.h"

#include <charconv>
#include <cmath>

#include "Core/CPreferences.h"
#include "Core/JSONWriter.h"
#include "Core/PreferenceTable.h"
#include "Core/PropertyListDate.h"
#include "Core/UTF8.h"

namespace {

constexpr std::string_view kPrefs_Usage = "usage: prefs get KEY | prefs set KEY VALUE | prefs list";

/** The word as a value of `type`; nothing when it does not read as one whole. */
std::optional<CCFValue> ValueOf(const std::string& word, CFType type) {
    const char* const endP = word.data() + word.size();
    switch (type) {
        case CFType::kBool:
            if (word == "true" || word == "1" || word == "yes" || word == "on") return CCFValue(true);
            if (word == "false" || word == "0" || word == "no" || word == "off") return CCFValue(false);
            return std::nullopt;
        case CFType::kInteger: {
            std::int64_t valueL = 0;
            const auto result = std::from_chars(word.data(), endP, valueL);
            // The settings are 16 and 32 bits wide.
            if (result.ec != std::errc() || result.ptr != endP || valueL < INT32_MIN || valueL > INT32_MAX)
                return std::nullopt;
            return CCFValue(valueL);
        }
        case CFType::kFloat: {
            double valueF = 0;
            const auto result = std::from_chars(word.data(), endP, valueF);
            if (result.ec != std::errc() || result.ptr != endP || !std::isfinite(valueF)) return std::nullopt;
            return CCFValue(valueF);
        }
        case CFType::kString: {
            for (std::string_view left = word; !left.empty();) {
                const UTF8Char next = NextUTF8(left);
                if (!next.validB) return std::nullopt;
                left.remove_prefix(next.bytesL);
            }
            return CCFValue(SuperString(word));
        }
        case CFType::kDate:
            if (const auto date = ParsePropertyListDate(word)) return CCFValue(*date);
            return std::nullopt;
        default:
            return std::nullopt;   // no words for data, arrays and dictionaries
    }
}

void Print(const CliContext& context, std::string_view key, const CCFValue& value) {
    context.out << "{\"key\":" << JSONString(key) << ",\"type\":\"" << CFTypeName(value.Type()) << "\",\"value\":";
    // A setting whose text is "null" is a text here, not the bare word of the store's service.
    if (const SuperString* textP = value.String())
        context.out << JSONString(*textP);
    else
        context.out << CopyToJSON(value);
    context.out << "}\n";
}

int Get(const CliContext& context, const CPreferences& prefs, const std::string& key) {
    const auto value = prefs.Get(key);
    if (!value) return CliFail(context, fnfErr, "no such preference: " + key);
    Print(context, key, *value);
    return 0;
}

int Set(const CliContext& context, CPreferences& prefs, const std::string& key, const std::string& word) {
    const PrefRow* rowP = FindPreference(key);
    const auto old = prefs.Get(key);
    if (rowP == nullptr && !old) return CliFail(context, fnfErr, "no such preference: " + key);
    const CFType type = rowP != nullptr ? rowP->type : old->Type();
    const auto value = ValueOf(word, type);
    if (!value)
        return CliFail(context, paramErr, "\"" + word + "\" is no value of type " + std::string(CFTypeName(type)));
    prefs.Set(key, *value);
    if (const OSErr err = prefs.Save(); Failed(err)) return CliFailStep(context, err, "saving the preferences");
    Print(context, key, *value);
    return 0;
}

}   // namespace

int RunPrefs(const CliContext& context, std::span<const std::string> given) {
    std::vector<std::string> words;
    bool freeB = false;   // behind "--" a word may begin with "-"
    for (const std::string& word : given) {
        if (!freeB && word == "--") {
            freeB = true;
            continue;
        }
        if (!freeB && word.starts_with('-')) return CliUsage(context, kPrefs_Usage);
        words.push_back(word);
    }
    const std::size_t countL = words.size();
    const bool getB = countL == 2 && words[0] == "get";
    const bool setB = countL == 3 && words[0] == "set";
    const bool listB = countL == 1 && words[0] == "list";
    if (!getB && !setB && !listB) return CliUsage(context, kPrefs_Usage);

    const std::unique_ptr<CPreferences> prefsP = CliPreferences(context);
    CPreferences& prefs = *prefsP;
    if (getB) return Get(context, prefs, words[1]);
    if (setB) return Set(context, prefs, words[1], words[2]);
    for (const auto& [key, value] : prefs.Snapshot()) Print(context, key, value);
    return 0;
}
