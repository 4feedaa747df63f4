#include "Play/CNextSong.h"

#include "Core/CLog.h"
#include "Play/CT_Cache.h"

namespace {
bool SameFiles(const SongPlaySpec& a, const SongPlaySpec& b) {
    return a.song == b.song && a.audio.GetPath() == b.audio.GetPath() && a.video.GetPath() == b.video.GetPath() &&
           a.zip.GetPath() == b.zip.GetPath() && a.requireAudioB == b.requireAudioB && a.launchMidiB == b.launchMidiB;
}
}   // namespace

bool CNextSong::Holds(const SongPlaySpec& spec) const { return i_loadP && SameFiles(i_loadP->Spec(), spec); }

bool CNextSong::IsReady() const { return i_loadP && i_loadP->IsLoaded(); }

void CNextSong::Hold(SongPlaySpec spec) {
    if (Holds(spec)) return;
    Drop();
    LogF("pre-cache next song: %s", spec.name.c_str());
    i_loadP = MakeRef<CSongLoad>(std::move(spec));
    if (CT_Preemptive::Start(std::make_unique<CT_Cache>(i_loadP)) == 0) i_loadP = nullptr;
}

Ref<CSongLoad> CNextSong::Take(const SongPlaySpec& spec) {
    const bool heldB = Holds(spec);
    Ref<CSongLoad> loadP = std::exchange(i_loadP, nullptr);
    if (heldB) return loadP;
    if (loadP) loadP->Abort();
    return MakeRef<CSongLoad>(spec);
}

void CNextSong::Drop() {
    if (i_loadP) i_loadP->Abort();
    i_loadP = nullptr;
}
