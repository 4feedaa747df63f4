#pragma once
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "Cli/Command.h"

/** What a command line answered. */
struct CliRun {
    int status = 0;
    std::string out, err;
};

/** Runs one command line as the program does. */
inline CliRun RunCli(const std::vector<std::string>& words) {
    std::ostringstream out, err;
    const int status = RunCommand(words, out, err);
    return {status, out.str(), err.str()};
}

/** The same on a root, with the words of one group behind its name. */
inline CliRun RunCli(const std::string& group, const std::filesystem::path& root, bool jsonB,
                     std::vector<std::string> words) {
    std::vector<std::string> before;
    if (!root.empty()) before = {"--root", root.string()};
    if (jsonB) before.push_back("--json");
    before.push_back(group);
    words.insert(words.begin(), before.begin(), before.end());
    return RunCli(words);
}
