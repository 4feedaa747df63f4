#pragma once
#include <filesystem>
#include <span>
#include <string_view>

#include "Cli/CliContext.h"
#include "Cli/CliWords.h"

class CCliLibrary;
struct CliCommand;

/** What a word behind an option must be. */
enum class CliKind { kSwitch, kText, kNumber, kWhole };

/** An option of one command. */
struct CliOption {
    std::string_view name;    // "--pitch"
    std::string_view value;   // what the help calls the word behind it: "N"; empty for a switch
    std::string_view help;
    CliKind kind = CliKind::kText;
    double least = 0, most = 0;   // of a number
    bool requiredB = false;
};

/** A word without a dash. */
struct CliArgument {
    enum class Count { kOne, kMaybe, kSome };
    std::string_view name;   // "FILE"
    std::string_view help;
    Count count = Count::kOne;
};

/** What is made ready before the deed. */
enum class CliNeeds {
    kNothing,
    kLibrary,        // loaded, to be looked at
    kLibraryTaken,   // no host has it, and it was read whole: it may be changed
};

/** One call of a command: what it works on, and where its answer goes.
    Owner    RunCommand, for the length of the deed. */
struct CliCall {
    const CliContext& context;
    const CliWords& words;
    const CliCommand& command;
    CCliLibrary* libraryP = nullptr;   // as the command needs it

    /** Wrong use that only the deed can see; the exit status, 2. */
    [[nodiscard]] int Usage(std::string_view fault) const;
    /** `made` would be written over `song`, by this name or another one. */
    [[nodiscard]] static bool WouldReplace(const std::filesystem::path& made, const std::filesystem::path& song);
};

/** A command of `vopla-cli`: its words, what may follow them, what it needs, what it does. */
struct CliCommand {
    std::string_view words;   // "audio render"
    std::string_view help;
    std::span<const CliArgument> arguments;
    std::span<const CliOption> options;
    CliNeeds needs;
    int (*run)(const CliCall& call);   // the exit status

    /** "audio render FILE --out FILE.wav [--pitch N]". */
    [[nodiscard]] std::string Usage() const;
};

/** All of them, in the order of the help. */
[[nodiscard]] std::span<const CliCommand> CliCommands();
/** What the commands with one first word are about; empty for a command of one word. */
[[nodiscard]] std::string_view CliGroupHelp(std::string_view word);
