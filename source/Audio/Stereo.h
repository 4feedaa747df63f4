#pragma once
#include "Platform/CAudioOutput.h"

/** Samples of one frame on the road from the ring to the output: left, right. */
inline constexpr std::size_t kChannels = kAudioOutput_Channels;
