#pragma once
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

/** The command line of `vopla`: [--headless] [--root DIR] [FILE...]; or, asked by itself, what the graphics card is. */
struct Options {
    bool headlessB = false;
    bool helpB = false, versionB = false;
    bool askCardB = false;
    std::filesystem::path root;
    std::vector<std::string> files;   // absolute, so that a first instance elsewhere finds them
};

/** Nothing for wrong use. `words` are without the program's name; a word behind "--" is a file whatever it begins with. */
[[nodiscard]] std::optional<Options> ReadOptions(std::span<const std::string> words);
inline constexpr const char* kOptions_Usage = "usage: vopla [--headless] [--root DIR] [--] [FILE...]\n";
inline constexpr const char* kOptions_Help =
    "\n"
    "Options:\n"
    "  --headless   Without windows: plays the files, and stays until a signal ends it.\n"
    "  --root DIR   The folder that holds the library, in place of ~/Music/Vopla.\n"
    "  -h, --help   Tells how the program is used, and ends.\n"
    "  --version    Tells the version, and ends.\n";
