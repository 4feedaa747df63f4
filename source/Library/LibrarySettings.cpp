#include "Library/LibrarySettings.h"

#include <algorithm>

#include "Values/CPreferences.h"

LibrarySettings ReadLibrarySettings(const CPreferences& prefs) {
    LibrarySettings settings;
    settings.musicFolder = prefs.MusicFolder();
    settings.cacheFolder = prefs.CacheFolder();
    settings.nameTemplate = prefs.GetString("Conform song name template", settings.nameTemplate).UTF8();
    settings.conformNamesB = prefs.GetBool("Conform Song Names", true);
    settings.pushEditsB = prefs.GetBool("update media meta tags", true);
    settings.pushWaitT = static_cast<double>(std::max(0, prefs.GetLong("Seconds to wait after edit to push meta", 10)));
    settings.requireAudioB = prefs.GetBool("Require Audio (no naked CDG files)", true);
    settings.launchMidiB = prefs.GetBool("Launch Midi Files", settings.launchMidiB);
    settings.tuneRowsB = !prefs.GetBool("Remember pitch / tempo in all playlists", true);
    settings.warnNamesB = prefs.GetBool("Warn if there is a problem updating meta", true);
    settings.warnMP3B = prefs.GetBool("Warn if there is a possibly corrupted MP3", true);
    settings.cachedSongsL = std::max(0L, static_cast<long>(prefs.GetLong("Number of cached songs", 25)));
    settings.cachedImagesL = std::max(0L, static_cast<long>(prefs.GetLong("Max Cache Burn Images", 1)));
    return settings;
}
