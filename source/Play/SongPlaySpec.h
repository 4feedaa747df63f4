#pragma once
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "Audio/CVolumeStage.h"
#include "Files/CFileRef.h"
#include "Library/LibraryIDs.h"
#include "Play/SongLevel.h"

class CCFPrefDictionary;
class CSong;
class CSongDatabase;
class CSongFiles;

/** All that is needed of a song to play it, at one moment: what prepares it on its own thread touches no model. */
struct SongPlaySpec {
    SongID song{SDB_kUninitializedID};
    PlaylistID list{SDB_kUninitializedID};
    PLItemID item = SDB_kNoItem;
    std::string name;
    CFileRef audio, video, zip, launch;            // as their places say; empty for none
    std::shared_ptr<const CSongFiles> placesRef;   // the same, to be looked for; never null when it is loaded
    double pitch = 0, tempo = 1;
    VocalMode vocal = VocalMode::kBoth;
    double slipT = 0;                        // seconds
    long trimStart300 = 0, trimEnd300 = 0;   // 0: none
    float volumeF = 0;                       // 0: the song has none of its own
    float gainF = 1;                         // on top of the volume
    std::optional<SongLevel> level;          // how loud it is, if that was measured
    bool cooperativeB = false;
    std::uint16_t channels = 0xFFFF;
    // Of the preferences.
    bool requireAudioB = true;   // graphics alone are no song
    bool launchMidiB = false;
};

/** How loud the song is, as it is kept with it. Main thread. */
[[nodiscard]] std::optional<SongLevel> LevelOf(CSong& song);
void KeepLevel(CSong& song, const SongLevel& level);

/** Main thread; no look at the disc. Pitch and tempo are the song's. */
[[nodiscard]] SongPlaySpec ReadSongPlaySpec(CSong& song, const CCFPrefDictionary& preferences);
/** Of a row of a list: with the pitch and the tempo that the list shows. Nothing when it has no song. */
[[nodiscard]] std::optional<SongPlaySpec> ReadRowPlaySpec(CSongDatabase& database, PlaylistID list, PLItemID item,
                                                          const CCFPrefDictionary& preferences);
