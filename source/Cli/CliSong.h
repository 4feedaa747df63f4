#pragma once
#include <string>

#include "Library/CSong.h"
#include "Storage/CSongStore.h"

/** A song on the command line. Main thread. */

/** {"soID":1,"name":"...", ...}: all that is stored, by the four-character keys, in the order of the table. Files are
    paths, a mixed check box is "mix". */
[[nodiscard]] std::string SongJSON(CSong& song);
/** One line a value: title, key, text; then an empty one. */
[[nodiscard]] std::string SongWords(CSong& song);
/** Id, artist, name and, where it is known, the length as "3:05", with tabs between. */
[[nodiscard]] std::string SongLine(CSong& song);
/** Puts what a person wrote under a key; nothing, or "--", clears it. paramErr, and `fault` in words: no such key, a
    key that is not set by hand, no value of its kind, or one that is not legal. */
OSErr SetSongValue(CSong& song, const LibraryPlaces& places, const std::string& keyText, const std::string& text,
                   std::string& fault);
