#pragma once
#include <filesystem>
#include <string>

#include "Library/CSongStatus.h"
#include "Library/WindowsPath.h"

class CPreferences;

/** What the library must know of the preferences. A value: the database hands out the one of now, whole, to any thread. */
struct LibrarySettings {
    using Path = std::filesystem::path;

    Path musicFolder, cacheFolder;   // absolute; empty: none is known
    std::string nameTemplate = "L-L-T - R - S";
    bool conformNamesB = true;   // song files are renamed after their song
    bool pushEditsB = true;      // what is edited goes on to the files,
    double pushWaitT = 10;       // so many seconds after the last edit
    bool requireAudioB = true;   // graphics without sound are no song
    bool launchMidiB = false;    // files of notes are
    bool tuneRowsB = false;      // a row of a list has its own pitch and tempo, rather than its song for all of them
    bool warnNamesB = true, warnMP3B = true;
    long cachedSongsL = 25, cachedImagesL = 1;

    [[nodiscard]] CSongStatus Status() const { return {musicFolder, cacheFolder}; }
    /** A path as the library's files may keep it, relative to the music folder, as a whole one. One of another system
        stays as it is. */
    [[nodiscard]] Path Whole(const Path& path) const {
        const bool wholeB = path.empty() || path.has_root_directory() || IsWindowsPath(path.native());
        return wholeB ? path : musicFolder / path;
    }
};

[[nodiscard]] LibrarySettings ReadLibrarySettings(const CPreferences& prefs);
