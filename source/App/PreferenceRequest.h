#pragma once
#include <string>
#include <string_view>

#include "Platform/OSErr.h"

class CPreferences;

// What the command line asks of the host that runs, over the socket of CSecondInstance: to take a setting, or to tell
// all. Wire  a request is "prefs all", or "prefs set", the key and the text with a zero byte before each; an answer is
// the
//       status in digits, a line end, then words for people or, for all, the settings as a property list.

[[nodiscard]] std::string PreferenceRequest_Set(std::string_view key, std::string_view text);
[[nodiscard]] std::string PreferenceRequest_All();

/** The host's side. Main thread. */
[[nodiscard]] std::string AnswerPreferenceRequest(std::string_view request, CPreferences& prefs);
[[nodiscard]] std::string PreferenceAnswerText(OSErr err, std::string_view text);

struct PreferenceAnswer {
    OSErr err = noErr;
    std::string text;
};
/** paramErr for what is no answer. */
[[nodiscard]] PreferenceAnswer ReadPreferenceAnswer(std::string_view answer);
