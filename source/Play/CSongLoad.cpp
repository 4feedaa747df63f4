#include "Play/CSongLoad.h"

#include "Audio/CAS_SpoolRec.h"
#include "Audio/SongSource.h"
#include "Core/Assertions.h"
#include "Core/CLog.h"
#include "Graphics/CountDrawnPackets.h"
#include "Library/SongFileTypes.h"
#include "Zip/CByteSource_Zip.h"
#include "Zip/CZipArchive.h"
#include "Zip/CZipSongMembers.h"

namespace {

constexpr std::uint64_t kMostGraphics_Bytes = std::uint64_t{1} << 30;   // 41 hours

bool IsThere(const CFileRef& file) {
    std::error_code err;
    return !file.IsEmpty() && std::filesystem::is_regular_file(file.GetPath(), err);
}

/** All of a member. What is damaged at its end is given as far as it goes. */
OSErr ReadMember(const CFileRef& zip, const CZipMember& member, const std::atomic<bool>& abortedB,
                 std::vector<std::uint8_t>& bytes) {
    if (member.sizeL > kMostGraphics_Bytes) return memFullErr;
    CByteSource_Zip source;
    if (const OSErr err = source.Open(zip, member); Failed(err)) return err;
    constexpr std::size_t kPart_Bytes = 256 * 1024;
    std::size_t doneL = 0;
    for (;;) {
        if (abortedB.load()) return abortErr;
        if (doneL > kMostGraphics_Bytes) return memFullErr;
        bytes.resize(doneL + kPart_Bytes);
        std::size_t gotL = 0;
        const OSErr err = source.Read(std::as_writable_bytes(std::span(bytes).subspan(doneL)), gotL);
        doneL += gotL;
        if (!Failed(err) && gotL > 0) continue;
        bytes.resize(doneL);
        return err == eofErr || doneL > 0 ? noErr : err;
    }
}

}   // namespace

void CSongLoad::Abort() {
    i_abortedB.store(true);
    if (const Ref<CAS_AudioRing> ringP = i_abortable.Get()) ringP->Abort();
    if (const Ref<CAS_QuickTimeVideo> movieP = i_abortableMovie.Get()) movieP->Abort();
}

OSErr CSongLoad::Load(std::unique_ptr<CS_MainThread_AbortProc> completionP, LoadFor what) {
    bool loadedB = false;
    {
        std::unique_lock guard(i_phaseLock);
        i_phaseChanged.wait(guard, [this] { return i_phase != Phase::kLoading; });
        if (what == LoadFor::kLater && i_playedB) return noErr;   // it is a song that plays by now
        i_playedB = what == LoadFor::kPlay;
        loadedB = i_phase == Phase::kLoaded;
        i_phase = Phase::kLoading;
    }
    if (what == LoadFor::kLater) {
        (void)AssertWords(!i_ringP, "i_cache_audP == NULL");
        (void)AssertWords(i_graphicsP == nullptr && !i_movieP, "i_cache_vidP == NULL");
    }
    OSErr err = noErr;
    if (!loadedB || HasBroken() || WereReplaced()) err = LoadNow(std::move(completionP));
    const std::scoped_lock guard(i_phaseLock);
    i_phase = Failed(err) ? Phase::kNew : Phase::kLoaded;
    i_phaseChanged.notify_all();
    return err;
}

OSErr CSongLoad::LoadNow(std::unique_ptr<CS_MainThread_AbortProc> completionP) {
    if (i_ringP) i_ringP->Abort();   // of files that are others now
    i_ringP = nullptr;
    i_soundP = nullptr;
    i_graphicsP.reset();
    if (i_movieP) i_movieP->Abort();
    i_movieP = nullptr;
    i_graphicsErr = noErr;
    i_graphicsFile = {};
    i_drawnL = 0;
    if (const OSErr err = Choose(); Failed(err)) return err;
    i_stamps = Stamps();
    if (i_abortedB.load()) return abortErr;
    if (i_kind == SongKind::kVideo) {
        if (const OSErr err = LoadMovie(); Failed(err)) return err;
        CFileRef beside;
        if (i_movieP && !i_movieP->Facts().soundB && !Failed(i_places->FindSoundOfSilentMovie(beside))) {
            i_soundFile = std::move(beside);
            i_stamps = Stamps();
        }
    }
    const bool silentB = i_kind == SongKind::kLaunch || i_kind == SongKind::kGraphics ||
                         (i_movieP && i_soundFile.GetPath() == i_mainFile.GetPath() && !i_movieP->Facts().soundB);
    return silentB ? noErr : StartSound(std::move(completionP));
}

