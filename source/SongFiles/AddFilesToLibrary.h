#pragma once
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "Library/LibraryIDs.h"
#include "SongFiles/SongFileSets.h"

class CSong;
class CSongDatabase;

/** The songs of what was added, in the order of the files; a file that the library had already is answered by its song.
    Refused files were logged, one by one. */
struct AddedFiles {
    std::vector<SongID> songs;
    std::size_t newL = 0;   // of them
    std::vector<RefusedFile> refused;

    /** The refused files by name and reason, at most ten of them: for an alert. */
    [[nodiscard]] std::string RefusedText() const;
};

/** Makes the song of new files; null: somebody else shall. */
using MakeSong = std::function<CSong*(const SongFileSet& set)>;

/** Adds files and folders to the library as they lie: sound with its graphics, zips, videos; named after the file. The
    disc is read by a task.
    Threads  main. `done` runs there later, unless the database has gone.
    Errors   abortErr when no task can be started: `done` is not called then.
    `make`, where there is one, is asked first for the song of new files; null from it makes one named after them. */
OSErr AddFilesToLibrary(CSongDatabase& database, std::vector<std::filesystem::path> paths,
                        std::function<void(const AddedFiles&)> done, MakeSong make = {});

/** The same, and waits for it, pumping timers and paint meanwhile: for the command line. */
std::vector<SongID> AddFilesToLibrary(CSongDatabase& database, std::span<const std::filesystem::path> paths,
                                      std::vector<RefusedFile>* refusedP = nullptr, MakeSong make = {});
