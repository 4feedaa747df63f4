#pragma once
#include <string>
#include <utility>
#include <vector>

#include "SongFiles/CSongFileKeeper.h"

/** How a song's files were renamed. */
struct SongRename {
    OSErr err = noErr;   // of the first file that could not be
    std::vector<std::pair<SDB_SongFile, CFileRef>>
        moved;   // where they lie now; after a failure what could not go back

    /** Gives the files that the program owns (sound, graphics, zip, side-car, project) one base name, each in its
        folder and with its extension: all, or none. A base that is taken in any of the folders gets a number.
        Threads  a worker. Never replaces a file. A song of which another one names a file keeps all of its names
                 (alreadyReportedErr). */
    [[nodiscard]] static SongRename Run(CSongFileKeeper& keeper, const CSongFiles& files, const std::string& base);
};
