#include "Audio/CSoundPlay.h"

#include "Audio/CAS_SpoolRec.h"
#include "Audio/CAutoCue.h"
#include "Audio/SongSource.h"

CSoundPlay::~CSoundPlay() {
    i_playerP = nullptr;   // the render thread is gone before its ring
    if (i_ringP) i_ringP->Abort();
}

OSErr CSoundPlay::Load() {
    Ref<CSpooler> sourceP;
    if (const OSErr err = MakeSongSource(i_file, sourceP); Failed(err)) return err;
    i_ringP = MakeAudioRing();
    const OSErr err = Start(sourceP, i_ringP, false);
    return err == eofErr ? noErr : err;   // a song without sound is silence of its length
}

OSErr CSoundPlay::FindStart(const AudioPlayerSettings& settings, long& start300) {
    start300 = 0;
    std::uint64_t sizeL = 0;
    if (const OSErr err = i_ringP->Open(false, sizeL); Failed(err)) return err;
    start300 = CAutoCue(*this, *i_ringP, settings).Run();
    const OSErr err = PlayErr();   // first: the closing aborts the ring
    return FirstOf(err, i_ringP->Close(false));
}

OSErr CSoundPlay::Begin(CAudioOutput& output, const AudioPlayerSettings& settings, const SongSound& sound) {
    if (const OSErr err = i_ringP->SetPitchTempo(sound.pitch, sound.tempo); Failed(err)) return err;
    i_ringP->Volume().SetVocalMode(sound.vocal);
    i_ringP->Volume().SetGain(sound.gainF);
    i_level.gainF = sound.volumeF;
    if (const OSErr err =
            CAudioPlayer::Create({.song = *this, .output = output, .level = i_level}, settings, i_playerP);
        Failed(err))
        return err;
    i_playerP->SetMode(PlayMode::kPlay);
    return noErr;
}

long CSoundPlay::Total300() const {
    return i_ringP ? static_cast<long>(i_ringP->GetTotal() / (2 * kFramesPer300th)) : 0;
}

OSErr CSoundPlay::Result() const { return i_playerP ? FirstOf(i_playerP->Result(), PlayErr()) : PlayErr(); }
