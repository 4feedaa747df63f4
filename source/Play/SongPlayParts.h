#pragma once
#include "Audio/CAudioPlayerSettings.h"
#include "Play/CPlayOutput.h"
#include "Play/CSongLoad.h"
#include "Play/ShowFacts.h"

/** What one play of a song works with. */
struct SongPlayParts {
    SongPlaySpec spec;
    ShowFactsRef show;
    Ref<CSongLoad> loadP;   // its files: loaded ahead, or fresh
    Ref<CPlayOutput> outputP;
    AudioPlayerSettings settings;
    bool autoCueB = true;
    bool hq4xB = false;
    bool anyDeviceB = false;   // CPlayHost::PlaysOnAnyDevice
    bool oneLevelB = false;    // "Play all songs at one level"
    long pictureDelayL = 0;    // milliseconds: CPictureDelays
    long startAt300 = -1;      // from there rather than from where the music begins; -1: no
};
