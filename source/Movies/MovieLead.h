#pragma once
#include <functional>

/** How far the sound of a movie is heard. */
struct MovieLead {
    double seconds = 0;      // of the song
    double rate = 1;         // seconds of song a second: the tempo
    bool runningB = false;   // false: paused
    bool endedB = false;     // all of it was heard
};
/** Asked on the main thread, at each idle of the movie. */
using MovieLeader = std::function<MovieLead()>;
