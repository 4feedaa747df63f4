#pragma once
#include <span>
#include <string>

#include "Cli/CliContext.h"

/** `cdg frame`, `cdg info` and `cdg bench`; `words` begins behind "cdg". The exit status. */
int RunCdg(const CliContext& context, std::span<const std::string> words);
