#pragma once
#include <filesystem>
#include <memory>

#include "Platform/OSErr.h"

class CLostSongs;
class CSongDatabase;

/** "Finding Orphans": files of the music folder that no song names come back as songs, and stand together in the
    playlist "Orphaned Songs", where the user finds them.
    Threads  main; the disc is read by a task. Nothing happens when the database goes meanwhile. */
class COrphanSearch {
public:
    /** Files that are one of `lostRef`, where there is one, become that song again. abortErr when no task can be started. */
    static OSErr Start(CSongDatabase& database, const std::filesystem::path& musicFolder,
                       std::shared_ptr<CLostSongs> lostRef = nullptr);

    static constexpr const char* kList_Name = "Orphaned Songs";
};
