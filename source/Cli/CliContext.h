#pragma once
#include <filesystem>
#include <memory>
#include <ostream>
#include <string_view>

#include "Platform/OSErr.h"

class CPreferences;

/** What every sub-command is given: the library root (empty when none was named), the form of its errors, its outputs. */
struct CliContext {
    std::filesystem::path root;
    bool jsonB = false;
    std::ostream& out;
    std::ostream& err;
};

/** Tells a failure in one line, or in one JSON object with --json; the exit status, 1. `text` says all of it. */
int CliFail(const CliContext& context, OSErr status, std::string_view text);
/** The failure of a file: its name, what is wrong with it and what can be done. */
int CliFailFile(const CliContext& context, OSErr status, const std::filesystem::path& file);
/** The failure of a step that no single file is named for. */
int CliFailStep(const CliContext& context, OSErr status, std::string_view step);
/** The same for words that the command does not understand; the exit status, 2. */
int CliUsage(const CliContext& context, std::string_view text);
/** Something to know beside the answer, in one line on the error stream; the status stays. */
void CliWarn(const CliContext& context, std::string_view text);

/** Where the settings of the library root lie, or those of the user without one. */
[[nodiscard]] std::filesystem::path CliPrefsFolder(const CliContext& context);
/** The settings of the library root, or of the user without one. Reading leaves the file as it is. */
[[nodiscard]] std::unique_ptr<CPreferences> CliPreferences(const CliContext& context);
