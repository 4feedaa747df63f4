#include "Audio/CTimePitch.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <thread>

#include "Audio/AllocationCounter.h"
#include "Audio/ToneTest.h"

namespace {

Sound Noise(std::size_t frames, unsigned seed = 1) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> level(-1, 1);
    Sound sound(frames * 2);
    for (float& sample : sound) sample = level(random);
    return sound;
}

}   // namespace

TEST(CTimePitch, LeavesTheSamplesAloneWithoutPitchAndTempo) {
    const Sound sound = Noise(30000);
    for (const std::size_t block : {1U, 147U, 2048U, 5000U}) {
        CTimePitch engine;
        SoundSource source(sound, 700, 3);
        ASSERT_EQ(RenderAll(engine, source, block), sound) << block;
        EXPECT_EQ(engine.Position(), 30000);
    }
    CTimePitch engine;
    ASSERT_EQ(engine.Set(3, 1.2), noErr);
    ASSERT_EQ(engine.Set(0, 1.0), noErr);   // and back, before anything is heard
    SoundSource source(sound);
    EXPECT_EQ(RenderAll(engine, source), sound);
}

TEST(CTimePitch, RefusesAndLimits) {
    CTimePitch engine;
    EXPECT_EQ(engine.SetTempo(std::numeric_limits<double>::quiet_NaN()), paramErr);
    EXPECT_EQ(engine.SetTempo(std::numeric_limits<double>::infinity()), paramErr);
    EXPECT_EQ(engine.Tempo(), 1.0);
    EXPECT_EQ(engine.SetTempo(0), noErr);
    EXPECT_EQ(engine.Tempo(), 0.25);
    EXPECT_EQ(engine.Set(-100, 1e9), noErr);
    EXPECT_EQ(engine.Tempo(), 4.0);
    EXPECT_EQ(engine.Pitch(), -12);
}

TEST(CTimePitch, TonesHaveTheirPitchAndSongsTheirLength) {
    constexpr std::size_t kFrames = 3 * 44100 + 17;
    const Sound tone = Tone(440, kFrames);
    constexpr struct {
        int pitch;
        double tempo;
    } kCases[] = {{2, 1.0},  {0, 1.1}, {2, 1.1},  {-12, 0.8}, {12, 1.25},
                  {0, 0.25}, {7, 4.0}, {-1, 1.0}, {-12, 4.0}, {12, 0.25}};
    for (const auto& c : kCases) {
        SCOPED_TRACE(testing::Message() << "pitch " << c.pitch << ", tempo " << c.tempo);
        CTimePitch engine;
        ASSERT_EQ(engine.Set(c.pitch, c.tempo), noErr);
        SoundSource source(tone);
        const Sound out = RenderAll(engine, source);
        EXPECT_EQ(out.size() / 2, static_cast<std::size_t>(std::ceil(static_cast<double>(kFrames) / c.tempo)));
        const double wanted = 440 * std::pow(2.0, c.pitch / 12.0);
        EXPECT_NEAR(MeasureHertz(out, 4000, out.size() / 2 - 4000), wanted, wanted * (c.tempo < 0.5 ? 0.004 : 0.002));
        EXPECT_NEAR(engine.Position(), kFrames, c.tempo);
    }
}

TEST(CTimePitch, TheTailIsWhole) {
    // The last 150 ms are the only sound: at each tempo they come out in full, and nothing after them.
    constexpr std::size_t kSilent = 44100, kSound = 6615;
    Sound song(kSilent * 2, 0.0F);
    const Sound tone = Tone(440, kSound);
    song.insert(song.end(), tone.begin(), tone.end());
    for (const double tempo : {0.8, 1.0, 1.25}) {
        CTimePitch engine;
        ASSERT_EQ(engine.Set(tempo == 1.0 ? 0 : 1, tempo), noErr);
        SoundSource source(song);
        const Sound out = RenderAll(engine, source);
        const std::size_t frames = out.size() / 2;
        EXPECT_EQ(frames, static_cast<std::size_t>(std::ceil((kSilent + kSound) / tempo)));
        double power = 0;
        for (const float sample : out) power += static_cast<double>(sample) * static_cast<double>(sample);
        EXPECT_NEAR(power / (0.25 * kSound / tempo), 1, 0.15) << tempo;
    }
}

TEST(CTimePitch, ChangesLeaveNoClick) {
    constexpr struct {
        int fromPitch;
        double fromTempo;
        int pitch;
        double tempo;
    } kCases[] = {{0, 1.0, 1, 1.0}, {1, 1.0, 0, 1.0},  {0, 1.0, 0, 1.1},    {0, 1.1, 0, 1.0}, {2, 1.1, 2, 1.2},
                  {0, 1.0, 5, 0.8}, {5, 1.0, -5, 1.0}, {-12, 1.0, 12, 1.0}, {0, 0.5, 0, 2.0}};
    for (const auto& c : kCases) {
        SCOPED_TRACE(testing::Message() << c.fromPitch << ", " << c.fromTempo << " to " << c.pitch << ", " << c.tempo);
        CTimePitch engine;
        ASSERT_EQ(engine.Set(c.fromPitch, c.fromTempo), noErr);
        SoundSource source(Tone(440, 4 * 44100));
        std::size_t changedAt = 0;
        const Sound out = RenderAll(engine, source, 2048, [&](std::size_t frames) {
            if (changedAt > 0 || frames < 40000) return;
            changedAt = frames;
            ASSERT_EQ(engine.Set(c.pitch, c.tempo), noErr);
        });
        ASSERT_GT(changedAt, 0U);
        const double dB = MeasureClick(out, changedAt - 200, changedAt + 3000);
        RecordProperty("click_dB", std::to_string(dB));
        EXPECT_LT(dB, -60);
        const double wanted = 440 * std::pow(2.0, c.pitch / 12.0);
        EXPECT_NEAR(MeasureHertz(out, changedAt + 2000, changedAt + 22000), wanted, wanted * 0.004);
        // No hole either: the tone never falls below half its height for as long as one period.
        for (std::size_t n = changedAt; n < changedAt + 3000; n += 50) {
            float most = 0;
            for (std::size_t m = n; m < n + 300; ++m) most = std::max(most, std::abs(out[2 * m]));
            EXPECT_GT(most, 0.25F) << n - changedAt;
        }
    }
}

