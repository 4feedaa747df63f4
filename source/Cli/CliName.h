#pragma once
#include <span>
#include <string>

#include "Cli/CliContext.h"

/** `name conform TEXT`: the text with the casing of names, small words lowered. The exit status. */
int RunName(const CliContext& context, std::span<const std::string> words);
