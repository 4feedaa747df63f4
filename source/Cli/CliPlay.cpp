#include "Cli/CliPlay.h"

#include <unistd.h>
#include <algorithm>
#include <cmath>

#include "Cli/CCliHost.h"
#include "Cli/CliAudio.h"
#include "Cli/CliCommand.h"
#include "Core/FaultText.h"
#include "Graphics/CGraphicsPorts.h"
#include "Meta/CMetaManager.h"
#include "Platform/CAudioOutput.h"
#include "Platform/CClock.h"
#include "Platform/CUserInterface_Plain.h"
#include "Play/CPlayControl.h"
#include "Play/CPlayHost.h"
#include "SongFiles/AddFilesToLibrary.h"
#include "SongFiles/CSongFileWork.h"
#include "Values/CPreferences.h"

namespace {

constexpr std::string_view kDisk = "disk:";   // an output that is a file

constexpr double kLine_T = 0.25;
constexpr double kTick_T = 1.0 / 15.0;
constexpr SDB_SongFile kSong_Slots[] = {SDB_SongFile_ZIP, SDB_SongFile_AUDIO, SDB_SongFile_VIDEO};

/** Plays the songs of some files, one after the other, over a library that nobody keeps. */
class PlayRun final : private CSongDatabaseHost, private CPlayHost {
public:
    PlayRun(const CliContext& context, CCliHost& host, const CliWords& words, const SongSound& sound)
        : i_context(context), i_host(host), i_sound(sound) {
        const std::unique_ptr<CPreferences> storedP = CliPreferences(context);
        for (const auto& [key, value] : storedP->Snapshot()) i_preferences.SetByName(key, value);
        if (const std::string* outputP = words.Text("--output"))
            i_preferences.SetString("Audio Output Device", SuperString(*outputP));
        i_preferences.SetBool("Stop between tracks", false);
        i_preferences.SetBool("Pause between tracks", false);
        i_preferences.SetBool("Stop at playlist end", true);
        i_databaseP = std::make_unique<CSongDatabase>(static_cast<CSongDatabaseHost&>(*this));
        i_filesP = std::make_unique<CSongFileWork>(*i_databaseP);
        i_controlP = std::make_unique<CPlayControl>(static_cast<CPlayHost&>(*this));
        i_controlP->SetVolume(sound.volumeF);
    }
    ~PlayRun() override { i_controlP.reset(); }

    /** The exit status. */
    int Run(const CliCall& call, double mostT) {
        const std::vector<std::string>& files = call.words.arguments;
        CPlayList& list = i_databaseP->AddPlaylist(kSourceDB_PLAYLIST, "play");
        for (const std::string& file : files)
            if (const int status = Add(list, file); status != 0) return status;
        if (RecordsOverSong(call)) return call.Usage("the recording would take the place of a song");
        if (const OSErr err = i_controlP->Play(list.ID(), list.GetSortedList().front()); Failed(err))
            return CliFailFile(i_context, err, files.front());
        for (const PLItemID last = list.GetSortedList().back();;) {
            RunSong(mostT);
            const bool idleB = i_controlP->State() == PlayState::kIdle;
            if (!idleB && i_endedB) continue;   // the next one has begun
            if (!idleB) Tell("stopped", *i_controlP->Current());
            if (i_controlP->CurrentItem() == last || Failed(i_controlP->PlayNext())) break;
        }
        i_controlP->Stop();
        if (i_status != 0 && i_songsL == 0) return i_status;   // the error is all there is to tell
        i_context.out << "{\"state\":\"total\",\"songs\":" << i_songsL << ",\"audio300\":" << i_audio300
                      << ",\"packets\":" << i_packetsL << ",\"frames_late\":" << i_lateL << "}\n";
        return i_status;
    }

private:
    int Add(CPlayList& list, const std::string& file) {
        const std::filesystem::path paths[] = {file};
        std::vector<RefusedFile> refused;
        const std::vector<SongID> songs = AddFilesToLibrary(*i_databaseP, paths, &refused);
        if (songs.empty() && refused.empty()) return CliFail(i_context, fnfErr, file + ": There is no song in it.");
        if (songs.empty()) return CliFail(i_context, refused.front().err, file + ": " + refused.front().Reason());
        for (const SongID id : songs) {
            CSongMeta& meta = i_databaseP->GetSong(id)->Meta();
            meta.SetInteger("PICH"_key, std::lround(i_sound.pitch));
            meta.SetFloat("TMPO"_key, i_sound.tempo);
            meta.SetInteger("vChn"_key, static_cast<int>(i_sound.vocal));
            list.AddItem({.target = id});
        }
        return 0;
    }