TEST(CTimePitch, PositionsStayTrueThroughAHundredChanges) {
    // Knocks in silence: each must be heard where the position says.
    constexpr std::size_t kFrames = 20 * 44100, kEvery = 22050;
    Sound song(kFrames * 2, 0.0F);
    for (std::size_t at = kEvery; at < kFrames; at += kEvery)
        for (std::size_t n = 0; n < 4000; ++n) song[2 * (at + n)] = song[2 * (at + n) + 1] = n % 40 < 20 ? 0.8F : -0.8F;
    CTimePitch engine;
    SoundSource source(song);
    std::mt19937 random(5);
    Sound part(256 * 2);
    std::size_t block = 0, knocks = 0;
    double quietUntil = 0;
    for (OSErr err = noErr; !Failed(err); ++block) {
        if (block % 30 == 0) {
            const auto stepL = static_cast<double>(random() % 16);
            ASSERT_EQ(engine.Set(static_cast<int>(random() % 9) - 4, 0.5 + stepL / 10), noErr);
        }
        const double before = engine.Position();
        std::size_t frames = 0;
        err = engine.Render(part, frames, source);
        const double step = frames == 0 ? 0 : (engine.Position() - before) / static_cast<double>(frames);
        for (std::size_t n = 0; n < frames; ++n) {
            const double place = before + static_cast<double>(n) * step;
            if (place < quietUntil || std::abs(part[2 * n]) < 0.3F) continue;
            const double off = std::remainder(place, static_cast<double>(kEvery));
            EXPECT_LT(std::abs(off), 0.06 * 44100)
                << "at " << place;   // the engine leaves out up to that much at tempo 2
            ++knocks;
            quietUntil = place + kEvery / 2;
        }
    }
    EXPECT_EQ(knocks, kFrames / kEvery - 1);
    EXPECT_NEAR(engine.Position(), kFrames, 4);
}

TEST(CTimePitch, ALateSourceOnlyShortensTheBlock) {
    const Sound tone = Tone(440, 44100);
    CTimePitch prompt, late;
    ASSERT_EQ(prompt.Set(2, 1.1), noErr);
    ASSERT_EQ(late.Set(2, 1.1), noErr);
    SoundSource promptSource(tone), lateSource(tone, 50, 2);
    EXPECT_EQ(RenderAll(late, lateSource, 999).size(), RenderAll(prompt, promptSource, 999).size());
}

TEST(CTimePitch, RestartsAtTheFirstFrameOfWhatComes) {
    const Sound sound = Noise(9000);
    CTimePitch engine;
    ASSERT_EQ(engine.Set(4, 1.3), noErr);
    SoundSource first(Noise(100000, 2));
    Sound part(4096 * 2);
    std::size_t frames = 0;
    ASSERT_EQ(engine.Render(part, frames, first), noErr);
    ASSERT_EQ(engine.Set(0, 1.0), noErr);
    engine.Restart();
    SoundSource second(sound);
    EXPECT_EQ(RenderAll(engine, second), sound);
    engine.Restart();
    SoundSource third(Sound{});
    EXPECT_EQ(engine.Render(part, frames, third), eofErr);
    EXPECT_EQ(frames, 0U);
}

TEST(CTimePitch, AThousandChangingBlocksTakeNothingFromTheHeap) {
    CTimePitch engine;
    SoundSource source(Noise(44100 * 60));
    std::mt19937 random(3);
    Sound part(2048 * 2);
    std::size_t counted = 0, given = 0;
    for (int n = 0; n < 1000; ++n) {
        ASSERT_EQ(engine.Set(static_cast<int>(random() % 25) - 12, 0.25 + static_cast<double>(random() % 16) / 4),
                  noErr);
        const std::size_t size = 1 + random() % 2048;
        const AllocationCounter counter;
        std::size_t frames = 0;
        ASSERT_FALSE(Failed(engine.Render(std::span(part).first(size * 2), frames, source)) && given == 0);
        given += frames;
        counted += counter.Count();
    }
    EXPECT_EQ(counted, 0U);
    EXPECT_GT(given, 500000U);
    const AllocationCounter counter;
    ASSERT_EQ(engine.Set(1, 1.5), noErr);
    EXPECT_GT(counter.Count(), 0U);   // the engine's own, on the setter's thread: so the counter sees the library
}

TEST(CTimePitch, SettersRunBesideTheRenderThread) {
    CTimePitch engine;
    std::atomic<bool> doneB{false};
    std::thread setter([&] {
        std::mt19937 random(9);
        while (!doneB) {
            if (Failed(engine.Set(static_cast<int>(random() % 5) - 2, 0.9 + static_cast<double>(random() % 3) / 10)))
                return;
            std::this_thread::yield();
        }
    });
    SoundSource source(Tone(440, 3 * 44100));
    const Sound out = RenderAll(engine, source, 512);
    doneB = true;
    setter.join();
    EXPECT_GT(out.size() / 2, 3U * 40000);
    EXPECT_NEAR(engine.Position(), 3 * 44100, 2);
}