std::vector<CSongLoad::Stamp> CSongLoad::Stamps() const {
    std::vector<Stamp> stamps;
    for (const CFileRef* fileP : {&i_mainFile, &i_soundFile})
        stamps.push_back({.file = fileP->GetPath(), .stamp = FileStamp::Of(fileP->GetPath())});
    return stamps;
}

/** A file that cannot be looked at any more is not another one: what was opened can still be read. */
bool CSongLoad::WereReplaced() const {
    const std::vector<Stamp> now = Stamps();
    return !std::ranges::equal(i_stamps, now, [](const Stamp& before, const Stamp& after) {
        return after.stamp.bytesL == FileStamp::kGone || before == after;
    });
}

bool CSongLoad::HasBroken() const {
    const auto brokenB = [](OSErr err) { return Failed(err) && err != eofErr; };
    return i_soundP && (brokenB(i_soundP->Err()) || brokenB(i_ringP->Err()));
}

const CFileRef& CSongLoad::FailedFile() const noexcept {
    for (const CFileRef* const fileP : {&i_soundFile, &i_mainFile, &i_spec.zip, &i_spec.audio})
        if (!fileP->IsEmpty()) return *fileP;
    return i_spec.video;
}

OSErr CSongLoad::Choose() {
    i_places = *i_spec.placesRef;
    // Without a zip in its place what lies beside the pair is none of the song's.
    if (const CFileRef zip = i_spec.zip.IsEmpty() ? CFileRef() : Find(SDB_SongFile_ZIP); !zip.IsEmpty())
        return ChooseFromZip(zip);
    const bool soundlessB = i_spec.audio.IsEmpty();
    if (i_spec.launchMidiB && IsMidiFile((soundlessB ? i_spec.video : i_spec.audio).GetPath()))
        if (CFileRef given = Find(soundlessB ? SDB_SongFile_VIDEO : SDB_SongFile_AUDIO); !given.IsEmpty()) {
            i_kind = SongKind::kLaunch;
            i_mainFile = std::move(given);
            return noErr;
        }
    return ChooseFromFiles();
}

OSErr CSongLoad::ChooseFromZip(const CFileRef& file) {
    CZipArchive zip;
    if (const OSErr err = zip.Open(file); Failed(err)) return err;
    const CZipSongMembers chosen = CZipSongMembers::Choose(zip.Members());
    i_soundFile = i_mainFile = file;
    if (chosen.graphics) {
        if (const OSErr err = LoadGraphics(file, zip.Members()[*chosen.graphics]); Failed(err)) return err;
        if (!chosen.audio && (i_spec.requireAudioB || i_graphicsP == nullptr))
            return LogStep(fnfErr, "no sound in the zip", file.GetPath());
        i_kind = !chosen.audio            ? SongKind::kGraphics
                 : i_graphicsP != nullptr ? SongKind::kSoundAndGraphics
                                          : SongKind::kSound;
        return noErr;
    }
    if (chosen.video)
        i_kind = SongKind::kVideo;
    else if (chosen.audio)
        i_kind = SongKind::kSound;
    else
        return LogStep(fnfErr, "no song in the zip", file.GetPath());
    return noErr;
}

CFileRef CSongLoad::Find(SDB_SongFile type) {
    CFileRef file;
    const bool foundB = !Failed(i_places->GetFile(type, file, CSongFiles::TryCached::kYes));
    return foundB && IsThere(file) ? file : CFileRef();
}

