// bench_playcontrol [SECONDS_OF_DRIFT [SONGS]]: through the play control on SDL's dummy driver. Medians and worst of 20
// from the order to play to the first block of the song in the output, for an MP3 with CD+G, a zip of both, and a song
// that was loaded ahead; the longest time that the main thread was away from its loop meanwhile, and how long it worked
// in one turn (the rest is other programs'); picture against sound
// over so many seconds (300) on an output that is 200 ppm slow; and memory over so many songs (200) in a row on a clock
// 50 times as fast.
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "BenchClock.h"
#include "Cli/CCliHost.h"
#include "Graphics/CGraphicsPorts.h"
#include "Meta/CMetaManager.h"
#include "Platform/CAudioOutput_Null.h"
#include "Platform/CAudioOutput_SDL.h"
#include "Platform/CClock.h"
#include "Platform/CUserInterface_Plain.h"
#include "Platform/Heap.h"
#include "Play/CPlayControl.h"
#include "Play/CPlayHost.h"
#include "SongFiles/CSongFileWork.h"
#include "Values/CCFPrefDictionary.h"

namespace {

constexpr int kBench_Rounds = 20;

void Must(bool doneB, const char* whatZ) {
    if (doneB) return;
    std::fprintf(stderr, "bench_playcontrol: %s\n", whatZ);
    std::exit(1);
}

/** The dummy driver, which notes when it was first given sound. */
class NotingOutput final : public CAudioOutput {
public:
    explicit NotingOutput(std::atomic<double>& firstT) : i_firstT(firstT) {}
    std::vector<std::string> DeviceNames() override { return i_output.DeviceNames(); }
    OSErr Open(std::string_view device, const AudioBlocks& blocks) override { return i_output.Open(device, blocks); }
    void Close() override { i_output.Close(); }
    OSErr Queue(std::span<const std::int16_t> stereo) override {
        const bool soundB = std::ranges::any_of(stereo, [](std::int16_t sample) { return sample != 0; });
        const OSErr err = i_output.Queue(stereo);
        if (double none = 0; soundB) i_firstT.compare_exchange_strong(none, Now());
        return err;
    }
    std::size_t Room() const override { return i_output.Room(); }
    void WaitForRoom(std::size_t frames, double seconds) override { i_output.WaitForRoom(frames, seconds); }
    void Rest(double seconds) override { i_output.Rest(seconds); }
    void Wake() override { i_output.Wake(); }
    std::uint64_t FramesPlayed() const override { return i_output.FramesPlayed(); }
    std::uint64_t FramesLate() const override { return i_output.FramesLate(); }

private:
    CAudioOutput_SDL i_output;
    std::atomic<double>& i_firstT;
};

class Bench final : private CSongDatabaseHost, private CPlayHost {
public:
    Bench() {
        i_preferences.SetBool("Stop between tracks", true);
        i_controlP = std::make_unique<CPlayControl>(static_cast<CPlayHost&>(*this));
        i_listP = &i_database.AddPlaylist(kSourceDB_PLAYLIST, "bench");
    }
    PLItemID Add(const std::string& audio, const std::string& video) {
        CSong& song = *i_database.CreateSong();
        const bool zipB = audio.ends_with(".zip");
        song.Meta().SetSongFile(zipB ? "Sfs2"_key : "Sfs0"_key,
                                {.status = SDB_SongFileStatus_REFERENCE, .ref = CFileRef(audio)});
        if (!video.empty())
            song.Meta().SetSongFile("Sfs1"_key, {.status = SDB_SongFileStatus_REFERENCE, .ref = CFileRef(video)});
        return i_listP->AddItem({.target = song.GetSongID()});
    }
    void Pass() {
        const double beforeT = Now(), workedT = Worked();
        i_controlP->VideoIdle(false);
        i_host.MainLoop().Wait(0.002);
        const double waitedT = Now();
        while (i_host.MainLoop().PumpOne(kMessage_All)) {
        }
        i_longestT = std::max(i_longestT, Now() - std::max(waitedT, beforeT + 0.002));
        i_longestWorkT = std::max(i_longestWorkT, Worked() - workedT);
    }
    template <class Done>
    void RunUntil(Done&& doneB, double mostT = 30) {
        for (const double startT = Now(); !doneB(); Pass()) Must(Now() - startT < mostT, "no end");
    }
    void RunFor(double seconds) {
        for (const double untilT = Now() + seconds; Now() < untilT;) Pass();
    }

    void Starts(const char* whatZ, PLItemID item, PLItemID before) {
        std::vector<double> seconds;
        for (int n = 0; n < kBench_Rounds; ++n) {
            if (before != SDB_kNoItem) {
                Must(!Failed(i_controlP->Play(i_listP->ID(), before)), "no play");
                RunUntil([&] { return i_controlP->State() == PlayState::kPlaying && i_controlP->IsNextReady(); });
                RunFor(0.1);
            }
            i_controlP->Stop();
            RunFor(0.3);   // the device is closed, nothing else runs
            i_firstT = 0;
            const double startT = Now();
            Must(!Failed(i_controlP->Play(i_listP->ID(), item)), "no play");
            RunUntil([&] { return i_firstT != 0; });
            seconds.push_back(i_firstT - startT);
            RunUntil([&] { return i_controlP->State() == PlayState::kPlaying; });
        }
        i_controlP->Stop();
        RunFor(0.3);
        std::ranges::sort(seconds);
        std::printf("%-52s median %6.1f ms, worst %6.1f ms\n", whatZ, seconds[seconds.size() / 2] * 1e3,
                    seconds.back() * 1e3);
    }
    void TellLongest() {
        std::printf("%-52s %6.1f ms, of work %.1f ms\n", "longest pause of the main thread in all that",
                    i_longestT * 1e3, i_longestWorkT * 1e3);
    }

