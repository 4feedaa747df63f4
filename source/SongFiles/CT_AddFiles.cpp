#include "SongFiles/CT_AddFiles.h"

#include <algorithm>

#include "Core/CLog.h"
#include "Core/Localize.h"
#include "Library/CSongDatabase.h"
#include "Platform/CClock.h"
#include "SongFiles/CSongFileWork.h"
#include "SongFiles/MakeSongOfFiles.h"
#include "Threads/CallOnMain.h"

namespace {

constexpr SDB_SongFile kLookedUp[] = {SDB_SongFile_AUDIO, SDB_SongFile_VIDEO, SDB_SongFile_ZIP};
constexpr std::size_t kLookUp_Block = 512;   // songs under one lock

// In one call: the main thread is not held up.
constexpr std::size_t kMake_Block = 100;   // songs that are made
constexpr std::size_t kEnter_Block =
    20'000;                           // songs that enter the library's list; each block may have it sorted again
constexpr double kEnter_EveryT = 2;   // in the course of it: what was made is saved soon

}   // namespace

CT_AddFiles::CT_AddFiles(CSongDatabase& database, std::vector<std::filesystem::path> paths, Done done)
    : CT_Preemptive("add files"),
      i_databaseRef(database.Self()),
      i_songsRef(database.Songs()),
      i_settingsRef(database.Settings()),
      i_stoppingRef(database.Stopping()),
      i_paths(std::move(paths)),
      i_done(std::move(done)),
      i_nextID(database.PeekNextID()),
      i_enterAtT(CClock::Get().SteadyT() + kEnter_EveryT),
      i_adding(std::in_place, database) {}

OSErr CT_AddFiles::Operate(OSErr err) {
    if (Failed(err)) return err;
    bool cancelledB = false;
    std::unique_ptr<CTaskView> viewP;
    (void)CThreadHost::With([&](CThreadHost& host) { viewP = host.OpenTask(Localize("Add Files")); });
    if (viewP) viewP->SetText(Localize("Gathering Files in folder"));
    const SongFileRules rules{.requireAudioB = i_settingsRef->requireAudioB, .midiB = i_settingsRef->launchMidiB};
    i_found = SongFileSets::Gather(i_paths, rules, [&] {
        cancelledB = cancelledB || *i_stoppingRef || (viewP && viewP->IsCancelled());
        return cancelledB;
    });
    if (cancelledB) return userCanceledErr;
    for (const SongFileSet& set : i_found.sets)
        for (const CFileRef* fileP : {&set.audio, &set.video, &set.zip})
            if (!fileP->IsEmpty()) i_owners.try_emplace(fileP->GetPath().native(), SongID{0});
    LookUp(i_songsRef->Ids());
    for (std::span<const SongFileSet> left(i_found.sets); !left.empty();) {
        const auto block = left.first(std::min(kMake_Block, left.size()));
        left = left.subspan(block.size());
        if (*i_stoppingRef || (viewP && viewP->IsCancelled())) return userCanceledErr;
        if (const OSErr made = CallOnMain("CMainThread_AddSong", [&] { return MakeSongs(block); }); Failed(made))
            return made;
    }
    while (i_enteredL < i_fresh.size())
        if (const OSErr entered = CallOnMain("CMainThread_AddSong", [&] { return EnterSongs(kEnter_Block); });
            Failed(entered))
            return entered;
    return noErr;
}

OSErr CT_AddFiles::EnterSongs(std::size_t mostL) {
    auto* const databaseP = i_databaseRef.Get();
    if (databaseP == nullptr) return abortErr;
    const auto block =
        std::span<const SongID>(i_fresh).subspan(i_enteredL, std::min(mostL, i_fresh.size() - i_enteredL));
    i_enterAtT = CClock::Get().SteadyT() + kEnter_EveryT;
    if (block.empty()) return noErr;
    (void)databaseP->AddSongsToLibrary(block);
    i_enteredL += block.size();
    databaseP->SetDirty(true, "songs added");
    return noErr;
}

void CT_AddFiles::LookUp(std::span<const SongID> songs) {
    for (std::size_t at = 0; at < songs.size(); at += kLookUp_Block)
        i_songsRef->WithMany([&](const auto& find) {
            for (const SongID id : songs.subspan(at, std::min(kLookUp_Block, songs.size() - at)))
                if (CSong* const songP = find(id))
                    for (const SDB_SongFile type : kLookedUp)
                        if (const CMetaValue value = songP->Meta().Stored(SongFileKey(type)))
                            if (const auto it = i_owners.find(i_settingsRef->Whole(value.FilePath()).native());
                                it != i_owners.end() && Number(it->second) == 0)
                                it->second = id;
        });
}

SongID CT_AddFiles::SongOf(const SongFileSet& set) const {
    for (const CFileRef* fileP : {&set.zip, &set.video, &set.audio})
        if (const auto it = i_owners.find(fileP->GetPath().native()); it != i_owners.end() && Number(it->second) != 0)
            return it->second;
    return SongID{0};
}

OSErr CT_AddFiles::Completion(OSErr err) {
    auto* const databaseP = i_databaseRef.Get();
    if (databaseP == nullptr) return err;
    CSongDatabase& database = *databaseP;
    (void)EnterSongs(i_fresh.size());   // of a task that was cancelled
    i_added.newL = i_fresh.size();
    i_added.refused = std::move(i_found.refused);
    LogF("Added: %lu", static_cast<unsigned long>(i_added.newL));
    // Afterwards: a disc may take ten milliseconds a file, and the songs can be played meanwhile.
    CSongFileWork::Of(database).Lengths().Find(i_fresh);
    i_adding.reset();   // whoever is told may take his time
    i_done(err, i_added);
    return err;
}

OSErr CT_AddFiles::MakeSongs(std::span<const SongFileSet> sets) {
    auto* const databaseP = i_databaseRef.Get();
    if (databaseP == nullptr) return abortErr;
    CSongDatabase& database = *databaseP;
    // What came while the disc was read, by another drop perhaps.
    std::vector<SongID> late;
    for (std::int32_t id = i_nextID; id < database.PeekNextID(); ++id) late.push_back(SongID{id});
    LookUp(late);
    const CSongDatabase::Batch batch(database);
    for (const SongFileSet& set : sets) {
        SongID id = SongOf(set);
        if (Number(id) == 0) {
            CSong* songP = i_make ? i_make(set) : nullptr;
            if (songP == nullptr) songP = MakeSongOfFiles(database, set);
            if (songP == nullptr) return paramErr;   // there are no more ids
            id = songP->GetSongID();
            for (const CFileRef* fileP : {&set.audio, &set.video, &set.zip})
                if (!fileP->IsEmpty()) i_owners[fileP->GetPath().native()] = id;
            i_fresh.push_back(id);
        }
        if (i_answered.insert(Number(id)).second) i_added.songs.push_back(id);
    }
    i_nextID = database.PeekNextID();
    return CClock::Get().SteadyT() < i_enterAtT ? noErr : EnterSongs(kEnter_Block);
}
