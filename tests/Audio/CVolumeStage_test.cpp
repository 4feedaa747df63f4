#include "Audio/CVolumeStage.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

#include "Audio/ToneTest.h"

namespace {
constexpr VocalMode kModes[] = {VocalMode::kBoth, VocalMode::kRightOnly, VocalMode::kLeftOnly, VocalMode::kVocalCut};

/** One frame as the modes are told. */
void SlowFrame(VocalMode mode, float volume, float& left, float& right) {
    const float l = left, r = right;
    if (mode == VocalMode::kBoth) left = l * volume, right = r * volume;
    if (mode == VocalMode::kRightOnly) left = right = r * volume;
    if (mode == VocalMode::kLeftOnly) left = right = l * volume;
    if (mode == VocalMode::kVocalCut) left = right = (r - l) * volume;
}

Sound Two(std::size_t frames) {
    Sound sound = Tone(440, frames);
    for (std::size_t n = 1; n < sound.size(); n += 2) sound[n] *= -0.3F;
    return sound;
}
}   // namespace

TEST(CVolumeStage, ConstantSettingsAreExactProducts) {
    const Sound in = Two(1000);
    for (const VocalMode mode : kModes)
        for (const float volume : {1.0F, 0.3F, 0.0F, 1.7F})
            for (const float gain : {1.0F, 0.7F}) {
                CVolumeStage stage;
                stage.SetVolume(volume);
                stage.SetGain(gain);
                stage.SetVocalMode(mode);
                Sound out = in, wanted = in;
                stage.Process(out);
                for (std::size_t n = 0; n < wanted.size(); n += 2)
                    SlowFrame(mode, volume * gain, wanted[n], wanted[n + 1]);
                ASSERT_EQ(out, wanted) << static_cast<int>(mode) << ", " << volume;
            }
}

TEST(CVolumeStage, ChangesLeaveNoClickAndEndExactly) {
    const auto change = [](const char* nameZ, auto before, auto after, VocalMode mode, float volume) {
        SCOPED_TRACE(nameZ);
        CVolumeStage stage;
        before(stage);
        const Sound in = Two(20000);
        Sound out = in;
        for (std::size_t at = 0; at < out.size(); at += 1000) {
            if (at == 10000) after(stage);
            stage.Process(std::span(out).subspan(at, 1000));
        }
        EXPECT_LT(MeasureClick(out, 4000, 7000), -60);
        for (std::size_t n = 12000; n < in.size(); n += 2) {
            float left = in[n], right = in[n + 1];
            SlowFrame(mode, volume, left, right);
            ASSERT_EQ(out[n], left);
            ASSERT_EQ(out[n + 1], right);
        }
    };
    const auto none = [](CVolumeStage&) {};
    change(
        "down", none, [](auto& stage) { stage.SetVolume(0.1F); }, VocalMode::kBoth, 0.1F);
    change(
        "mute", none, [](auto& stage) { stage.SetMute(true); }, VocalMode::kBoth, 0);
    change(
        "unmute", [](auto& stage) { stage.SetMute(true); }, [](auto& stage) { stage.SetMute(false); }, VocalMode::kBoth,
        1);
    change(
        "cut", none, [](auto& stage) { stage.SetVocalMode(VocalMode::kVocalCut); }, VocalMode::kVocalCut, 1);
    change(
        "sides", [](auto& stage) { stage.SetVocalMode(VocalMode::kLeftOnly); },
        [](auto& stage) { stage.SetVocalMode(VocalMode::kRightOnly); }, VocalMode::kRightOnly, 1);
    change(
        "gain", none, [](auto& stage) { stage.SetGain(2.0F); }, VocalMode::kBoth, 2);
}

TEST(CVolumeStage, ASliderThatMovesAllTheTimeLeavesNoClick) {
    CVolumeStage stage;
    Sound out = Tone(440, 44100);
    std::mt19937 random(4);
    for (std::size_t at = 0; at + 200 <= out.size(); at += 200) {
        stage.SetVolume(static_cast<float>(random() % 100) / 100);
        stage.Process(std::span(out).subspan(at, 200));
    }
    EXPECT_LT(MeasureClick(out, 200, 44000), -60);
}

TEST(CVolumeStage, RefusesWhatIsNoFactor) {
    CVolumeStage stage;
    for (const float bad : {std::numeric_limits<float>::quiet_NaN(), -1.0F, std::numeric_limits<float>::infinity()}) {
        stage.SetVolume(bad);
        stage.SetGain(bad);
    }
    EXPECT_EQ(stage.Volume(), 1.0F);
    EXPECT_EQ(stage.Gain(), 1.0F);
    stage.SetMute(true);
    Sound bad{std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()};
    stage.Process(bad);
    EXPECT_EQ(bad, (Sound{0, 0}));
}
