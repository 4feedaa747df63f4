#include "Library/CT_FindMissing.h"

namespace {
constexpr std::size_t kTell_Block = 500;   // songs in one call to the main thread
}

OSErr CT_FindMissing::Start(CSongDatabase& database, std::vector<SongID> songs, Done done) {
    if (songs.empty()) songs = database.Songs()->Ids();
    std::unique_ptr<CT_Preemptive> taskP(new CT_FindMissing(database, std::move(songs), std::move(done)));
    return CT_Preemptive::Start(std::move(taskP)) == 0 ? abortErr : noErr;
}

CT_FindMissing::CT_FindMissing(CSongDatabase& database, std::vector<SongID> songs, Done done)
    : CT_OnSongs("find missing", database, std::move(songs), std::move(done)) {}

OSErr CT_FindMissing::OnSong(CSongFiles& files) {
    const bool missingB = !files.IsReachable();
    if (missingB != files.WasMissing() || files.FoundElsewhere()) i_seen.push_back({files, missingB});
    return i_seen.size() < kTell_Block ? noErr : Tell();
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
            songs.push_back(seen.files.Song());
        }
        const MetaKey key = "Msng"_key;
        database.UpdateItems(songs, std::span(&key, 1));
        return noErr;
    });
    i_seen.clear();
    return err;
}
