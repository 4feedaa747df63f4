#include "Cli/CliPrefs.h"

#include <cerrno>
#include <filesystem>

#include "App/PreferenceRequest.h"
#include "Cli/CliCommand.h"
#include "Platform/CFolders.h"
#include "Platform/CSecondInstance.h"
#include "Values/CPreferences.h"
#include "Values/JSONWriter.h"
#include "Values/PreferenceText.h"
#include "Values/PropertyList.h"

namespace {

void Print(const CliContext& context, const std::string& key, const CCFValue& value) {
    context.out << "{\"key\":" << JSONString(key) << ",\"type\":\"" << CFTypeName(value.Type()) << "\",\"value\":";
    // A setting whose text is "null" is a text here, not the bare word of the store's service.
    if (const SuperString* textP = value.String())
        context.out << JSONString(*textP);
    else
        context.out << CopyToJSON(value);
    context.out << "}\n";
}

/** ENOENT: no host runs on these settings. */
int AskHost(const CliContext& context, const std::string& request, PreferenceAnswer& answer) {
    if (!context.root.empty()) CFolders::SetRoot(context.root);
    std::string text;
    const int errnoL = CSecondInstance(CFolders::Runtime() / "vopla", CFolders::Root()).Ask(request, text);
    if (errnoL == 0) answer = ReadPreferenceAnswer(text);
    return errnoL;
}

/** Of the host that runs, else of the file. */
CCFDictionary SettingsNow(const CliContext& context) {
    PreferenceAnswer answer;
    CCFValue settings(false);
    if (AskHost(context, PreferenceRequest_All(), answer) == 0 && !Failed(answer.err) &&
        !Failed(ReadPropertyList(std::as_bytes(std::span(answer.text)), settings)) && settings.Dictionary() != nullptr)
        return *settings.Dictionary();
    return CliPreferences(context)->Snapshot();
}

/** What the host shall read is told whole: it runs in another folder. */
std::string WholeText(const CCFValue& value, const std::string& text) {
    return value.Dictionary() == nullptr ? text : std::filesystem::absolute(text).string();
}

}   // namespace

int GetPreference(const CliCall& call) {
    const std::string& key = call.words.arguments[0];
    const CCFDictionary settings = SettingsNow(call.context);
    const CCFValue* const valueP = settings.Find(key);
    if (valueP == nullptr) return CliFail(call.context, fnfErr, "no such preference: " + key);
    Print(call.context, key, *valueP);
    return 0;
}

int SetPreference(const CliCall& call) {
    const std::string &key = call.words.arguments[0], &text = call.words.arguments[1];
    const std::unique_ptr<CPreferences> prefsP = CliPreferences(call.context);
    std::optional<CCFValue> value;
    std::string fault;
    if (const OSErr err = ParsePreference(*prefsP, key, text, value, fault); Failed(err))
        return CliFail(call.context, err, fault);
    PreferenceAnswer answer;
    const int errnoL = AskHost(call.context, PreferenceRequest_Set(key, WholeText(*value, text)), answer);
    if (errnoL == 0 && Failed(answer.err)) return CliFail(call.context, answer.err, answer.text);
    if (errnoL != 0 && errnoL != ENOENT)
        return CliFail(call.context, opWrErr, "the host that runs does not answer: nothing was set, try again");
    if (errnoL == ENOENT) {
        prefsP->SetByName(key, *value);
        if (const OSErr err = prefsP->Save(); Failed(err))
            return CliFailStep(call.context, err, "saving the preferences");
    }
    Print(call.context, key, *value);
    return 0;
}

int ListPreferences(const CliCall& call) {
    for (const auto& [key, value] : SettingsNow(call.context)) Print(call.context, key, value);
    return 0;
}
