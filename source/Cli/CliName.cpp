#include "Cli/CliName.h"

#include "Cli/CliCommand.h"
#include "Core/Conform.h"
#include "Core/Localize.h"
#include "Files/CFolderKinds.h"
#include "Import/NameGuess.h"
#include "Values/CPreferences.h"
#include "Values/JSONWriter.h"

namespace {

constexpr struct {
    NameToken token;
    std::string_view name;
} kFields[] = {{NameToken::kLabel, "label"},   {NameToken::kTrack, "track"},     {NameToken::kSong, "song"},
               {NameToken::kArtist, "artist"}, {NameToken::kIgnored, "ignored"}, {NameToken::kVersion, "version"}};

NameHabits HabitsOf(const CliContext& context) {
    const std::unique_ptr<CPreferences> prefsP = CliPreferences(context);
    return {.oneDigitB = prefsP->GetBool("Track Number can be single digit"),
            .parensB = prefsP->GetBool("Parens in File name always means 'rendition'")};
}

}   // namespace

int ParseName(const CliCall& call) {
    const std::string& text = call.words.arguments[0];
    if (!NameTokens(text)) return CliFail(call.context, paramErr, Localize(kName_IllegalZ));
    if (!NameParser::Of(text))
        return CliFail(
            call.context, paramErr,
            Localize("A template names a part at least. It has no “/”, or begins with one and has two or three."));
    const auto parsed = InterpretWithFallback(call.words.arguments[1], text, HabitsOf(call.context));
    std::ostream& out = call.context.out;
    out << "{\"match\":" << (parsed ? "true" : "false");
    for (const auto& field : kFields)
        out << ",\"" << field.name << "\":" << JSONString(parsed ? parsed->Value(field.token) : std::string());
    out << ",\"digits\":" << (parsed ? parsed->digitsL : 0) << "}\n";
    return 0;
}

int GuessNames(const CliCall& call) {
    CFileRef resources;
    if (const OSErr err = CFolderKinds().Find(FolderKind::kResources, resources); Failed(err))
        return CliFailStep(call.context, err, "finding the templates of names");
    const std::vector<std::string>& names = call.words.arguments;
    const auto templates = LoadNameTemplates(CliPrefsFolder(call.context), resources.GetPath());
    const NameGuess guess = GuessNameTemplate(names, templates, HabitsOf(call.context));
    std::ostream& out = call.context.out;
    out << "{\"template\":" << JSONString(guess.parserP == nullptr ? std::string() : guess.parserP->Text())
        << ",\"matched\":" << guess.matchedL << ",\"names\":" << names.size() << ",\"misfits\":[";
    for (std::size_t n = 0; n < guess.misfits.size(); ++n)
        out << (n == 0 ? "" : ",") << JSONString(names[guess.misfits[n]]);
    out << "]}\n";
    return 0;
}

int ConformName(const CliCall& call) {
    const SuperString text = Conform(call.words.arguments[0], {.lowerSmallWordsB = true});
    call.context.out << "{\"text\":" << JSONString(text) << "}\n";
    return 0;
}
