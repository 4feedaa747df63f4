// Pitch +2 and tempo 1.1 through the chain that plays, against the soundstretch program on the same samples in the same
// run: bench_chain [SECONDS of sound, 300]. The program's time without its file work is taken as its time less that of
// a run without any change, which reads and writes as much.
#include <SoundTouch.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "Audio/CAS_AudioRing.h"
#include "Audio/CAS_Memory.h"
#include "Audio/CAS_SpoolRec.h"
#include "BenchClock.h"
#include "BenchHost.h"
#include "Media/SampleForms.h"
#include "Threads/CThreadManager.h"

namespace {

using Samples = std::vector<std::int16_t>;
constexpr int kRounds = 5;
constexpr std::size_t kBlock = 2048 * 2;

/** Chords over noise: something for the engine to look for. */
Samples Music(std::size_t frames) {
    std::mt19937 random(1);
    std::normal_distribution<double> noise(0, 0.02);
    Samples samples(frames * 2);
    for (std::size_t n = 0; n < frames; ++n) {
        const double t = static_cast<double>(n) / 44100;
        const double base = 220 * std::pow(2.0, std::floor(std::fmod(t * 2, 12)) / 12);
        double sum = 0;
        for (const double part : {1.0, 1.26, 1.5, 2.0, 3.01}) sum += 0.12 * std::sin(2 * M_PI * base * part * t);
        for (std::size_t m = 0; m < 2; ++m)
            samples[2 * n + m] = static_cast<std::int16_t>(20000 * (sum + noise(random)));
    }
    return samples;
}

struct Run {
    double allT = 0, worstBlockT = 0;
    std::size_t frames = 0;
};

Run Chain(const Samples& samples) {
    const auto bytes = std::as_bytes(std::span(samples));
    const Ref<CAS_AudioRing> ringP = MakeAudioRing();
    if (Failed(ringP->SetPitchTempo(2, 1.1))) return {};
    const auto sourceP = MakeRef<CAS_Memory>(std::vector<std::byte>(bytes.begin(), bytes.end()));
    std::vector<float> block(kBlock);
    Samples out;
    out.reserve(samples.size());
    Run run;
    const double startT = Now();
    std::uint64_t sizeL = 0;
    if (Failed(StartSpooling(sourceP, ringP, false)) || Failed(ringP->Open(false, sizeL))) return {};
    for (;;) {
        const double blockT = Now();
        std::size_t gotL = 0;
        if (Failed(ringP->Read(std::as_writable_bytes(std::span(block)), gotL))) break;
        const std::size_t countL = gotL / sizeof(float);
        out.resize(out.size() + countL);
        FloatToInteger(std::span(block).first(countL), std::span(out).last(countL));
        run.worstBlockT = std::max(run.worstBlockT, Now() - blockT);
    }
    run.allT = Now() - startT;
    run.frames = out.size() / 2;
    ringP->Abort();
    if (Failed(ringP->WaitPumped())) return run;   // aborted: its end
    return run;
}

/** Blocks of 2,048 frames, each with another pitch and tempo; the setting itself is not timed: it is another thread's.
 */
Run Changing(const Samples& samples) {
    class Source final : public CTimePitchSource {
    public:
        explicit Source(const Samples& all) : i_all(all) {}
        OSErr ReadFrames(std::span<float> stereo, std::size_t& frames) override {
            frames = std::min(stereo.size(), i_all.size() - i_at) / 2;
            IntegerToFloat(std::span(i_all).subspan(i_at, frames * 2), stereo);
            i_at += frames * 2;
            return frames == 0 ? eofErr : noErr;
        }

    private:
        const Samples& i_all;
        std::size_t i_at = 0;
    } source(samples);
    CTimePitch engine;
    std::vector<float> block(kBlock);
    std::mt19937 random(1);
    Run run;
    for (std::size_t frames = 1; frames > 0; run.frames += frames) {
        if (Failed(engine.Set(static_cast<int>(random() % 13) - 6, 0.8 + static_cast<double>(random() % 41) / 100)))
            break;
        const double startT = Now();
        if (Failed(engine.Render(block, frames, source))) break;
        const double tookT = Now() - startT;
        run.allT += tookT;
        run.worstBlockT = std::max(run.worstBlockT, tookT);
    }
    return run;
}

double Bare(const Samples& samples) {
    constexpr std::size_t kProgram_Samples = 6720;
    soundtouch::SoundTouch engine;
    engine.setSampleRate(44100);
    engine.setChannels(2);
    engine.setTempoChange(10);
    engine.setPitchSemiTones(2);
    std::vector<float> buffer(kProgram_Samples);
    Samples out;
    out.reserve(samples.size());
    const auto receive = [&] {
        while (const unsigned frames = engine.receiveSamples(buffer.data(), kProgram_Samples / 2)) {
            out.resize(out.size() + frames * 2);
            FloatToInteger(std::span(buffer).first(frames * 2), std::span(out).last(frames * 2));
        }
    };
    const double startT = Now();
    for (std::size_t at = 0; at < samples.size(); at += kProgram_Samples) {
        const auto part = std::span(samples).subspan(at, std::min(kProgram_Samples, samples.size() - at));
        IntegerToFloat(part, buffer);
        engine.putSamples(buffer.data(), static_cast<unsigned>(part.size() / 2));
        receive();
    }
    engine.flush();
    receive();
    return Now() - startT;
}

void WriteWav(const std::filesystem::path& file, const Samples& samples) {
    const auto dataL = static_cast<std::uint32_t>(samples.size() * 2);
    const std::uint32_t head[] = {0x46464952, dataL + 36, 0x45564157, 0x20746D66, 16,   0x00020001,
                                  44100,      176400,     0x00100004, 0x61746164, dataL};
    std::ofstream out(file, std::ios::binary);
    out.write(reinterpret_cast<const char*>(head), sizeof head);
    out.write(reinterpret_cast<const char*>(samples.data()), static_cast<std::streamsize>(dataL));
}

double Program(const std::string& command) {
    const double startT = Now();
    return std::system(command.c_str()) == 0 ? Now() - startT : -1;
}

}   // namespace

