#include "Cli/Command.h"

#include <algorithm>
#include <new>
#include <ostream>
#include <string_view>

#include "Cli/CliAudio.h"
#include "Cli/CliCdg.h"
#include "Cli/CliContext.h"
#include "Cli/CliLibrary.h"
#include "Cli/CliName.h"
#include "Cli/CliPlay.h"
#include "Cli/CliPrefs.h"
#include "Core/SuperString.h"

namespace {

struct CommandRow {
    std::string_view name;
    int (*run)(const CliContext&, std::span<const std::string> words);
    std::string_view usage;
};

constexpr CommandRow kCommands[] = {
    {"audio", &RunAudio,
     "  audio render FILE --out FILE.wav|.mp3|.m4a|.flac [--pitch N] [--tempo X] [--volume V] [--gain DB] [--vocal M]\n"
     "  audio autocue FILE\n"
     "  audio loudness FILE\n"},
    {"play", &RunPlay,
     "  play FILE... [--seconds N] [--output dummy|disk:PATH|NAME] [--pitch N] [--tempo X] [--volume V] [--gain DB] "
     "[--vocal M]\n"},
    {"cdg", &RunCdg,
     "  cdg frame FILE --at SECONDS --out PNG [--visible] [--hq4x] [--channels MASK]\n"
     "  cdg info FILE\n"
     "  cdg bench FILE\n"},
    {"prefs", &RunPrefs,
     "  prefs get KEY\n"
     "  prefs set KEY VALUE\n"
     "  prefs list\n"},
    {"name", &RunName, "  name conform TEXT\n"},
    {"library", &RunLibrary,
     "  library list\n"
     "  library show ID\n"
     "  library set ID KEY VALUE\n"
     "  library check [--no-files]\n"
     "  library rebuild\n"
     "  library restore [COPY]\n"},
};

void PrintUsage(std::ostream& out) {
    out << "usage: vopla-cli [--root DIR] [--json] COMMAND ...\n";
    for (const auto& row : kCommands) out << row.usage;
}

}   // namespace

int RunCommand(std::span<const std::string> words, std::ostream& out, std::ostream& err) {
    CliContext context{.root = {}, .jsonB = false, .out = out, .err = err};
    SuperString::SetDefaultEncoding(TextEncoding::kUTF8);
    // The options that every command has stand before its name.
    while (!words.empty() && words.front().starts_with("--")) {
        const std::string& option = words.front();
        if (option == "--json") {
            context.jsonB = true;
        } else if (option == "--root" && words.size() > 1 && !words[1].empty()) {
            context.root = words[1];
            words = words.subspan(1);
        } else if (option == "--help") {
            PrintUsage(out);
            return 0;
        } else {
            return CliUsage(context, "unknown option " + option);
        }
        words = words.subspan(1);
    }
    if (words.empty()) {
        PrintUsage(err);
        return 2;
    }
    const auto row = std::ranges::find(kCommands, words.front(), &CommandRow::name);
    if (row == std::end(kCommands)) return CliUsage(context, "unknown command " + words.front());
    int status = 1;
    try {
        status = row->run(context, words.subspan(1));
    } catch (const std::bad_alloc&) {
        return CliFailStep(context, memFullErr, words.front());
    } catch (const std::exception& fault) {
        return CliFail(context, paramErr, fault.what());
    }
    // An answer that was lost on its way, on a full disk say, is no success.
    if (!out.flush() && status == 0) return CliFailStep(context, ioErr, "writing the answer");
    return status;
}
