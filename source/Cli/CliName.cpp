#include "Cli/CliName.h"

#include "Cli/CliCommand.h"
#include "Core/Conform.h"
#include "Core/Localize.h"
#include "Library/NameParser.h"
#include "Values/CPreferences.h"
#include "Values/JSONWriter.h"

namespace {

constexpr struct {
    NameToken token;
    std::string_view nameZ;
} kFields[] = {{NameToken::kLabel, "label"},   {NameToken::kTrack, "track"},     {NameToken::kSong, "song"},
               {NameToken::kArtist, "artist"}, {NameToken::kIgnored, "ignored"}, {NameToken::kVersion, "version"}};

}   // namespace

int ParseName(const CliCall& call) {
    const std::string& text = call.words.arguments[0];
    if (!NameTokens(text)) return CliFail(call.context, paramErr, Localize(kName_IllegalZ));
    if (!IsNameTemplate(text))
        return CliFail(
            call.context, paramErr,
            Localize("A template without folders has no “/”; one with folders begins with it and has two or three."));
    const std::unique_ptr<CPreferences> prefsP = CliPreferences(call.context);
    const NameHabits habits{.oneDigitB = prefsP->GetBool("Track Number can be single digit"),
                            .parensB = prefsP->GetBool("Parens in File name always means 'rendition'")};
    const auto parsed = InterpretWithFallback(call.words.arguments[1], text, habits);
    std::ostream& out = call.context.out;
    out << "{\"match\":" << (parsed ? "true" : "false");
    for (const auto& field : kFields)
        out << ",\"" << field.nameZ << "\":" << JSONString(parsed ? parsed->Value(field.token) : std::string());
    out << ",\"digits\":" << (parsed ? parsed->digitsL : 0) << "}\n";
    return 0;
}

int ConformName(const CliCall& call) {
    const SuperString text = Conform(call.words.arguments[0], {.lowerSmallWordsB = true});
    call.context.out << "{\"text\":" << JSONString(text) << "}\n";
    return 0;
}
