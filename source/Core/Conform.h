#pragma once
#include "Core/SuperString.h"

struct ConformOptions {
    bool keepLineEndsB = false;
    bool lowerSmallWordsB = false;   // "The Wind And The Rain" becomes "The Wind and the Rain"
};

/** The casing of names (song, artist, album): each word with a capital, the names of the tables as their owners write
    them, no white space at the ends. Any thread. */
[[nodiscard]] SuperString Conform(const SuperString& name, ConformOptions options = {});
