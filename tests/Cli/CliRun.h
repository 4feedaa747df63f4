#pragma once
#include <filesystem>
#include <span>
#include <sstream>
#include <string>
#include <vector>

#include "Cli/CliContext.h"

/** What a sub-command answered. */
struct CliRun {
    int status = 0;
    std::string out, err;
};

/** Runs one sub-command as the program does. */
inline CliRun RunCli(int (*command)(const CliContext&, std::span<const std::string>), const std::filesystem::path& root,
                     bool jsonB, const std::vector<std::string>& words) {
    std::ostringstream out, err;
    const CliContext context{root, jsonB, out, err};
    const int status = command(context, words);
    return {status, out.str(), err.str()};
}