OSErr CSongLoad::ChooseFromFiles() {
    CFileRef sound = Find(SDB_SongFile_AUDIO), picture = Find(SDB_SongFile_VIDEO);
    const ZipSongKinds pictureKinds = ZipSongKindsOf(picture.GetName());
    const bool videoB = !picture.IsEmpty() && pictureKinds.videoB && !pictureKinds.graphicsB;
    if (videoB) {
        i_kind = SongKind::kVideo;
        i_mainFile = picture;
        i_soundFile = sound.IsEmpty() ? picture : sound;
        return noErr;
    }
    if (!sound.IsEmpty() && ZipSongKindsOf(sound.GetName()).videoB && picture.IsEmpty()) {
        i_kind = SongKind::kVideo;   // an .mp4 in the place of the sound: a movie, if there is a picture in it
        i_mainFile = i_soundFile = sound;
        return noErr;
    }
    if (sound.IsEmpty() && (picture.IsEmpty() || i_spec.requireAudioB))
        return LogStep(fnfErr, "looking for a song's files", i_spec.audio.GetPath());
    i_soundFile = sound;
    i_mainFile = picture.IsEmpty() ? sound : picture;
    if (picture.IsEmpty() && !i_spec.video.IsEmpty())
        i_graphicsErr = LogStep(fnfErr, "looking for the graphics", i_spec.video.GetPath());
    if (!picture.IsEmpty())
        if (const OSErr err = LoadGraphics(picture); Failed(err)) return err;
    if (sound.IsEmpty() && i_graphicsP == nullptr) return i_graphicsErr;   // nothing is left
    i_kind = sound.IsEmpty()          ? SongKind::kGraphics
             : i_graphicsP == nullptr ? SongKind::kSound
                                      : SongKind::kSoundAndGraphics;
    return noErr;
}

OSErr CSongLoad::LoadMovie() {
    if (const OSErr err = MakeSongMovie(i_mainFile, i_movieP); Failed(err)) return err;
    i_abortableMovie.Set(i_movieP);
    if (i_abortedB.load()) i_movieP->Abort();
    std::uint64_t unitsL = 0;
    const OSErr err = i_movieP->Open(false, unitsL);
    if (err != paramErr) return err;
    i_movieP = nullptr;   // a file for movies with sound alone in it
    i_kind = SongKind::kSound;
    return noErr;
}

OSErr CSongLoad::LoadGraphics(const CFileRef& file) {
    i_graphicsFile = file;
    i_graphicsP = std::make_unique<CSubCodeStream_Memory>();
    return KeepGraphics(i_graphicsP->LoadFile(file.GetPath(), [this] { return i_abortedB.load(); }));
}

OSErr CSongLoad::LoadGraphics(const CFileRef& zip, const CZipMember& member) {
    i_graphicsFile = zip;
    std::vector<std::uint8_t> bytes;
    const OSErr err = ReadMember(zip, member, i_abortedB, bytes);
    i_graphicsP = std::make_unique<CSubCodeStream_Memory>(bytes);
    return KeepGraphics(err);
}

OSErr CSongLoad::KeepGraphics(OSErr err) {
    if (!Failed(err)) {
        i_drawnL = static_cast<long>(
            CountDrawnPackets(i_graphicsP->Bytes(), i_spec.channels, [this] { return i_abortedB.load(); }));
        if (i_drawnL == 0) err = eofErr;
    }
    if (i_abortedB.load()) return abortErr;
    i_graphicsErr = LogStep(err, "reading graphics", i_graphicsFile.GetPath());
    if (Failed(err)) i_graphicsP.reset();
    return noErr;
}

OSErr CSongLoad::StartSound(std::unique_ptr<CS_MainThread_AbortProc> completionP) {
    if (const OSErr err = MakeSongSource(i_soundFile, i_soundP); Failed(err)) return err;
    i_soundP->SetQuiet(true);   // who plays it tells
    i_ringP = MakeAudioRing();
    LogF("Fill Ring Buffer: Audio Out: %s", i_ringP->TrackedName().c_str());
    if (completionP) i_ringP->SetCompletion(true, completionP.release());
    i_abortable.Set(i_ringP);
    if (i_abortedB.load()) i_ringP->Abort();   // an Abort that came just before found nothing
    const OSErr err = StartSpooling(i_soundP, i_ringP, false);
    return err == eofErr ? noErr : err;   // a song without sound is silence of its length
}
