// Any bytes as a movie: pictures in the order of their times, or a status; after a seek the same. The first byte
// chooses the ending by which the demuxer is helped.
#include <array>
#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>

#include "../tests/Files/MemorySource.h"
#include "Movies/CMoviePainter.h"
#include "Movies/CMovieReader.h"

extern "C" {
#include <libavutil/frame.h>
}

namespace {

constexpr std::array<std::string_view, 8> kEndings = {"mp4", "avi", "mkv", "mpg", "wmv", "flv", "webm", "ts"};
constexpr int kMost = 40;   // pictures of one reading: the rest would only take time

void Check(bool goodB) {
    if (!goodB) __builtin_trap();
}

void ReadOn(CMovieReader& reader) {
    CMoviePainter painter(OrientationOf(reader.File().DisplayMatrix()));
    COffscreen pixels;
    double lastT = -HUGE_VAL;
    MovieFrame frame;
    for (int n = 0; n < kMost && !Failed(reader.Next(frame)); ++n) {
        Check(frame.timeT > lastT && frame.endT >= frame.timeT && frame.frameP->width > 0);
        lastT = frame.timeT;
        if (!Failed(painter.Paint(*frame.frameP, {40, 30}, pixels))) Check(pixels.bounds() == MakeRect(0, 0, 40, 30));
    }
}

}   // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* dataP, std::size_t sizeL) {
    if (sizeL == 0) return 0;
    MemorySource source(std::string(dataP + 1, dataP + sizeL));
    CMovieReader reader;
    if (Failed(reader.Open(source, kEndings[dataP[0] % kEndings.size()], false))) return 0;
    ReadOn(reader);
    if (!Failed(reader.Seek(0.5))) ReadOn(reader);
    return 0;
}
