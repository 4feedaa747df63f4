#include "Cli/Command.h"

#include <new>
#include <optional>
#include <ostream>

#include "Cli/CCliLibrary.h"
#include "Cli/CliParser.h"
#include "Core/SuperString.h"

namespace {

/** Makes ready what the command needs, then does it. */
int Run(CliCall call) {
    std::optional<CCliLibrary> library;
    if (call.command.needs != CliNeeds::kNothing) {
        library.emplace(call.context);
        const bool takenB = call.command.needs == CliNeeds::kLibraryTaken;
        if (const int status = takenB ? library->TakeWhole() : library->LoadToRead(); status != 0) return status;
        call.libraryP = &*library;
    }
    return call.command.run(call);
}

}   // namespace

int RunCommand(std::span<const std::string> words, std::ostream& out, std::ostream& err) {
    SuperString::SetDefaultEncoding(TextEncoding::kUTF8);
    const CliParsed parsed = ParseCli(words);
    const CliContext context{.root = parsed.root, .jsonB = parsed.jsonB, .out = out, .err = err};
    int status = 1;
    try {
        switch (parsed.what) {
            case CliParsed::What::kNothing:
                err << parsed.text;
                return 2;
            case CliParsed::What::kWrong:
                return CliUsage(context, parsed.text);
            case CliParsed::What::kHelp:
                out << parsed.text;
                status = 0;
                break;
            case CliParsed::What::kCommand:
                status = Run({.context = context, .words = parsed.words, .command = *parsed.commandP});
                break;
        }
    } catch (const std::bad_alloc&) {
        return CliFailStep(context, memFullErr, parsed.commandP->words);
    } catch (const std::exception& fault) {
        return CliFail(context, paramErr, fault.what());
    }
    // An answer that was lost on its way, on a full disk say, is no success.
    if (!out.flush() && status == 0) return CliFailStep(context, ioErr, "writing the answer");
    return status;
}
