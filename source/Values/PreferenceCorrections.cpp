#include "Values/PreferenceCorrections.h"

#include "Core/CLog.h"
#include "Values/PreferenceTable.h"

namespace {

constexpr std::string_view kTemplate = "Messenger Rotation Template";

void DropWrongTypes(CCFDictionary& content) {
    for (const PrefRow& row : PreferenceTable()) {
        const CCFValue* valueP = content.Find(row.key);
        if (valueP == nullptr || valueP->Type() == row.type) continue;
        const auto fitting = AsType(*valueP, row.type);
        if (fitting) {
            content.Set(row.key, *fitting);
            continue;
        }
        Log("### Error preference \"" + std::string(row.key) + "\" is of type " +
            std::string(CFTypeName(valueP->Type())) + " and not " + std::string(CFTypeName(row.type)) +
            ", its default is taken");
        content.Remove(row.key);
    }
}

/** The old default of half a minute logged singers out while they read the list. */
void ResetServerTimeout(CCFDictionary& content) {
    constexpr std::string_view kMark = "Server Timeout reset";
    if (!content.GetBool(kMark) && content.GetInteger("Timeout in seconds") == 30)
        content.Set("Timeout in seconds", 120);
    content.Set(kMark, true);
}

void ResetIgnoredErrors(CCFDictionary& content) {
    constexpr std::string_view kMark = "Reset Ignore CD+G Ripping errors";
    if (!content.Has(kMark)) content.Set("Ignore CD+G Ripping errors (You'll just get black video)", false);
    content.Set(kMark, true);
}

/** This mark works the other way round: it is on until the correction ran. */
void ResetExpander(CCFDictionary& content) {
    constexpr std::string_view kMark = "reset expander pref to OFF on startup";
    if (content.GetBool(kMark, true)) content.Set("Use Stuffit Expander as a last resort to unzip files", false);
    content.Set(kMark, false);
}

void ResetUpdateWhileTyping(CCFDictionary& content) {
    constexpr std::string_view kMark = "Update while typing has been reset";
    if (!content.GetBool(kMark)) content.Set("Update while typing", true);
    content.Set(kMark, true);
}

void StoreDefaults(CCFDictionary& content) {
    for (const PrefRow& row : PreferenceTable())
        if (row.rule == PrefRule::kFixed || (row.rule == PrefRule::kStored && !content.Has(row.key)))
            content.Set(row.key, row.Default(content));
}

void RepairTemplate(CCFDictionary& content) {
    const SuperString text = content.GetString(kTemplate);
    if (text.UTF8().find("[nick]") != std::string::npos) return;
    content.Set(kTemplate, SuperString(text.UTF8() + (text.Empty() ? "[nick]" : ": [nick]")));
}

}   // namespace

void CorrectPreferences(CCFDictionary& content) {
    DropWrongTypes(content);
    ResetServerTimeout(content);
    ResetIgnoredErrors(content);
    ResetExpander(content);
    ResetUpdateWhileTyping(content);
    StoreDefaults(content);
    RepairTemplate(content);
}
