#pragma once

/** How far a song is: nothing plays, it is being made ready, it plays (or is paused). */
enum class PlayState : long { kIdle = 0, kStarting = 1, kPlaying = 2 };
