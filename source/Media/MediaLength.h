#pragma once
#include <cstdint>
#include <string_view>

#include "Media/CMediaFormat.h"

/** How long the sound, or the picture, of a media file plays: as the container tells, from the frames of MPEG audio, or
    from the packets of another stream without a container. Nothing is decoded, and nothing is guessed: a bit rate that
    may change, a file that is damaged or no media, and a length that its bytes cannot hold give none.
    Units    300ths of a second.
    Threads  a worker: reads the file, mostly its head.
    Errors   paramErr: no length can be told. The source's own. */
OSErr FindMediaLength(CByteSource& source, std::string_view extension, MediaKind kind, std::uint32_t& length300);

/** The same of CD+G alone, whose packets are the time; paramErr for bytes that are mostly no packets. */
OSErr FindGraphicsLength(CByteSource& source, std::uint32_t& length300);
