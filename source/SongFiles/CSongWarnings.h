#pragma once
#include <array>
#include <optional>

#include "Library/LibraryIDs.h"

class CPlayList;
class CSongDatabase;

enum class SongWarning : unsigned char { kNotRenamed, kCorruptMP3 };

/** Songs that something is wrong with: each kind has a hidden list, made on its first use, in which a song stands once;
    the user hears of it at most every two hours, and not at all when he said so.
    Threads  main.
    Owner    CSongFileWork. */
class CSongWarnings {
public:
    explicit CSongWarnings(CSongDatabase& database) : i_database(database) {}
    void Add(SongWarning kind, SongID song);
    static constexpr double kWarnAgain_T = 7200.0;

private:
    [[nodiscard]] CPlayList& List(SongWarning kind) const;
    void Warn(SongWarning kind);

    CSongDatabase& i_database;
    std::array<std::optional<double>, 2> i_warnedT;   // by kind: when
};
