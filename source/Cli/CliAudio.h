#pragma once
#include "Audio/CSongRender.h"

struct CliCall;
struct CliWords;

/** `audio render`. */
int RenderAudio(const CliCall& call);
/** `audio autocue`. */
int FindAutoCue(const CliCall& call);
/** `audio loudness`. */
int MeasureLoudness(const CliCall& call);

/** The options --pitch, --tempo, --volume, --gain and --vocal, which were checked by the table. */
[[nodiscard]] SongSound SongSoundOf(const CliWords& words);
