#pragma once
#include <string>

#include "Platform/CAudioOutput.h"

class CCFPrefDictionary;

/** What the preferences say about playing. Read once a song. */
struct AudioPlayerSettings {
    std::string device = std::string(kAudioOutput_Default);
    int blocksL = 5;   // as stored; Blocks limits it
    int sleepMillisecondsL = 0;
    double cueThreshold = 0.001;   // 0 to 1 of full scale
    double cueRollbackT = 0.1;     // seconds
    bool timePitchUnitB = false, bestPitchB = true;

    [[nodiscard]] static AudioPlayerSettings Read(const CCFPrefDictionary& preferences);
    /** 2 to 25 blocks of 2,048 frames. */
    [[nodiscard]] AudioBlocks Blocks() const noexcept;
    /** How long the render thread sleeps at most when no block is free; 92 ms unless told otherwise. */
    [[nodiscard]] double SleepT() const noexcept;
};
