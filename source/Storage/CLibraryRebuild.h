#pragma once
#include <filesystem>
#include <string>
#include <vector>

#include "SongFiles/SongFileSets.h"
#include "Storage/CLibraryHost.h"

class CSongDatabase;

/** Makes a library anew when none could be read: each sound, zip or video of the music folder becomes a song. Sound and
    graphics whose names are nearly the same may be one song: the user is asked.
    Threads  main; the disc is read by a thread, while timers and paint go on. */
class CLibraryRebuild {
public:
    CLibraryRebuild(CSongDatabase& database, std::filesystem::path folder, CLibraryHost& host)
        : i_database(database), i_host(host), i_folder(std::move(folder)) {}
    /** How many songs were made. */
    std::size_t Run();

private:
    [[nodiscard]] std::vector<SongFileSet> Gather() const;
    void JoinHalves(std::vector<SongFileSet>& sets) const;
    /** Asks; true, and `base` is the name to use, when they are. */
    [[nodiscard]] bool AreSame(const SongFileSet& first, const SongFileSet& second, std::string& base) const;

    CSongDatabase& i_database;
    CLibraryHost& i_host;
    const std::filesystem::path i_folder;
};