    /** The sound would be written into a file that is to be played. */
    bool RecordsOverSong(const CliCall& call) const {
        const std::string* const outputP = call.words.Text("--output");
        if (outputP == nullptr || !outputP->starts_with(kDisk)) return false;
        const std::string made = outputP->substr(kDisk.size());
        return std::ranges::any_of(i_databaseP->Songs()->Ids(), [&](SongID id) {
            return std::ranges::any_of(kSong_Slots, [&](SDB_SongFile slot) {
                return CliCall::WouldReplace(made, i_databaseP->GetSong(id)->FileRef(slot).GetPath());
            });
        });
    }

    /** Until this song is over, or was heard for `mostT` seconds. */
    void RunSong(double mostT) {
        i_endedB = false;
        double beganT = 0, lineT = 0, tickT = 0;
        while (!i_endedB && i_controlP->State() != PlayState::kIdle) {
            const double nowT = CClock::Get().SteadyT();
            if (i_controlP->State() == PlayState::kPlaying) {
                if (beganT == 0) beganT = lineT = nowT;
                if (nowT - beganT >= mostT) return;
                if (nowT >= lineT) {
                    Tell("playing", *i_controlP->Current(), false);
                    lineT += kLine_T;
                }
            }
            if (nowT >= tickT) {
                i_controlP->VideoIdle(false);
                tickT = nowT + kTick_T;
            }
            i_host.RunLoopPass();
        }
    }

    void Tell(std::string_view state, const CSongPlay& play, bool lastB = true) {
        i_context.out << "{\"state\":\"" << state << "\",\"audio300\":" << play.Heard300()
                      << ",\"packets\":" << play.Packets() << ",\"time300\":" << play.CurTime300();
        if (play.Files().Kind() == SongKind::kVideo)
            i_context.out << ",\"pictures\":" << play.Pictures().shownL << ",\"dropped\":" << play.Pictures().droppedL;
        i_context.out << "}" << std::endl;
        if (!lastB) return;
        ++i_songsL;
        i_audio300 += play.Heard300();
        i_packetsL += play.Packets();
        i_lateL += play.FramesLate();
    }

    CSongDatabase& Database() override { return *i_databaseP; }
    CCFPrefDictionary& Preferences() override { return i_preferences; }
    CUserInterface& Ui() override { return i_ui; }
    CGraphicsPorts& Ports() override { return i_ports; }
    float GainOf(SongID) override { return i_sound.gainF; }
    void SongEnded(const CSongPlay& play) override {
        Tell("ended", play);
        i_endedB = true;
    }
    /** The file that the sound was to go into, when that is what failed. */
    CFileRef Unwritten(OSErr err) const {
        const std::string device = i_preferences.GetString("Audio Output Device").UTF8();
        if (!device.starts_with(kDisk)) return {};
        const std::filesystem::path file = std::filesystem::absolute(device.substr(kDisk.size()));
        const std::filesystem::path asked = ::access(file.c_str(), F_OK) == 0 ? file : file.parent_path();
        return err == dskFulErr || ::access(asked.c_str(), W_OK) != 0 ? CFileRef(file) : CFileRef();
    }
    void SongFailed(const CSongPlay& play, OSErr err) override {
        const SongPlaySpec& spec = play.Spec();
        CFileRef file = Unwritten(err);
        if (file.IsEmpty()) file = play.Files().FailedFile();
        if (file.IsEmpty()) file = !spec.zip.IsEmpty() ? spec.zip : !spec.audio.IsEmpty() ? spec.audio : spec.video;
        i_status = CliFailFile(i_context, err, file.GetPath());   // the others play all the same
        i_endedB = true;
    }

    const CliContext& i_context;
    CCliHost& i_host;
    const SongSound i_sound;
    CCFPrefDictionary i_preferences;
    CUserInterface_Plain i_ui{[](std::string_view) {}};
    CGraphicsPorts i_ports;
    CMetaManager i_metaManager;
    std::unique_ptr<CSongDatabase> i_databaseP;
    std::unique_ptr<CSongFileWork> i_filesP;
    std::unique_ptr<CPlayControl> i_controlP;
    bool i_endedB = false;   // it was heard out, or has failed
    int i_status = 0;        // 1 once a song has failed
    long i_songsL = 0, i_audio300 = 0, i_packetsL = 0;
    std::uint64_t i_lateL = 0;
};

/** Whether there is such a sound output; told when not. */
bool HasOutput(const CliContext& context, const std::string& name) {
    const AudioOutputChoice choice = MakeAudioOutput(name);
    const std::vector<std::string> names = choice.outputP->DeviceNames();
    if (choice.device == kAudioOutput_Default || std::ranges::find(names, choice.device) != names.end()) return true;
    static_cast<void>(CliFail(context, fnfErr, name + ": " + FaultWords(fnfErr, FaultOf::kSoundOutput)));
    return false;
}

}   // namespace

int PlaySongs(const CliCall& call) {
    const std::string* const outputP = call.words.Text("--output");
    if (outputP != nullptr && !HasOutput(call.context, *outputP)) return 1;
    CCliHost host;
    PlayRun run(call.context, host, call.words, SongSoundOf(call.words));
    return run.Run(call, call.words.Number("--seconds", HUGE_VAL));
}
