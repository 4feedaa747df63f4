#include "App/PreferenceRequest.h"

#include <charconv>
#include <optional>

#include "Core/CLog.h"
#include "Values/CPreferences.h"
#include "Values/PreferenceTable.h"
#include "Values/PreferenceText.h"
#include "Values/PropertyList.h"

namespace {

constexpr std::string_view kRequest_All = "prefs all", kRequest_Set = "prefs set";

/** The part up to the next zero byte; takes it off. */
std::string NextPart(std::string_view& text) {
    const std::string part(text.substr(0, text.find('\0')));
    text.remove_prefix(std::min(part.size() + 1, text.size()));
    return part;
}

std::string Set(std::string_view rest, CPreferences& prefs) {
    const std::string key = NextPart(rest), text(rest);
    std::optional<CCFValue> value;
    std::string fault;
    const PrefRow* const rowP = FindPreference(key);
    if (rowP == nullptr || rowP->ownB)   // it would be written over
        return PreferenceAnswerText(
            opWrErr, "“" + key + "” belongs to the windows of the host that runs: set it there, or after it has quit");
    const OSErr err = ParsePreference(prefs, key, text, value, fault);
    if (!Failed(err)) {
        LogF("preference by the command line: %s", key.c_str());
        prefs.SetByName(key, std::move(*value));
    }
    return PreferenceAnswerText(err, fault);
}

}   // namespace

std::string PreferenceRequest_Set(std::string_view key, std::string_view text) {
    return std::string(kRequest_Set) + '\0' + std::string(key) + '\0' + std::string(text);
}

std::string PreferenceRequest_All() { return std::string(kRequest_All); }

std::string AnswerPreferenceRequest(std::string_view request, CPreferences& prefs) {
    const std::string what = NextPart(request);
    if (what == kRequest_Set) return Set(request, prefs);
    std::string text;
    if (what != kRequest_All) return PreferenceAnswerText(paramErr, "the host that runs does not know this request");
    const OSErr err = WritePropertyList(prefs.Snapshot(), text);
    return PreferenceAnswerText(err, text);
}

std::string PreferenceAnswerText(OSErr err, std::string_view text) {
    return std::to_string(Number(err)) + '\n' + std::string(text);
}

PreferenceAnswer ReadPreferenceAnswer(std::string_view answer) {
    short statusS = 0;
    const auto [endP, fault] = std::from_chars(answer.data(), answer.data() + answer.size(), statusS);
    if (fault != std::errc() || endP == answer.data() + answer.size() || *endP != '\n') return {paramErr, {}};
    return {static_cast<OSErr>(statusS), std::string(endP + 1, answer.data() + answer.size())};
}