int main(int argc, char** argv) {
    const std::size_t seconds = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 300;
    const Samples samples = Music(seconds * 44100);
    std::string folder = (std::filesystem::temp_directory_path() / "bench-chain-XXXXXX").string();
    if (::mkdtemp(folder.data()) == nullptr) return 1;
    WriteWav(folder + "/in.wav", samples);
    const std::string stretch = "soundstretch " + folder + "/in.wav " + folder + "/out.wav ",
                      quiet = " >/dev/null 2>&1";

    BenchHost host;
    CThreadManager manager;
    Run best;
    double programT = 1e9, bareT = 1e9, worstT = 0;
    for (int n = 0; n < kRounds; ++n) {   // by turns: the machine's moods meet both
        const Run run = Chain(samples);
        if (best.allT == 0 || run.allT < best.allT) best = run;
        worstT = std::max(worstT, run.worstBlockT);
        programT = std::min(programT, Program(stretch + "-pitch=2 -tempo=10" + quiet));
        bareT = std::min(bareT, Bare(samples));
    }
    std::filesystem::remove_all(folder);
    const double allF = static_cast<double>(seconds);
    std::printf("chain: %.3f s, %.0f times real time, %zu frames, worst block %.2f ms (best run %.2f ms)\n", best.allT,
                allF / best.allT, best.frames, worstT * 1000, best.worstBlockT * 1000);
    std::printf("soundstretch: %.3f s, %.0f times real time; the bare library %.3f s\n", programT, allF / programT,
                bareT);
    std::printf("ratio: %.2f to soundstretch, %.2f to the bare library\n", programT / best.allT, bareT / best.allT);
    const Run changing = Changing(samples);
    std::printf("a change at each block of %.1f ms: %.2f ms a block, worst %.2f ms\n", kBlock / 2 / 44.1,
                changing.allT * 1000 / (static_cast<double>(changing.frames) / (kBlock / 2)),
                changing.worstBlockT * 1000);
    return 0;
}
