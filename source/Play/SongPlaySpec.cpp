#include "Play/SongPlaySpec.h"

#include <algorithm>
#include <cmath>

#include "Audio/CTimePitch.h"
#include "Library/CSongDatabase.h"
#include "Meta/CDataTraits_Menus.h"
#include "Meta/TempoSteps.h"
#include "Values/CCFPrefDictionary.h"

namespace {

/** The lead vocals are on that channel: the other one is heard. */
VocalMode VocalOf(std::int32_t channel) {
    return channel >= 0 && channel <= static_cast<int>(VocalMode::kVocalCut) ? static_cast<VocalMode>(channel)
                                                                             : VocalMode::kBoth;
}

/** A part of the whole; above 1 it was written as a percentage. */
float VolumeOf(double value) {
    if (!(value > 0)) return 0;
    return static_cast<float>(std::min(value > 1 ? value / 100 : value, 1.0));
}

double PitchOf(const CMetaValue& value) {
    constexpr double kMost = kTimePitch_MostPitch;
    const double pitch = value ? value.Integer() : 0;
    return pitch == CDataTraits_PitchPop::kNone ? 0 : std::clamp(pitch, -kMost, kMost);
}

double TempoOf(const CMetaValue& value) {
    const double tempo = value ? QuantizedTempo(static_cast<float>(value.Float())) : 1.0;
    return tempo > 0 ? std::clamp(tempo, kTimePitch_LeastTempo, kTimePitch_MostTempo) : 1.0;
}

/** Of our own, and hidden as every key that the table does not know. */
constexpr MetaKey kLevel = "LUFS"_key;

}   // namespace

std::optional<SongLevel> LevelOf(CSong& song) { return SongLevel::Parse(song.Meta().Stored(kLevel).Text()); }

void KeepLevel(CSong& song, const SongLevel& level) {
    song.Meta().SetValue(kLevel, CMetaValue(CMetaText::Of(level.ToText())));
}

SongPlaySpec ReadSongPlaySpec(CSong& song, const CCFPrefDictionary& preferences) {
    CSongMeta& meta = song.Meta();
    SongPlaySpec spec;
    spec.song = song.GetSongID();
    spec.name = song.Name().UTF8();
    const CSongDatabase* const databaseP = meta.Database();
    const auto placesRef = std::make_shared<const CSongFiles>(
        song, databaseP == nullptr ? std::make_shared<const LibrarySettings>() : databaseP->Settings());
    spec.audio = placesRef->Ref(SDB_SongFile_AUDIO);
    spec.video = placesRef->Ref(SDB_SongFile_VIDEO);
    spec.zip = placesRef->Ref(SDB_SongFile_ZIP);
    spec.launch = placesRef->Ref(SDB_SongFile_LAUNCH);
    spec.placesRef = placesRef;

    spec.pitch = PitchOf(meta.Stored("PICH"_key));
    spec.tempo = TempoOf(meta.Stored("TMPO"_key));
    spec.vocal = VocalOf(meta.GetInteger("vChn"_key));
    spec.slipT = meta.GetFloat("Slip"_key);
    spec.trimStart300 = std::max(0, meta.GetInteger("Tsrt"_key));
    spec.trimEnd300 = std::max(0, meta.GetInteger("Tend"_key));
    spec.volumeF = VolumeOf(meta.GetFloat("volm"_key));
    spec.level = LevelOf(song);
    spec.cooperativeB = meta.GetBool("Coop"_key) == BoolValueType::kTrue;
    spec.channels = static_cast<std::uint16_t>(meta.GetInteger("gChn"_key));
    spec.requireAudioB = preferences.GetBool("Require Audio (no naked CDG files)");
    spec.launchMidiB = preferences.GetBool("Launch Midi Files");
    return spec;
}

std::optional<SongPlaySpec> ReadRowPlaySpec(CSongDatabase& database, PlaylistID list, PLItemID item,
                                            const CCFPrefDictionary& preferences) {
    CPlayList* const listP = database.GetPlayList(list);
    if (listP == nullptr || Number(item) <= 0) return {};
    CPlayListItem* const itemP = listP->GetIndPLItem(item);
    CSong* const songP = itemP == nullptr ? nullptr : database.GetSong(itemP->GetSongID());
    if (songP == nullptr) return {};
    SongPlaySpec spec = ReadSongPlaySpec(*songP, preferences);
    spec.list = list;
    spec.item = item;
    spec.pitch = PitchOf(listP->ValueOf(item, "PICH"_key));
    spec.tempo = TempoOf(listP->ValueOf(item, "TMPO"_key));
    return spec;
}
