#include "SongFiles/CSongZip.h"

#include "Core/CLog.h"
#include "Core/Localize.h"
#include "Core/SmallExtension.h"
#include "Files/FSError.h"
#include "Files/FSrObjects.h"
#include "Library/CSongDatabase.h"
#include "Library/FileSystemName.h"
#include "Library/SongFileTypes.h"
#include "SongFiles/CSongFileWork.h"
#include "SongFiles/SongFolders.h"
#include "Threads/CallOnMain.h"

namespace {

constexpr SDB_SongFile kPacked[] = {SDB_SongFile_AUDIO, SDB_SongFile_VIDEO};

/** A name of the base with this extension that is none too long. */
std::string NameWith(const std::string& base, const std::string& extension) {
    const std::size_t roomL = kFileName_MaxBytes - std::min(kFileName_MaxBytes, extension.size());
    return std::string(FrontOf(base, roomL)) + extension;
}

}   // namespace

CSongZip::CSongZip(SongFileWorld world, SongID song, OldZip oldZip)
    : i_world(std::move(world)), i_song(song), i_oldZip(oldZip) {}

void CSongZip::Abort() noexcept {
    i_abortB.store(true, std::memory_order_relaxed);
    i_writer.Abort();
}

OSErr CSongZip::Tell(std::vector<CSong_ZipCompletion::Place> places) {
    return CSong_ZipCompletion(i_world.databaseRef, *i_files, std::move(places)).Call(CallMode::kWait);
}

OSErr CSongZip::Run() {
    std::string name;
    (void)i_world.songsRef->With(i_song, [&](const CSong& song) { name = song.Name().UTF8(); });
    const CBusySongs::Hold hold(i_world.busyRef, i_song);
    if (!hold.IsHeld()) {
        TellSongBusy(name);
        return opWrErr;
    }
    (void)CThreadHost::With([&](CThreadHost& host) { i_viewP = host.OpenTask(Localize("Zipping Audio+G with zLib")); });
    if (i_viewP) i_viewP->SetText(name);
    OSErr err = i_abortB ? abortErr : Prepare();
    if (!Failed(err)) err = Pack();
    LogF("ZIP: --> finished zipping with result %d", Number(err));
    if (!Failed(err)) err = Tell();   // is there still somebody who wants it?
    if (!Failed(err)) err = PlaceZip();
    if (!Failed(err)) {
        err = Tell({{SDB_SongFile_ZIP, i_zip}});
        if (Failed(err)) UndoPlace();
    }
    if (!Failed(err)) PutAway();
    // In every case; with the old zip in it, if they changed places.
    if (i_enclosure.IsMade()) {
        (void)LogStep(i_enclosure.Delete(), "deleting temp enclosure");
        Log("setting temp zip ref to NULL");
        (void)CallOnMain("temp zip", i_world.databaseRef, [this](const CSongDatabase& database) {
            CSong* const songP = database.GetSong(i_song);
            return songP == nullptr ? noErr : songP->SetFile(SDB_SongFile_TEMP_ZIP, CFileRef());
        });
    }
    i_viewP.reset();
    return err;
}

std::string CSongZip::BaseName() const {
    std::optional<BuiltName> built;
    (void)i_world.songsRef->With(
        i_song, [&](const CSong& song) { built = ConformedName(song.Meta(), i_world.settingsRef->nameTemplate); });
    if (i_world.settingsRef->conformNamesB && built && !built->unknownsB) return FileSystemName(built->text);
    return i_files->Ref(SDB_SongFile_AUDIO).GetPath().stem().string();
}

OSErr CSongZip::Prepare() {
    (void)i_world.songsRef->With(i_song, [&](const CSong& song) {
        i_files.emplace(song, i_world.settingsRef);
        i_artist = song.Meta().Stored("arts"_key).Text();
        i_album = song.Meta().Stored("albm"_key).Text();
    });
    if (!i_files) return fnfErr;
    for (const SDB_SongFile type : kPacked) {
        if (i_files->Ref(type).IsEmpty()) return LogStep(paramErr, "zipping: no sound, or no graphics");
        FileInfo info;
        const OSErr err = FSrCheckFile(i_files->Ref(type), info);
        if (Failed(LogStep(err, "zipping", i_files->Ref(type).GetPath()))) return err;
        if (const OSErr kept = i_world.keeperRef->MayTouch(i_files->Ref(type), i_song); Failed(kept)) return kept;
    }
    if (IsMovieFile(i_files->Ref(SDB_SongFile_VIDEO).GetPath()))
        return LogStep(paramErr, "zipping: a movie is whole by itself", i_files->Name());
    if (!i_files->Ref(SDB_SongFile_ZIP).IsEmpty()) {
        if (i_oldZip == OldZip::kRefuse) return LogStep(paramErr, "zipping: it is zipped");
        CFileRef old = i_files->Ref(SDB_SongFile_ZIP);
        FileInfo info;
        const bool thereB = !Failed(FSrCheckFile(old, info));
        if (thereB && !Failed(i_world.keeperRef->MayTouch(old, i_song))) i_oldZipFile = old;
    }
    OSErr err = VerifyAudio(i_files->Ref(SDB_SongFile_AUDIO));
    if (Failed(LogStep(err, "verifying before copying meta", i_files->Ref(SDB_SongFile_AUDIO).GetPath()))) {
        (void)CallOnMain("corrupt sound", i_world.databaseRef, [this](CSongDatabase& database) {
            if (database.GetSong(i_song) != nullptr)
                CSongFileWork::Of(database).Warnings().Add(SongWarning::kCorruptMP3, i_song);
            return noErr;
        });
        return err;
    }
    i_base = BaseName();
    CFileRef music;
    if (err = GetSongRoot(*i_world.settingsRef, SongRoot::kMusic, music); Failed(err)) return err;
    if (err = i_enclosure.Create(FSCreateTemp_FOLDER, music); Failed(err)) return err;
    i_zip = CFileRef(i_enclosure.Ref(), NameWith(i_base, ".zip"));
    // Not before: a temporary zip that stands in the song's place must be taken out again.
    return LogStep(Tell({{SDB_SongFile_TEMP_ZIP, i_zip}}), "setting TEMP zip file location");
}

