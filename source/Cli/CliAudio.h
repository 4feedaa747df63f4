#pragma once
#include <optional>
#include <span>
#include <string>

#include "Audio/CSongRender.h"
#include "Cli/CliContext.h"
#include "Cli/CliWords.h"

/** `audio render`, `audio autocue` and `audio loudness`. */
int RunAudio(const CliContext& context, std::span<const std::string> words);

/** The options --pitch, --tempo, --volume and --vocal; nothing when one does not read as it should. */
[[nodiscard]] std::optional<SongSound> ReadSongSound(const CliWords& words);
