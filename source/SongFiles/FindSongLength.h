#pragma once
#include <cstdint>

#include "Library/CSongFiles.h"

/** The file that would play, or sound: the zip, the sound of a pair, or what stands in the place of the picture.
    Threads  a worker: looks for it.
    Errors   fnfErr, also when the sound of a pair is lost. */
OSErr FindPlayedFile(CSongFiles& files, CFileRef& file);

/** How long a song plays, by the files that would play: the sound of a pair, of a zip or of a movie; the picture of a
    movie without sound; the packets of graphics alone.
    Units    300ths of a second.
    Threads  a worker: looks for the files and reads their heads. Logs nothing, as a library has thousands of them.
    Errors   paramErr: damaged, or no length can be told; fnfErr: no file; what reading says. */
OSErr FindSongLength(CSongFiles& files, std::uint32_t& length300);