    void Drift(PLItemID item, double seconds) {
        i_speed = 1 - 200e-6;
        i_preferences.SetString("Audio Output Device", SuperString("slow"));
        Must(!Failed(i_controlP->Play(i_listP->ID(), item)), "no play");
        RunUntil([&] { return i_controlP->CurTime300() > 300; });
        const long first300 = i_controlP->CurTime300() - i_controlP->Current()->Heard300();
        long worst300 = 0;
        for (const double untilT = Now() + seconds; Now() < untilT;) {
            Pass();
            worst300 = std::max(worst300, std::abs(i_controlP->CurTime300() - i_controlP->Current()->Heard300()));
        }
        std::printf("%-52s %.1f ms at the start, %.1f ms after %.0f s, worst %.1f ms\n",
                    "picture ahead of a sound that is 200 ppm slow", static_cast<double>(first300) / 0.3,
                    static_cast<double>(i_controlP->CurTime300() - i_controlP->Current()->Heard300()) / 0.3, seconds,
                    static_cast<double>(worst300) / 0.3);
        i_controlP->Stop();
        RunFor(0.3);
    }

    void Many(const std::string& audio, const std::string& video, int songs) {
        const FastClock clock(50);
        i_speed = 1;
        i_preferences.SetString("Audio Output Device", SuperString("fast"));
        i_preferences.SetBool("Stop between tracks", false);
        i_preferences.SetBool("Stop at playlist end", true);
        CPlayList& list = i_database.AddPlaylist(kSourceDB_PLAYLIST, "evening");
        i_listP = &list;
        for (int n = 0; n < songs; ++n) (void)Add(audio, video);
        Must(!Failed(i_controlP->Play(list.ID(), list.GetSortedList().front())), "no play");
        const auto sung = [&] {
            return std::ranges::find(list.GetSortedList(), i_controlP->CurrentItem()) - list.GetSortedList().begin();
        };
        RunUntil([&] { return sung() >= songs / 10; }, 600);
        const long beforeL = ResidentKilobytes();
        RunUntil([&] { return i_controlP->State() == PlayState::kIdle; }, 600);
        std::printf("%-52s %.1f MB after %d, %.1f MB after %d\n", "memory, songs in a row",
                    static_cast<double>(beforeL) / 1024, songs / 10, static_cast<double>(ResidentKilobytes()) / 1024,
                    songs);
    }

private:
    CSongDatabase& Database() override { return i_database; }
    CCFPrefDictionary& Preferences() override { return i_preferences; }
    CUserInterface& Ui() override { return i_ui; }
    CGraphicsPorts& Ports() override { return i_ports; }
    AudioOutputChoice MakeOutput(const std::string& device) override {
        if (device == kAudioOutput_Default) return {std::make_unique<NotingOutput>(i_firstT), device};
        return {std::make_unique<CAudioOutput_Null>(i_speed), std::string(kAudioOutput_Default)};
    }

    CCliHost i_host;
    std::atomic<double> i_firstT{0};
    double i_longestT = 0, i_longestWorkT = 0, i_speed = 1;
    CCFPrefDictionary i_preferences;
    CUserInterface_Plain i_ui{[](std::string_view) {}};
    CGraphicsPorts i_ports;
    CMetaManager i_metaManager;
    CSongDatabase i_database{static_cast<CSongDatabaseHost&>(*this)};
    CSongFileWork i_files{i_database};
    std::unique_ptr<CPlayControl> i_controlP;
    CPlayList* i_listP = nullptr;
};

}   // namespace

int main(int argc, char** argv) {
    ShareHeaps();   // as the programs do
    const double driftT = argc > 1 ? std::atof(argv[1]) : 300;
    const int songs = argc > 2 ? std::atoi(argv[2]) : 200;
    ::setenv("SDL_AUDIODRIVER", "dummy", 1);
    std::string folder = "/tmp/bench-playcontrol-XXXXXX";
    Must(::mkdtemp(folder.data()) != nullptr, "no folder");
    const std::string make =
        "cd " + folder +
        " && ffmpeg -v error -nostdin -f lavfi -i anoisesrc=c=pink:d=600 -ac 2 -b:a 192k song.mp3 && "
        "ffmpeg -v error -nostdin -i song.mp3 -t 1 short.mp3 && head -c 4320000 /dev/urandom > song.cdg "
        "&& head -c 7200 song.cdg > short.cdg && cp song.mp3 next.mp3 && cp song.cdg next.cdg && "
        "python3 -c \"import zipfile\nz=zipfile.ZipFile('song.zip','w',zipfile.ZIP_DEFLATED)\n"
        "z.write('song.mp3')\nz.write('song.cdg')\nz.close()\"";
    Must(std::system(make.c_str()) == 0, "the songs could not be made");
    {
        Bench bench;
        const PLItemID pair = bench.Add(folder + "/song.mp3", folder + "/song.cdg");
        const PLItemID next = bench.Add(folder + "/next.mp3", folder + "/next.cdg");
        const PLItemID zip = bench.Add(folder + "/song.zip", "");
        bench.Starts("MP3 with CD+G, order to first sound queued", pair, SDB_kNoItem);
        bench.Starts("zip of both", zip, SDB_kNoItem);
        bench.Starts("MP3 with CD+G, loaded ahead", next, pair);
        bench.TellLongest();
        if (driftT > 0) bench.Drift(pair, driftT);
        if (songs > 0) bench.Many(folder + "/short.mp3", folder + "/short.cdg", songs);
    }
    return std::system(("rm -r " + folder).c_str()) == 0 ? 0 : 1;
}
