#pragma once
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "Import/NameTemplateFile.h"

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
