#include "SongFiles/CSongFileWork.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "Core/CLog.h"
#include "Library/CSongDatabase.h"
#include "Meta/CMetaValue.h"
#include "SongFiles/CPushMetaTimer.h"
#include "SongFiles/CSongFileKeeper.h"
#include "SongFiles/CT_ConformNames.h"
#include "SongFiles/CT_FindMissing.h"

namespace {

// A song whose place of these changed may be missing now, or may be found again.
constexpr MetaKey kMissing_Keys[] = {"Sfs0"_key, "Sfs1"_key, "Sfs2"_key};

// The values that a template can put into the name of a song's files.
constexpr MetaKey kNamed_Keys[] = {"name"_key, "arts"_key, "albm"_key, "trak"_key, "rdtn"_key};

bool IsAmong(std::span<const MetaKey> keys, MetaKey key) { return std::ranges::find(keys, key) != keys.end(); }

}   // namespace

CSongFileWork::CSongFileWork(CSongDatabase& database)
    : i_database(database), i_warnings(database), i_lengths(database) {
    i_pushTimer = (new CPushMetaTimer(i_self.Handle()))->GetForkID();
    i_database.SetFollower(this);
}

CSongFileWork::~CSongFileWork() {
    i_database.SetFollower(nullptr);
    i_self.Empty();
    CT_Timer::SetInterval(i_pushTimer, 0.0);   // its next turn finds nobody, and is its last
}

CSongFileWork& CSongFileWork::Of(const CSongDatabase& database) {
    return dynamic_cast<CSongFileWork&>(*database.Follower());
}

std::shared_ptr<CSongFileKeeper> CSongFileWork::Keeper() {
    const auto freshRef = std::make_shared<CSongFileKeeper>(i_database.Songs(), i_database.Settings());
    return i_keeper.With([&](std::weak_ptr<CSongFileKeeper>& keeper) {
        std::shared_ptr<CSongFileKeeper> keeperRef = keeper.lock();
        if (!keeperRef) keeper = keeperRef = freshRef;
        return keeperRef;
    });
}

void CSongFileWork::FileNamed(SongID song, const CMetaValue& file) {
    const auto keeperRef = i_keeper.Get().lock();
    if (keeperRef && file) keeperRef->Note(song, file.FilePath());
}

void CSongFileWork::SongsWereChanged(std::span<const SongChange> changes) {
    NoteEdits(changes);
    if (std::ranges::none_of(changes, [](const SongChange& change) { return IsAmong(kMissing_Keys, change.key); }))
        return;
    std::vector<SongID> songs;
    for (const SongChange& change : changes) songs.push_back(change.song);
    std::ranges::sort(songs);
    songs.erase(std::unique(songs.begin(), songs.end()), songs.end());
    if (Failed(CT_FindMissing::Start(i_database, std::move(songs)))) Log("### Error looking for missing songs");
}

void CSongFileWork::PlayingSongChanged(SongID before) {
    if (i_renameLater.erase(Number(before)) == 0) return;
    if (Failed(CT_ConformNames::Start(i_database, {before}))) Log("### Error renaming the song that played");
}

void CSongFileWork::NoteEdits(std::span<const SongChange> changes) {
    const auto settingsRef = i_database.Settings();
    if (!settingsRef->pushEditsB || !settingsRef->conformNamesB) return;
    bool editedB = false;
    for (const SongChange& change : changes)
        if (!change.batchB && IsAmong(kNamed_Keys, change.key)) {
            i_edited.insert(Number(change.song));
            editedB = true;
        }
    if (editedB) CT_Timer::SetInterval(i_pushTimer, settingsRef->pushWaitT);
}

void CSongFileWork::PushEdits() {
    std::vector<SongID> songs;
    for (const std::int32_t id : std::exchange(i_edited, {})) songs.push_back(SongID{id});
    if (!songs.empty() && Failed(CT_ConformNames::Start(i_database, std::move(songs)))) Log("### Error renaming songs");
}