OSErr CSongZip::Pack() {
    Log("ZIP: Forking off process");
    std::uint64_t wholeL = 0;
    for (const SDB_SongFile type : kPacked) {
        const CFileRef& file = i_files->Ref(type);
        FileInfo info;
        if (const OSErr err = FSrCheckFile(file, info); Failed(err)) return err;
        wholeL += info.bytesL;
        i_packed.push_back({file, NameWith(i_base, file.GetPath().extension().string())});
    }
    OSErr err = i_writer.Open(i_zip);
    for (const PackedFile& packed : i_packed) {
        if (!Failed(err)) err = i_writer.Add(packed.file, packed.member);
        constexpr std::uint64_t kUnit = 1024;   // a task counts in long
        if (i_viewP)
            i_viewP->SetSteps(static_cast<long>(i_writer.DoneBytes() / kUnit), static_cast<long>(wholeL / kUnit));
        if (i_viewP && i_viewP->IsCancelled()) Abort();
    }
    err = FirstOf(err, i_writer.Close());
    if (Failed(err)) return LogStep(err, "zipping", i_zip.GetPath());
    return LogStep(VerifyZip(i_zip, i_packed, i_abortB), "verifying after copying meta", i_zip.GetPath());
}

OSErr CSongZip::PlaceZip() {
    bool sameB = false;
    if (!i_oldZipFile.IsEmpty() && !Failed(FSrOnSameVolume(i_oldZipFile, i_zip, sameB)) && sameB) {
        const OSErr err = i_world.keeperRef->Exchange(i_zip, i_oldZipFile, i_song);
        if (!Failed(err)) {
            i_exchangedB = true;
            i_zip = i_oldZipFile;
            return noErr;
        }
        // Not every file system can: then it goes the way of all others.
    }
    CFileRef folder;
    if (const OSErr err = GetFolderForSong(*i_world.settingsRef, SongRoot::kMusic, i_artist, i_album, folder);
        Failed(err))
        return err;
    std::string name;
    OSErr err = FSrMakeUniqueName(folder, i_zip.GetName(), name);
    if (!Failed(err)) err = i_world.keeperRef->Move(i_zip, folder, name, i_song);
    return LogStep(err, "moving ZIP file from temp to music folder", i_zip.GetPath());
}

void CSongZip::UndoPlace() {
    if (!i_exchangedB) {
        (void)LogStep(FSrDelete(i_zip), "removing the zip again", i_zip.GetPath());
        return;
    }
    const CFileRef temp(i_enclosure.Ref(), NameWith(i_base, ".zip"));
    const int errL = CFileCalls::Get().Exchange(temp.GetPath(), i_zip.GetPath());
    // The old zip is in the enclosure: it must not go with it.
    if (Failed(LogStep(FSError(errL, "exchange", temp.GetPath()), "putting the old zip back"))) i_enclosure.Leave();
}

void CSongZip::PutAway() {
    // A song that came to name one of them meanwhile keeps it; this one has its zip.
    const auto gone = [](OSErr err) { return err == alreadyReportedErr ? noErr : err; };
    std::vector<CSong_ZipCompletion::Place> places;
    CFileRef video = i_files->Ref(SDB_SongFile_VIDEO), cached;
    const bool cachedB = !Failed(i_files->GetFile(SDB_SongFile_VIDEO_CACHE, cached));
    OSErr err = noErr;
    if (i_files->Status(SDB_SongFile_VIDEO) == SDB_SongFileStatus_MUSIC) {
        CFileRef cache;
        const std::string name = CacheFileName(i_song, i_files->Name(), SDB_SongFile_VIDEO_CACHE);
        if (cachedB || SmallExtension(video.GetPath()) != SmallExtension(name)) {   // the cache has no other graphics
            err = gone(LogStep(i_world.keeperRef->Delete(video, i_song), "deleting CDG file", video.GetPath()));
        } else if (err = GetSongRoot(*i_world.settingsRef, SongRoot::kCache, cache); !Failed(err)) {
            err = i_world.keeperRef->Move(video, cache, name, i_song);
            if (!Failed(LogStep(err, "moving CDG file back to cache folder", video.GetPath())))
                places.push_back({SDB_SongFile_VIDEO_CACHE, video});
            err = gone(err);
        }
    }
    // What could not be put away stays the song's: nobody else knows of it.
    if (!Failed(err)) places.push_back({SDB_SongFile_VIDEO, CFileRef()});
    const CFileRef& audio = i_files->Ref(SDB_SongFile_AUDIO);
    err = noErr;
    if (i_files->Status(SDB_SongFile_AUDIO) == SDB_SongFileStatus_MUSIC) err = i_world.keeperRef->Delete(audio, i_song);
    if (!Failed(LogStep(gone(err), "deleting MP3 file (it was zipped)", audio.GetPath())))
        places.push_back({SDB_SongFile_AUDIO, CFileRef()});
    if (const OSErr told = Tell(std::move(places)); Failed(told)) (void)LogStep(told, "telling the song of its zip");
}
