#pragma once
#include <filesystem>
#include <span>
#include <string>

#include "Cli/CliCommand.h"

/** A command line, read. */
struct CliParsed {
    enum class What { kCommand, kHelp, kWrong, kNothing };

    What what = What::kNothing;
    const CliCommand* commandP = nullptr;   // of kCommand
    CliWords words;
    std::filesystem::path root;
    bool jsonB = false;   // also where the rest is wrong: the error is told in this form
    std::string text;     // kHelp: what is printed; kWrong: what is wrong, in one line; kNothing: the help
};

/** Reads `words` by the table: options in any place of the line, help for each command, the version. A value that
    begins with "-" stands behind "--". */
[[nodiscard]] CliParsed ParseCli(std::span<const std::string> words);
