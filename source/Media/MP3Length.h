#pragma once
#include <cstdint>

#include "Files/CByteSource.h"

/** How many samples an MPEG audio file (layers I to III, without a container) plays, without decoding any: from the
    encoder's own count where that agrees with the file's size, from the size where samples of the file say that its bit
    rate is constant, else by counting all frames. The delay and the padding that the encoder tells are taken off.
    Threads  a worker: reads the file.
    Errors   paramErr: no such file, or too damaged for a true answer. Random bytes cost the 128 KB that are searched
             for a beginning. The source's own.
    Source   ISO/IEC 11172-3 and 13818-3 (frame headers); the Xing, LAME and VBRI headers as encoders publish them. */
struct MP3Length {
    std::uint64_t samplesL = 0;   // of each channel
    std::uint32_t rateL = 0;      // samples a second

    static OSErr Find(CByteSource& source, MP3Length& length);
};
