#pragma once
#include <filesystem>
#include <span>
#include <string_view>

#include "Meta/CMetaSongFile.h"

/** Six characters for the log. */
[[nodiscard]] std::string_view SongFileLogWord(SDB_SongFile type);
/** With its point; empty when there is none. */
[[nodiscard]] std::string_view SongFileExtension(SDB_SongFile type);
/** The extensions under which a missing file is looked for, in this order. */
[[nodiscard]] std::span<const std::string_view> SongFileSearchExtensions(SDB_SongFile type);
/** By its ending: a movie, which has its own sound; graphics have none. */
[[nodiscard]] bool IsMovieFile(const std::filesystem::path& file);
/** By its ending: a file of notes, which the desktop plays. */
[[nodiscard]] bool IsMidiFile(const std::filesystem::path& file);
/** The places whose files tell where a missing one may lie, in this order. The cached graphics, which may stand for the
    graphics, are no part of it. */
[[nodiscard]] std::span<const SDB_SongFile> SongFileSearchBases(SDB_SongFile type);
