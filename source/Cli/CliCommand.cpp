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

int CliCall::Usage(std::string_view fault) const {
    return CliUsage(context, std::string(command.words) + ": " + std::string(fault) + "; usage: " + command.Usage());
}
