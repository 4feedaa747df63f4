#pragma once
#include <string>

#include "Core/Localize.h"
#include "Platform/CUserInterface.h"

/** The commands of the library that ask first. */
enum class LibraryDialog : unsigned char {
    kRemoveFromLibrary,
    kRemoveDuplicates,
    kTrashOriginals,
    kDeletePlaying,
    kDeletePlaylist,
    kPaste,
    kReveal,
    kSameName,
    kLastSong
};

/** The question of a command; "%1" of its text becomes `detail`. The safe answer, which is no, comes last. */
[[nodiscard]] Question LibraryQuestion(LibraryDialog dialog, const std::string& detail = {});
/** What helps when the file of a list cannot go. */
inline constexpr const char* kDelete_HintZ =
    N_("You may need to empty your trash first, or rename the Playlist before deleting it.");
/** What the first button of such a question is. */
inline constexpr std::size_t kAnswer_Do = 0;
