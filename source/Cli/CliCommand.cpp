#include "Cli/CliCommand.h"

std::string CliCommand::Usage() const {
    std::string usage(words);
    for (const CliArgument& argument : arguments) {
        const bool maybeB = argument.count == CliArgument::Count::kMaybe;
        usage += (maybeB ? " [" : " ") + std::string(argument.name);
        if (argument.count == CliArgument::Count::kSome) usage += "...";
        if (maybeB) usage += ']';
    }
    for (const CliOption& option : options) {
        usage += (option.requiredB ? " " : " [") + std::string(option.name);
        if (!option.value.empty()) usage += ' ' + std::string(option.value);
        if (!option.requiredB) usage += ']';
    }
    return usage;
}

bool CliCall::WouldReplace(const std::filesystem::path& made, const std::filesystem::path& song) {
    std::error_code fault;   // one of them missing: they are not the same
    return std::filesystem::equivalent(made, song, fault);
}

int CliCall::Usage(std::string_view fault) const {
    return CliUsage(context, std::string(command.words) + ": " + std::string(fault) + "; usage: " + command.Usage());
}
