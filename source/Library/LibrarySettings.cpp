#include "Library/LibrarySettings.h"

#include <algorithm>

#include "Values/CPreferences.h"

LibrarySettings ReadLibrarySettings(const CPreferences& prefs) {
    LibrarySettings settings;
    settings.musicFolder = prefs.MusicFolder();
    settings.cacheFolder = prefs.CacheFolder();
    settings.nameTemplate = prefs.GetString("Conform song name template").UTF8();
    settings.conformNamesB = prefs.GetBool("Conform Song Names");
    settings.pushEditsB = prefs.GetBool("update media meta tags");
    settings.pushWaitT = static_cast<double>(std::max(0, prefs.GetLong("Seconds to wait after edit to push meta")));
    settings.requireAudioB = prefs.GetBool("Require Audio (no naked CDG files)");
    settings.launchMidiB = prefs.GetBool("Launch Midi Files");
    settings.tuneRowsB = !prefs.GetBool("Remember pitch / tempo in all playlists");
    settings.warnNamesB = prefs.GetBool("Warn if there is a problem updating meta");
    settings.warnMP3B = prefs.GetBool("Warn if there is a possibly corrupted MP3");
    settings.cachedSongsL = std::max(0L, static_cast<long>(prefs.GetLong("Number of cached songs")));
    settings.cachedImagesL = std::max(0L, static_cast<long>(prefs.GetLong("Max Cache Burn Images")));
    return settings;
}
