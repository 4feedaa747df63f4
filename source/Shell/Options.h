#pragma once
#include <filesystem>
#include <optional>
#include <span>
#include <string>

/** The command line of `vopla`: [--headless] [--root DIR] [FILE]. */
struct Options {
    bool headlessB = false;
    bool helpB = false;
    std::filesystem::path root;
    std::string file;   // absolute, so that a first instance elsewhere finds it; empty for none
};

/** Nothing for wrong use. `words` are without the program's name; a word behind "--" is a file whatever it begins with. */
[[nodiscard]] std::optional<Options> ReadOptions(std::span<const std::string> words);
inline constexpr const char* kOptions_Usage = "usage: vopla [--headless] [--root DIR] [--] [FILE]\n";
