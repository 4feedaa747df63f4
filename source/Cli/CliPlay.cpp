#include "Cli/CliPlay.h"

#include <cmath>

#include "Audio/CSoundPlay.h"
#include "Cli/CCliHost.h"
#include "Cli/CliAudio.h"
#include "Core/CPreferences.h"
#include "Platform/CClock.h"

namespace {

constexpr std::string_view kUsage =
    "usage: play FILE... [--seconds N] [--output dummy|disk:PATH|NAME] [--pitch N] [--tempo X] [--volume V] [--gain "
    "DB] [--vocal "
    "M]";
constexpr double kLine_T = 0.25;

struct Totals {
    long songsL = 0;
    long audio300 = 0;
    std::uint64_t lateL = 0;
};

class PlayRun {
public:
    PlayRun(const CliContext& context, CCliHost& host, const CliWords& words, const SongSound& sound)
        : i_context(context),
          i_host(host),
          i_sound(sound),
          i_settings(AudioPlayerSettings::Read(*CliPreferences(context))) {
        const std::string* outputP = words.Value("--output");
        AudioOutputChoice choice = MakeAudioOutput(outputP != nullptr ? *outputP : i_settings.device);
        i_outputP = std::move(choice.outputP);
        i_settings.device = choice.device;
    }

    /** Until the song has been heard out, or for `most` seconds. */
    OSErr Play(const std::string& file, double mostT, Totals& totals) {
        i_what = file;
        CSoundPlay play{CFileRef(file)};
        if (const OSErr err = i_host.OnTask([&] { return play.Load(); }); Failed(err)) return err;
        i_what = "audio output " + i_settings.device;
        if (const OSErr err = play.Begin(*i_outputP, i_settings, i_sound); Failed(err)) return err;
        i_what = file;
        const double beganT = CClock::Get().SteadyT();
        for (double lineT = beganT; !play.IsHeardOut();) {
            if (const OSErr err = play.Result(); Failed(err)) return err;
            const double nowT = CClock::Get().SteadyT();
            if (nowT - beganT >= mostT) break;
            if (nowT >= lineT) {
                Tell("playing", play);
                lineT += kLine_T;
            }
            i_host.RunLoopPass();
        }
        Tell(play.IsHeardOut() ? "ended" : "stopped", play);
        ++totals.songsL;
        totals.audio300 += play.Heard300();
        totals.lateL += play.FramesLate();
        return noErr;
    }

    /** What a failure of Play is about. */
    [[nodiscard]] const std::string& What() const { return i_what; }

private:
    /** This command does not draw yet: no packets, and the time is the sound's. */
    void Tell(std::string_view state, const CSoundPlay& play) {
        i_context.out << "{\"state\":\"" << state << "\",\"audio300\":" << play.Heard300()
                      << ",\"packets\":0,\"time300\":" << play.Heard300() << "}" << std::endl;
    }

    const CliContext& i_context;
    CCliHost& i_host;
    const SongSound i_sound;
    AudioPlayerSettings i_settings;
    std::string i_what;
    std::unique_ptr<CAudioOutput> i_outputP;
};

}   // namespace

int RunPlay(const CliContext& context, std::span<const std::string> given) {
    const auto words =
        CliWords::Read(given, {"--seconds", "--output", "--pitch", "--tempo", "--volume", "--gain", "--vocal"});
    if (!words || words->files.empty()) return CliUsage(context, kUsage);
    const auto sound = ReadSongSound(*words);
    double mostT = HUGE_VAL;
    if (const std::string* secondsP = words->Value("--seconds")) {
        const auto seconds = ReadNumber<double>(*secondsP);
        if (!seconds || !(*seconds >= 0)) return CliUsage(context, kUsage);
        mostT = *seconds;
    }
    if (!sound) return CliUsage(context, kUsage);

    CCliHost host;
    PlayRun run(context, host, *words, *sound);
    Totals totals;
    for (const std::string& file : words->files)
        if (const OSErr err = run.Play(file, mostT, totals); Failed(err)) return CliFail(context, err, run.What());
    context.out << "{\"state\":\"total\",\"songs\":" << totals.songsL << ",\"audio300\":" << totals.audio300
                << ",\"packets\":0,\"frames_late\":" << totals.lateL << "}\n";
    return 0;
}
