#pragma once
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>
#include <span>
#include <vector>

#include "Audio/CAS_AudioRing.h"
#include "Audio/CAS_Memory.h"
#include "Audio/CAS_SpoolRec.h"
#include "Audio/ToneTest.h"
#include "Threads/ThreadTest.h"

using Samples = std::vector<std::int16_t>;

inline std::vector<std::byte> BytesOf(const Samples& samples) {
    const auto bytes = std::as_bytes(std::span(samples));
    return {bytes.begin(), bytes.end()};
}
/** Every sample from -32767 to 32767 may be there. */
inline Samples RandomSamples(std::size_t frames, unsigned seed = 1) {
    std::mt19937 random(seed);
    Samples samples(frames * 2);
    for (auto& sample : samples) sample = static_cast<std::int16_t>(static_cast<int>(random() % 65535) - 32767);
    return samples;
}
inline Samples AsSamples(const Sound& sound) {
    Samples samples(sound.size());
    FloatToInteger(sound, samples);
    return samples;
}
inline Sound AsSound(const Samples& samples) {
    Sound sound(samples.size());
    IntegerToFloat(samples, sound);
    return sound;
}

/** All that a spool gives until its end, as T, in reads of `block` of them. A spool that is late is asked again. */
template <class T>
std::vector<T> ReadAll(CSpooler& spool, std::size_t block, OSErr wanted = eofErr) {
    std::vector<T> all, part(block);
    for (;;) {
        std::size_t gotL = 0;
        const OSErr err = spool.Read(std::as_writable_bytes(std::span(part)), gotL);
        if (Failed(err)) {
            EXPECT_EQ(err, wanted);
            return all;
        }
        all.insert(all.end(), part.begin(), part.begin() + static_cast<std::ptrdiff_t>(gotL / sizeof(T)));
        if (gotL == 0) std::this_thread::yield();
    }
}

/** Songs in memory, pumped into a ring. */
class ChainTest : public ThreadTest {
protected:
    /** Started and open for reading. */
    Ref<CAS_AudioRing> Ring(const Samples& samples) {
        Ref<CAS_AudioRing> ringP = MakeAudioRing();
        i_rings.push_back(ringP);
        EXPECT_EQ(StartSpooling(MakeRef<CAS_Memory>(BytesOf(samples)), ringP, false), noErr);
        return ringP;
    }
    static void OpenForRead(CSpooler& spool) {
        std::uint64_t sizeL = 0;
        EXPECT_EQ(spool.Open(false, sizeL), noErr);
    }
    void TearDown() override {
        for (const auto& ringP : i_rings) ringP->Abort();
        for (const auto& ringP : i_rings)
            if (Failed(ringP->WaitPumped())) continue;   // aborted
    }
    std::vector<Ref<CAS_AudioRing>> i_rings;
};
