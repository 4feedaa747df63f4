#include <algorithm>
#include <cmath>

#include "Audio/CTimePitch.h"
#include "Core/Localize.h"
#include "Core/NumberForms.h"
#include "Meta/TempoSteps.h"
#include "Play/CPictureDelays.h"
#include "Play/CPlayControl.h"
#include "Play/CPlayHost.h"
#include "Play/CT_ListOutputs.h"
#include "Values/CCFPrefDictionary.h"

// How it sounds: what is kept with the song, with its row, and in the preferences.

namespace {

constexpr double kPerSecond = 300;
constexpr LongPref kPref_Volume = "Current Volume (0-100)";
constexpr LongPref kPref_Slip = "Global Song Sync Slip (300ths)";
constexpr StringPref kPref_Device = "Audio Output Device";
constexpr BoolPref kPref_OneLevel = "Play all songs at one level";
/** So many rows ahead of the one that plays are measured. */
constexpr std::size_t kLevels_Ahead = 20;

long As300ths(double seconds) { return static_cast<long>(std::floor(seconds * kPerSecond + 0.5)); }

/** `wordsZ` has "%1" where the seconds stand. */
std::string SlipText(const char* wordsZ, long slip300) {
    return Localize(wordsZ, {ShownNumber(static_cast<double>(slip300) / kPerSecond, 1)});
}

}   // namespace

float CPlayControl::ReadVolume(CPlayHost& host) {
    return static_cast<float>(std::clamp(host.Preferences().GetLong(kPref_Volume), 0, 100)) / 100;
}

void CPlayControl::KeepValue(MetaKey key, double value) {
    CPlayList* const listP = i_host.Database().GetPlayList(i_orderP->ListID());
    const bool tempoB = key == "TMPO"_key;
    if (listP != nullptr && listP->KeepsInRow(key)) {
        if (i_orderP->Item() == SDB_kNoItem) return;   // the row has left, and its value with it
        listP->SetRowValue(i_orderP->Item(), key,
                           tempoB ? CMetaValue(value) : CMetaValue(static_cast<std::int32_t>(value)));
    } else if (CSong* const songP = i_host.Database().GetSong(CurrentSong())) {
        if (tempoB)
            songP->Meta().SetFloat(key, value);
        else
            songP->Meta().SetInteger(key, static_cast<std::int64_t>(value));
    }
}

OSErr CPlayControl::SetPitch(int semitones) {
    if (!i_playP || std::abs(semitones) > kTimePitch_MostPitch) return paramErr;
    if (const OSErr err = i_playP->SetPitchTempo(semitones, i_tempo); Failed(err)) return err;
    i_pitchS = semitones;
    KeepValue("PICH"_key, semitones);
    TellSettings();
    return noErr;
}

OSErr CPlayControl::SetTempo(double tempo) {
    if (!i_playP || !(tempo >= kTimePitch_LeastTempo && tempo <= TempoOfStep(kTempo_MostStep))) return paramErr;
    tempo = QuantizedTempo(static_cast<float>(tempo));   // what is heard is what is kept, and 1.0 is 1.0
    if (const OSErr err = i_playP->SetPitchTempo(i_pitchS, tempo); Failed(err)) return err;
    i_tempo = tempo;
    KeepValue("TMPO"_key, tempo);
    TellSettings();
    return noErr;
}

OSErr CPlayControl::StepTempo(int steps) {
    const double percent = i_host.Preferences().GetFloat("Tempo change increment (percent)");
    return SetTempo(SteppedTempo(i_tempo, steps, percent));
}

void CPlayControl::SetVolume(float volumeF) {
    if (std::isnan(volumeF)) return;
    i_volumeF = std::clamp(volumeF, 0.0F, 1.0F);
    i_songLevelF.reset();
    i_outputP->Level().gainF = i_volumeF;
    i_host.Preferences().SetLong(kPref_Volume, std::lround(i_volumeF * 100));
    TellSettings();
}

void CPlayControl::SetMute(bool mutedB) {
    i_mutedB = mutedB;
    i_outputP->Level().onB = !mutedB;
    TellSettings();
}

void CPlayControl::SetVocalMode(VocalMode mode) {
    i_vocal = mode;
    if (i_playP) i_playP->SetVocalMode(mode);
    TellSettings();
}

bool CPlayControl::IsOneLevel() const { return i_host.Preferences().GetBool(kPref_OneLevel); }

