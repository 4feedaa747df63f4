#pragma once
#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Audio/AllocationCounter.h"
#include "Audio/CAudioPlayer.h"
#include "Audio/ChainTest.h"
#include "Core/AlertHook.h"
#include "Platform/CAudioOutput_Null.h"
#include "Platform/Feeder.h"
#include "Platform/Patience.h"

/** An output at the pace of the scripted clock that keeps what it was given, and can lose its device. */
class TestOutput final : public CAudioOutput_Null {
public:
    OSErr Open(std::string_view device, const AudioBlocks& blocks) override {
        i_opened = device;
        i_blocks = blocks;
        if (Failed(i_openErr)) return i_openErr;
        i_feeder.Expect();
        return CAudioOutput_Null::Open("", blocks);
    }
    void Close() override {
        i_feeder.Forget();
        CAudioOutput_Null::Close();
    }
    bool IsLost() const override { return i_lostB; }
    OSErr Recover(std::string& device) override {
        ++i_recoveries;
        if (!i_otherB) return ioErr;
        device = "Other";
        i_lostB = false;
        return noErr;
    }
    void WaitForRoom(std::size_t frames, double seconds) override {
        if (Room() >= frames) ++i_vainL;
        i_feeder.NoteDone();
        CAudioOutput_Null::WaitForRoom(frames, seconds);
    }
    /** Until it is woken, unless it is but a look at a ring that is late. */
    void Rest(double seconds) override {
        ++i_restsL;
        const bool lateB = seconds < Feeder::kLook_MostT;
        if (!lateB) i_feeder.NoteDone();
        CAudioOutput_Null::Rest(lateB ? seconds : 3600);
    }
    bool NewDevice() override { return i_newB.exchange(false); }
    OSErr Deliver(std::span<const std::int16_t> stereo) override {
        if (!i_counterP) i_counterP = std::make_unique<AllocationCounter>();
        i_allocationsL = i_counterP->Count();
        const std::lock_guard guard(i_lock);
        i_samples.insert(i_samples.end(), stereo.begin(), stereo.end());
        return noErr;
    }
    [[nodiscard]] Samples Given() const {
        const std::lock_guard guard(i_lock);
        return i_samples;
    }

    OSErr i_openErr = noErr;
    std::string i_opened;
    AudioBlocks i_blocks;
    std::atomic<bool> i_lostB{false}, i_otherB{true}, i_newB{false};
    Feeder i_feeder;
    std::atomic<int> i_recoveries{0}, i_restsL{0}, i_vainL{0};   // i_vainL: waits for what was there already
    std::atomic<std::size_t> i_allocationsL{0};                  // of the render thread since its first block

private:
    mutable std::mutex i_lock;
    Samples i_samples = [] {
        Samples samples;
        samples.reserve(44100 * 2 * 30);
        return samples;
    }();
    std::unique_ptr<AllocationCounter> i_counterP;
};

struct TestSong final : CAudioSong {
    std::string Name() const override { return "song"; }
    Ref<CAS_AudioRing> AudioSpool() const override { return i_ringP; }
    long TrimStart() const override { return i_trim300; }
    bool IsCooperative() const override { return false; }
    long PlayState() const override { return 2; }
    OSErr PlayErr() const override { return i_err; }
    OSErr Seek(double position) override {
        i_sought.push_back(position);
        return noErr;
    }
    bool ExchangeSeeking(bool seekingB) override { return std::exchange(i_seekingB, seekingB); }

    Ref<CAS_AudioRing> i_ringP;
    long i_trim300 = 0;
    OSErr i_err = noErr;
    std::vector<double> i_sought;
    bool i_seekingB = true;
};

/** A song that plays into a TestOutput. */
class PlayerTest : public ChainTest {
protected:
    PlayerTest() {
        Alerts().clear();
        SetAlertHook([](std::string_view message, std::string_view detail) {
            const std::lock_guard guard(AlertLock());
            Alerts().push_back(std::string(message) + "|" + std::string(detail));
        });
    }
    ~PlayerTest() override { SetAlertHook(nullptr); }
    void TearDown() override {
        i_playerP = nullptr;
        ChainTest::TearDown();
        i_song.i_ringP = nullptr;
    }
    static std::mutex& AlertLock() {
        static std::mutex s_lock;
        return s_lock;
    }
    static std::vector<std::string>& Alerts() {
        static std::vector<std::string> s_alerts;
        return s_alerts;
    }
    static std::vector<std::string> AlertsSoFar() {
        const std::lock_guard guard(AlertLock());
        return Alerts();
    }
    OSErr Create(const Samples& samples) {
        i_song.i_ringP = Ring(samples);
        return CAudioPlayer::Create({.song = i_song, .output = i_output, .level = i_level}, i_settings, i_playerP);
    }
    /** Lets the clock run until `doneB`; false when it does not come. */
    bool Play(const std::function<bool()>& doneB) {
        for (const auto startT = std::chrono::steady_clock::now(); !doneB();) {
            if (std::chrono::steady_clock::now() - startT > kPatience) return false;
            if (i_output.i_feeder.IsDone()) i_clock.Advance(0.02);
            i_output.Wake();
            std::this_thread::sleep_for(std::chrono::microseconds(100));
        }
        return true;
    }
    bool PlayOut() {
        return Play([&] { return i_playerP->IsHeardOut(); });
    }

    TestOutput i_output;
    TestSong i_song;
    AudioLevel i_level;
    AudioPlayerSettings i_settings;
    Ref<CAudioPlayer> i_playerP;
};
