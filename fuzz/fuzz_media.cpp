// A sound file of any form: the positions are those of what was read, the end is told once and for all, and a place
// sounds the same each time that it is sought. The decoders are the library's; cutting, counting and finding the way
// are ours.
#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "../tests/Files/MemorySource.h"
#include "Media/CMediaAudio.h"
#include "Media/MediaLength.h"

namespace {

using Samples = std::vector<std::int16_t>;
constexpr std::uint64_t kMost_Frames = 200'000;   // the rest of a long one would only take time

void Check(bool goodB) {
    if (!goodB) __builtin_trap();
}

Samples ReadSome(CMediaAudio& audio, std::size_t samplesL, OSErr& err) {
    Samples some(samplesL);
    std::size_t gotL = 0;
    const std::uint64_t beforeL = audio.Position();
    err = audio.Read(some, gotL);
    Check(gotL % 2 == 0 && gotL <= some.size() && audio.Position() == beforeL + gotL / 2);
    Check(!Failed(err) || gotL == 0);
    Check(audio.Position() <= audio.TotalFrames());
    some.resize(gotL);
    return some;
}

void SeekAndRead(CMediaAudio& audio, std::uint64_t frame, Samples& some) {
    OSErr err = audio.Seek(frame);
    some.clear();
    if (Failed(err)) return;
    Check(audio.Position() == frame || (audio.Position() < frame && audio.Position() == audio.TotalFrames()));
    some = ReadSome(audio, 2'000, err);
}

}   // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* dataP, std::size_t sizeL) {
    std::uint32_t seed = 1;
    for (std::size_t n = 0; n < sizeL; ++n) seed = seed * 31 + dataP[n];
    std::mt19937 random(seed);
    MemorySource source(std::string(reinterpret_cast<const char*>(dataP), sizeL));
    const char* const kExtensions[] = {"", "mp3", "aac", "wav"};
    std::uint32_t length300 = 0;   // no longer than silence could be in so few bytes
    if (!Failed(FindMediaLength(source, kExtensions[seed % 4], MediaKind::kSound, length300)))
        Check(length300 > 0 && length300 / 300.0 * 100 <= static_cast<double>(sizeL) + 1);
    Check(!Failed(source.Seek(0)));
    CMediaAudio audio;
    if (Failed(audio.Open(source, kExtensions[seed % 4]))) return 0;
    Check(audio.Position() == 0 && audio.Facts().channels >= 0);

    std::uint64_t framesL = 0;
    if (random() % 2 == 0) {   // else the first seek meets a file that was never read
        OSErr err = noErr;
        while (!Failed(err) && framesL < kMost_Frames) framesL += ReadSome(audio, random() % 5'000 + 2, err).size() / 2;
        if (err == eofErr) Check(audio.IsTotalExact() && audio.TotalFrames() == framesL);
    }
    const std::uint64_t mostL = std::min(std::max<std::uint64_t>(audio.TotalFrames(), 1), kMost_Frames);
    for (int round = 0; round < 3; ++round) {
        const std::uint64_t frame = random() % (mostL + 100);
        Samples first, again;
        // Once to know the way there, which is then behind the reader; from then on it must not matter where he stood.
        SeekAndRead(audio, frame, first);
        SeekAndRead(audio, frame, first);
        SeekAndRead(audio, random() % (mostL + 100), again);
        if (audio.Position() <= frame) SeekAndRead(audio, frame + 100'000, again);
        SeekAndRead(audio, frame, again);
        if (audio.DamagedPackets() == 0 && audio.IsTotalExact()) Check(first == again);
    }
    return 0;
}
