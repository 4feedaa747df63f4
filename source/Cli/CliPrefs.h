#pragma once
#include <span>
#include <string>

#include "Cli/CliContext.h"

/** `prefs get KEY`, `prefs set KEY VALUE`, `prefs list`: the preferences file of the root, or of the user without one.
    The exit status. */
int RunPrefs(const CliContext& context, std::span<const std::string> words);
