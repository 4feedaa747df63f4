#include "SongFiles/CT_FindMissing.h"

#include <algorithm>

#include "Core/CLog.h"
#include "Core/Localize.h"
#include "Files/FSrFolders.h"
#include "Library/SongFileTypes.h"
#include "SongFiles/CSongFileWork.h"

namespace {
constexpr SDB_SongFile kLookedAt[] = {SDB_SongFile_ZIP, SDB_SongFile_AUDIO, SDB_SongFile_VIDEO};
constexpr std::size_t kMissing_Block = 500;   // songs in one call to the main thread
}   // namespace

OSErr CT_FindMissing::Start(CSongDatabase& database, std::vector<SongID> songs, Done done) {
    if (songs.empty()) songs = database.Songs()->Ids();
    std::unique_ptr<CT_Preemptive> taskP(new CT_FindMissing(database, std::move(songs), std::move(done)));
    return CT_Preemptive::Start(std::move(taskP)) == 0 ? abortErr : noErr;
}

OSErr CT_FindMissing::StartBelow(CSongDatabase& database, std::vector<CFileRef::Path> folders, Done done) {
    std::unique_ptr<CT_FindMissing> taskP(new CT_FindMissing(database, database.Songs()->Ids(), std::move(done)));
    taskP->i_below = std::move(folders);
    return CT_Preemptive::Start(std::move(taskP)) == 0 ? abortErr : noErr;
}

OSErr CT_FindMissing::StartMarked(CSongDatabase& database, Done done) {
    std::unique_ptr<CT_FindMissing> taskP(new CT_FindMissing(database, database.MissingSongs(), std::move(done)));
    taskP->BeQuiet();
    return CT_Preemptive::Start(std::move(taskP)) == 0 ? abortErr : noErr;
}

CT_FindMissing::CT_FindMissing(CSongDatabase& database, std::vector<SongID> songs, Done done)
    : CT_OnSongs(N_("find missing"), database, std::move(songs), std::move(done)),
      i_keeperRef(CSongFileWork::Of(database).Keeper()) {}

bool CT_FindMissing::IsConcerned(const CSongFiles& files) const {
    if (i_below.empty() || files.WasMissing()) return true;
    return std::ranges::any_of(kLookedAt, [&](SDB_SongFile type) {
        const CFileRef& file = files.Ref(type);
        return !file.IsEmpty() && std::ranges::any_of(i_below, [&](const CFileRef::Path& folder) {
            return IsInside(file.GetPath(), folder);
        });
    });
}

OSErr CT_FindMissing::OnSong(CSongFiles& files) {
    if (!IsConcerned(files)) return noErr;
    const bool missingB = !files.IsReachable(), borrowedB = HasBorrowedSound(files);
    if (missingB != files.WasMissing() || files.FoundElsewhere() || borrowedB)
        i_seen.push_back({files, missingB, borrowedB});
    return i_seen.size() < kMissing_Block ? noErr : Tell();
}

/** Once a movie took the sound beside it, by its name, for its own. It gives that back when it is another song's. */
bool CT_FindMissing::HasBorrowedSound(const CSongFiles& files) {
    const CFileRef &movie = files.Ref(SDB_SongFile_VIDEO), &sound = files.Ref(SDB_SongFile_AUDIO);
    if (movie.IsEmpty() || sound.IsEmpty() || !IsMovieFile(movie.GetPath())) return false;
    const bool besideB = movie.GetPath().parent_path() == sound.GetPath().parent_path() &&
                         movie.GetPath().stem() == sound.GetPath().stem();
    return besideB && i_keeperRef->IsSoundOfAnother(sound, files.Song());
}

OSErr CT_FindMissing::AtEnd(OSErr err) { return FirstOf(err, Tell()); }

OSErr CT_FindMissing::Tell() {
    if (i_seen.empty()) return noErr;
    const OSErr err = OnMain("missing songs", [this](CSongDatabase& database) {
        std::vector<SongID> songs;
        for (const Seen& seen : i_seen) {
            CSong* const songP = database.GetSong(seen.files.Song());
            if (songP == nullptr) continue;
            songP->SetMissing(seen.missingB);
            seen.files.Store(*songP);
            if (seen.borrowedB) {
                LogF("The movie “%s” gives back the sound of another song: %s", seen.files.Name().c_str(),
                     seen.files.Ref(SDB_SongFile_AUDIO).GetPath().c_str());
                (void)songP->SetFile(SDB_SongFile_AUDIO, CFileRef());
            }
            songs.push_back(seen.files.Song());
        }
        const MetaKey key = "Msng"_key;
        database.UpdateItems(songs, std::span(&key, 1));
        return noErr;
    });
    i_seen.clear();
    return err;
}
