#include "Library/CSongFiles.h"

#include <algorithm>

#include "Core/Localize.h"
#include "Files/FSrObjects.h"
#include "Library/CSong.h"
#include "Library/CSongDatabase.h"
#include "Library/CSongFileSearch.h"
#include "Library/SongFileTypes.h"

CSongFiles::CSongFiles(const CSong& song, std::shared_ptr<const LibrarySettings> settingsRef)
    : i_song(song.GetSongID()),
      i_name(song.Name().UTF8()),
      i_wasMissingB(song.Meta().Stored("Msng"_key).Bool() == BoolValueType::kTrue),
      i_settingsRef(std::move(settingsRef)) {
    for (std::size_t n = 0; n < i_files.size(); ++n) {
        i_files[n] = song.Meta().Stored(SongFileKey(static_cast<SDB_SongFile>(n))).SongFile();
        CFileRef& ref = i_files[n].ref;
        if (!ref.IsEmpty() && !ref.GetPath().has_root_directory()) ref = CFileRef(i_settingsRef->Whole(ref.GetPath()));
    }
}

CSongFiles::CSongFiles(SDB_SongFile type, const CFileRef& file)
    : i_song{SDB_kUninitializedID},
      i_name(file.GetPath().stem().string()),
      i_wasMissingB(false),
      i_settingsRef(std::make_shared<LibrarySettings>()) {
    i_files.at(static_cast<std::size_t>(type)) = {SDB_SongFileStatus_REFERENCE, file};
}

std::optional<CSongFiles> CSongFiles::Of(const CSongDatabase& database, SongID song) {
    std::optional<CSongFiles> files;
    auto settingsRef = database.Settings();
    (void)database.WithSong(song, [&](const CSong& found) { files.emplace(found, std::move(settingsRef)); });
    return files;
}

OSErr CSongFiles::GetFile(SDB_SongFile type, CFileRef& file, TryCached tryCached) {
    const bool cachedB = tryCached == TryCached::kYes && type == SDB_SongFile_VIDEO;
    if (cachedB && !Failed(GetOwnFile(SDB_SongFile_VIDEO_CACHE, file))) return noErr;
    if (!Failed(GetOwnFile(type, file))) return noErr;
    return Search(type, file);
}

OSErr CSongFiles::GetOwnFile(SDB_SongFile type, CFileRef& file) {
    if (At(type).ref.IsEmpty()) return fnfErr;
    CFileRef ref = At(type).ref;
    OSErr err = ref.Resolve();
    if (Failed(err) && CSong_PathModder(i_settingsRef->musicFolder)(ref)) err = ref.Resolve();
    if (Failed(err)) return err;
    if (ref.GetPath() != At(type).ref.GetPath()) Found(type, ref);
    file = std::move(ref);
    return noErr;
}

OSErr CSongFiles::Search(SDB_SongFile type, CFileRef& file) {
    if (type == SDB_SongFile_AUDIO && IsWholeMovie()) return fnfErr;
    const CSongFileSearch search(i_name);
    // The name that the missing file had may be another one than that of the files beside it.
    const std::string ownName = At(type).ref.GetPath().stem().string();
    for (const SDB_SongFile baseType : SongFileSearchBases(type)) {
        CFileRef base;
        if (Failed(GetOwnFile(baseType, base))) base = At(baseType).ref;   // its folder may be there
        // On a disc that is away one question is enough.
        bool thereB = false;
        if (base.IsEmpty() || Failed(FSrFolderExists(base.GetParent(), thereB)) || !thereB) continue;
        if (Failed(search.Find(base, type, ownName, file))) continue;
        Found(type, file);
        return noErr;
    }
    return fnfErr;
}

void CSongFiles::Found(SDB_SongFile type, const CFileRef& file) {
    CMetaSongFile& place = i_files[static_cast<std::size_t>(type)];
    i_found.push_back({type, place.ref.IsEmpty() ? CFileRef::Path() : place.ref.GetPath(), file});
    place = {i_settingsRef->Status().Of(type, file.GetPath()), file};
}

bool CSongFiles::IsWholeMovie() const {
    return At(SDB_SongFile_AUDIO).ref.IsEmpty() && !At(SDB_SongFile_VIDEO).ref.IsEmpty() &&
           IsMovieFile(At(SDB_SongFile_VIDEO).ref.GetPath());
}

bool CSongFiles::IsReachable() {
    CFileRef file;
    if (!Failed(GetFile(SDB_SongFile_ZIP, file))) return true;
    // Sound alone and a video with its own sound are whole songs; graphics alone are half of one.
    const bool soundAloneB = Status(SDB_SongFile_VIDEO) == SDB_SongFileStatus_NONE;
    if (!soundAloneB && Failed(GetFile(SDB_SongFile_VIDEO, file))) return false;
    return IsWholeMovie() || !Failed(GetFile(SDB_SongFile_AUDIO, file));
}

OSErr CSongFiles::FindSoundOfSilentMovie(CFileRef& file) const {
    CFileRef movie = At(SDB_SongFile_VIDEO).ref;
    if (!IsWholeMovie() || Failed(movie.Resolve())) return fnfErr;
    return CSongFileSearch(i_name).Find(movie, SDB_SongFile_AUDIO, {}, file);
}

void CSongFiles::Store(CSong& song) const {
    for (const FoundFile& found : i_found) {
        const CFileRef now = song.FileRef(found.type);
        const CFileRef::Path place = now.IsEmpty() ? CFileRef::Path() : i_settingsRef->Whole(now.GetPath());
        if (place == found.before) (void)song.SetFile(found.type, found.file);
    }
}

std::string MissingSongText(const std::string& name) { return Localize("Could not find the song “%1”", {name}); }
