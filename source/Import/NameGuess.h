#pragma once
#include <filesystem>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Library/NameParser.h"

/** A line of "Name Parser Templates.txt": the template, and behind a tab an example for people. */
struct NameTemplateLine {
    NameParser parser;
    std::string remark;
};
/** The lines of such a file; one whose template is none is logged and left out. */
[[nodiscard]] std::vector<NameTemplateLine> ReadNameTemplates(std::string_view text);
/** Those of the user's own file, which lies with his preferences; of the file among the resources when he has none, or none that
    can be read. Blocks as a disc does. */
[[nodiscard]] std::vector<NameTemplateLine> LoadNameTemplates(const std::filesystem::path& preferences,
                                                              const std::filesystem::path& resources);

/** The template that the names of one maker go by. */
struct NameGuess {
    const NameParser* parserP = nullptr;   // one of those that were given; null when none reads any name
    std::size_t matchedL = 0;
    std::vector<std::size_t> misfits;   // places of the names that it does not read
};

/** Tries each template on all names, as InterpretWithFallback does. The one that reads most names is it; of those that read within
    2 % as many, the one that tells most; of two that differ in which is artist and which is song, the one whose artists are
    known, or else repeat more; else the first. Pure; `knownArtist` may be empty. */
[[nodiscard]] NameGuess GuessNameTemplate(std::span<const std::string> names,
                                          std::span<const NameTemplateLine> templates, NameHabits habits = {},
                                          const std::function<bool(const std::string& artist)>& knownArtist = {});
