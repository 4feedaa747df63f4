#pragma once
#include <span>
#include <string>

#include "Cli/CliContext.h"

/** `library list`, `show`, `set`, `check`, `rebuild` and `restore`: what a librarian does without the desktop. Reading
    works beside a host that has the library; changing it is refused then.
    The root is a folder that holds a library itself, or one as the host takes it (ROOT/Music/Vopla).
    JSON  a song is one object keyed by its meta keys, one a line; `check` {"songs","playlists","singers","problems"};
          `restore` without a name lists {"copy","bytes"}, with one {"restored"}; without --json lines for people. */
int RunLibrary(const CliContext& context, std::span<const std::string> words);
