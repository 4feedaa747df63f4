#pragma once
#include <span>
#include <string>

#include "Cli/CliContext.h"

/** `play`: one file after the other, with a line of its state every quarter of a second and one with the totals. */
int RunPlay(const CliContext& context, std::span<const std::string> words);
