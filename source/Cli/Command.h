#pragma once
#include <iosfwd>
#include <span>
#include <string>

/** The whole of `vopla-cli` for one command line (without the program's name).
    Returns 0, 1 for a failure (told in one line on `err`), 2 for wrong use. */
int RunCommand(std::span<const std::string> words, std::ostream& out, std::ostream& err);
