#pragma once
#include <memory>
#include <set>

#include "Library/CSongFollower.h"
#include "SongFiles/CSongLengths.h"
#include "SongFiles/CSongWarnings.h"
#include "Threads/CHandle.h"
#include "Threads/CMutex.h"
#include "Threads/ForkRecord.h"

class CSongDatabase;
class CSongFileKeeper;

/** The work on the files of a library's songs that nobody asks for: names after edits and after a song has ceased to play,
    marks of missing files, lengths, warnings; and who keeps the files that other songs name.
    Threads  main, but FileNamed.
    Owner    whoever has the database, which outlives it. */
class CSongFileWork final : public CSongFollower {
public:
    explicit CSongFileWork(CSongDatabase& database);
    ~CSongFileWork() override;
    CSongFileWork(const CSongFileWork&) = delete;
    CSongFileWork& operator=(const CSongFileWork&) = delete;
    /** That of this database: whoever starts work on files has seen to it that there is one. */
    [[nodiscard]] static CSongFileWork& Of(const CSongDatabase& database);

    /** Who keeps the files of songs that other songs name: the one whom a task uses already, else a new one. */
    [[nodiscard]] std::shared_ptr<CSongFileKeeper> Keeper();
    /** The lists of songs that something is wrong with. */
    [[nodiscard]] CSongWarnings& Warnings() noexcept { return i_warnings; }
    /** Who looks how long songs play. */
    [[nodiscard]] CSongLengths& Lengths() noexcept { return i_lengths; }
    /** The files of this song get their name when it has ceased to play. */
    void RenameLater(SongID song) { i_renameLater.insert(Number(song)); }
    /** Names the files of the songs that were edited after them, now, when the preferences want that. */
    void PushEdits();

    void SongsWereChanged(std::span<const SongChange> changes) override;
    void PlayingSongChanged(SongID before) override;
    void FileNamed(SongID song, const CMetaValue& file) override;

private:
    void NoteEdits(std::span<const SongChange> changes);

    CSongDatabase& i_database;
    CMutexT<std::weak_ptr<CSongFileKeeper>> i_keeper;   // while a task works on files
    CSongWarnings i_warnings;
    CSongLengths i_lengths;
    std::set<std::int32_t> i_edited;   // whose files wait for their names
    std::set<std::int32_t> i_renameLater;
    ForkID i_pushTimer = 0;
    CHandled<CSongFileWork> i_self{this};
};