void CPlayControl::SetOneLevel(bool onB) {
    i_host.Preferences().SetBool(kPref_OneLevel, onB);
    if (i_playP) i_playP->SetOneLevel(onB);
    WantLevels();
    TellSettings();
}

void CPlayControl::WantLevels() {
    std::vector<SongID> songs;
    CPlayList* const listP = i_host.Database().GetPlayList(i_orderP->ListID());
    if (listP != nullptr && IsOneLevel()) {
        for (const PLItemID item : i_orderP->Ahead(kLevels_Ahead))
            if (CPlayListItem* const itemP = listP->GetIndPLItem(item)) songs.push_back(itemP->GetSongID());
        if (i_playP) songs.insert(songs.begin() + (songs.empty() ? 0 : 1), CurrentSong());
    }
    i_levels.Want(std::move(songs));
}

std::string CPlayControl::SlipSong(int steps) {
    if (!i_playP) return {};
    return SetSongSlip300(As300ths(i_slipT) + steps * i_host.Preferences().GetLong("Sync Slip increment (300ths)"));
}

std::string CPlayControl::SetSongSlip300(long slip300) {
    if (!i_playP) return {};
    i_slipT = static_cast<double>(slip300) / kPerSecond;
    i_playP->SetSlipT(i_slipT);
    if (CSong* const songP = i_host.Database().GetSong(CurrentSong())) songP->Meta().SetFloat("Slip"_key, i_slipT);
    const std::string text = SongSlipText();
    i_host.ShowMessage(text);
    return text;
}

std::string CPlayControl::SlipGlobal(int steps) {
    const CCFPrefDictionary& preferences = i_host.Preferences();
    return SetGlobalSlip300(preferences.GetLong(kPref_Slip) +
                            steps * preferences.GetLong("Sync Slip increment (300ths)"));
}

std::string CPlayControl::SetGlobalSlip300(long slip300) {
    i_host.Preferences().SetLong(kPref_Slip, slip300);
    i_host.Show()->globalSlip300 = slip300;
    const std::string text = GlobalSlipText();
    i_host.ShowMessage(text);
    return text;
}

std::string CPlayControl::SongSlipText() const { return SlipText(N_("Song Sync Slip: %1 seconds"), As300ths(i_slipT)); }

std::string CPlayControl::GlobalSlipText() const {
    return SlipText(N_("Global Sync Slip: %1 seconds"), i_host.Preferences().GetLong(kPref_Slip));
}

void CPlayControl::SetPictureDelay(long milliseconds) {
    CPictureDelays(i_host.Preferences()).Set(WantedDevice(), milliseconds);
    if (i_playP) i_playP->SetPictureDelay(PictureDelay());
    TellSettings();
}

long CPlayControl::PictureDelay() const { return CPictureDelays(i_host.Preferences()).Of(WantedDevice()); }

std::string CPlayControl::WantedDevice() const {
    const std::string device = i_host.Preferences().GetString(kPref_Device).UTF8();
    return device.empty() ? std::string(kAudioOutput_Default) : device;
}

void CPlayControl::ChooseOutput() {
    if (std::string device = WantedDevice(); device != i_device) {
        i_outputP->Replace(i_host.MakeOutput(device));
        i_device = std::move(device);
    }
}

OSErr CPlayControl::AskOutputDevices(std::function<void(const std::vector<std::string>& names)> told) {
    auto taskP = std::make_unique<CT_ListOutputs>(i_host.MakeOutput(WantedDevice()), std::move(told));
    return CT_Preemptive::Start(std::move(taskP)) == 0 ? abortErr : noErr;
}

OSErr CPlayControl::SetOutputDevice(const std::string& name) {
    i_host.Preferences().SetString(kPref_Device, SuperString(name));
    TellSettings();
    if (WantedDevice() == i_device) i_outputP->LookAgain();   // it may not be the one that plays
    if (!i_playP || WantedDevice() == i_device) return noErr;
    SongPlaySpec spec = SpecAsNow();
    StartHow how{.pausedB = IsPaused() && !i_delayedB,   // what waits for its zip goes on waiting
                 .countedB = i_countedB,
                 .wish = i_wish,
                 .levelF = i_songLevelF};
    if (State() == PlayState::kPlaying) {
        how.at300 = CurTime300();
        spec.launch = {};   // it was opened
    } else {
        how.at300 = i_playP->StartAt300();   // it was to begin there, and has not yet
    }
    return PlaySong(spec, how);
}
