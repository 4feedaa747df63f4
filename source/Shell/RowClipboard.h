#pragma once
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "Library/CSongDatabase.h"

class QMimeData;

// Rows of a list on the clipboard: their songs for other lists of this program, their text and their files for other
// programs. Main thread.

/** The text has the cells of `columns`, a line a row. Of very many rows only the songs go along. No look at the disc. */
[[nodiscard]] std::unique_ptr<QMimeData> CopyOfRows(CSongDatabase& database, const CPlayList& list,
                                                    std::span<const PLItemID> items, std::span<const MetaKey> columns);
/** The songs that this process has copied and that are still in the library; nothing for what others have copied. */
[[nodiscard]] std::optional<std::vector<SongID>> CopiedSongs(CSongDatabase& database, const QMimeData& data);
