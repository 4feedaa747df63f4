#include "SongFiles/CT_PurgeCache.h"

#include <algorithm>
#include <map>

#include "Core/CLog.h"
#include "Core/SmallExtension.h"
#include "Files/FSrFolders.h"
#include "Files/FSrObjects.h"
#include "Library/CSongDatabase.h"
#include "SongFiles/CSongFileWork.h"
#include "SongFiles/SongFolders.h"
#include "Threads/CallOnMain.h"
#include "Threads/WaitMode.h"

namespace {

constexpr SDB_SongFile kCached[] = {SDB_SongFile_AUDIO_CACHE, SDB_SongFile_VIDEO_CACHE};

enum class CacheFile : unsigned char { kOther, kSong, kImage };

CacheFile KindOf(const CFileRef::Path& file) {
    const std::string extension = SmallExtension(file);
    if (extension == "pcm" || extension == "cdg") return CacheFile::kSong;
    return extension == "bin" || extension == "cue" ? CacheFile::kImage : CacheFile::kOther;
}

}   // namespace

OSErr CT_PurgeCache::Start(CSongDatabase& database, std::shared_ptr<CBusySongs> busyRef,
                           std::function<void(OSErr err)> done) {
    std::unique_ptr<CT_Preemptive> taskP(new CT_PurgeCache({database.Self(), database.Songs(), database.Settings(),
                                                            std::move(busyRef), CSongFileWork::Of(database).Keeper()},
                                                           database.PlayingSong(), std::move(done)));
    return CT_Preemptive::Start(std::move(taskP)) == 0 ? abortErr : noErr;
}

CT_PurgeCache::CT_PurgeCache(SongFileWorld world, SongID playing, std::function<void(OSErr err)> done)
    : CT_Preemptive("purge cache"), i_world(std::move(world)), i_playing(playing), i_done(std::move(done)) {}

OSErr CT_PurgeCache::Operate(OSErr err) {
    if (Failed(err)) return err;
    std::vector<Item> songs, images;
    std::size_t filesL = 0;
    Log("PurgeCache: Getting Cache file reference list");
    if (err = List(songs, images, filesL); Failed(err)) return err;
    Log("PurgeCache: Sort by date");
    const std::vector<Item> oldSongs = Over(std::move(songs), i_world.settingsRef->cachedSongsL);
    if (err = WaitForSaves(); Failed(err)) return err;
    LogF("number of files: %d, songs allowed: %d, songs to delete: %d\n", static_cast<int>(filesL),
         static_cast<int>(i_world.settingsRef->cachedSongsL), static_cast<int>(oldSongs.size()));
    Log("PurgeCache: send to deletion que");
    err = Delete(oldSongs);
    Log("PurgeCache: sort bin / que");
    const std::vector<Item> oldImages = Over(std::move(images), i_world.settingsRef->cachedImagesL);
    Log("PurgeCache: send bin/cue to deletion que");
    err = FirstOf(err, Delete(oldImages));
    CleanOrphans();
    return err;
}

OSErr CT_PurgeCache::Completion(OSErr err) {
    auto* const databaseP = i_world.databaseRef.Get();
    if (databaseP != nullptr && i_done) i_done(err);
    return err;
}

OSErr CT_PurgeCache::WaitForSaves() const {
    constexpr double kWait_T = 0.05;
    for (;;) {
        const OSErr err = CallOnMain("purge cache", i_world.databaseRef, [](const CSongDatabase& database) {
            return database.Host().IsSaving() ? queueNotDoneErr : noErr;
        });
        if (err != queueNotDoneErr) return err;
        Wait(kWait_T);
    }
}

OSErr CT_PurgeCache::List(std::vector<Item>& songs, std::vector<Item>& images, std::size_t& filesL) const {
    CFileRef cache;
    if (const OSErr err = GetSongRoot(*i_world.settingsRef, SongRoot::kCache, cache); Failed(err)) return err;
    std::vector<std::string> names;
    if (const OSErr err = FSrList(cache, names); Failed(err)) return err;
    std::map<std::pair<CacheFile, std::string>, Item> items;
    for (const std::string& name : names) {
        const CFileRef file(cache, name);
        const CacheFile kind = KindOf(file.GetPath());
        FileInfo info;
        if (kind == CacheFile::kOther || CFileCalls::Get().Look(file.GetPath(), false, info) != 0) continue;
        if (info.kind != FileKind::kFile) continue;
        ++filesL;
        // The halves of a song have one id whatever became of its name between them.
        const SongID song = kind == CacheFile::kSong ? SongOfCacheFile(name) : SongID{0};
        // A folder that holds more than the cache: what is not called as ours are, or what a song lives by, stays.
        if (kind == CacheFile::kSong && Number(song) == 0) continue;
        const std::string base =
            Number(song) != 0 ? std::to_string(Number(song)) + " " : file.GetPath().stem().string();
        Item& item = items[{kind, base}];
        item.base = base;
        item.song = song;
        item.newestL = std::max(item.newestL, info.modifiedL);
        item.files.push_back(file);
    }
    for (auto& [key, item] : items) (key.first == CacheFile::kSong ? songs : images).push_back(std::move(item));
    return noErr;
}

std::vector<CT_PurgeCache::Item> CT_PurgeCache::Over(std::vector<Item> items, long allowedL) const {
    const auto overL = static_cast<long>(items.size()) - allowedL;
    std::ranges::sort(items, {}, [](const Item& item) { return std::pair(item.newestL, item.base); });
    // What is in use counts, and stays.
    std::vector<Item> old;
    for (Item& item : items) {
        if (static_cast<long>(old.size()) >= overL) break;
        const bool usedB = Number(item.song) != 0 && (item.song == i_playing || i_world.busyRef->IsBusy(item.song));
        if (!usedB) old.push_back(std::move(item));
    }
    return old;
}

OSErr CT_PurgeCache::Delete(const std::vector<Item>& items) {
    OSErr first = noErr;   // one file that stays keeps no other
    for (const Item& item : items) {
        // First the song: nobody shall find a place whose file is going. It may play since we began.
        OSErr err = CallOnMain("purge cache", i_world.databaseRef, [&](const CSongDatabase& database) {
            if (Number(item.song) == 0) return noErr;
            if (database.PlayingSong() == item.song) return opWrErr;
            CSong* const songP = database.GetSong(item.song);
            for (const SDB_SongFile type : kCached)
                if (songP != nullptr && std::ranges::any_of(item.files, [&](const CFileRef& file) {
                        return file.GetPath() == songP->FileRef(type).GetPath();
                    }))
                    (void)songP->SetFile(type, CFileRef());   // no place of a disc
            return noErr;
        });
        if (err == opWrErr) continue;
        if (Failed(err)) return err;
        for (const CFileRef& file : item.files)
            if (i_world.keeperRef->IsCacheOf(file, item.song)) err = FirstOf(err, FSrPurge(file, PurgePlace::kCache));
        first = FirstOf(first, err);
    }
    return first;
}

void CT_PurgeCache::CleanOrphans() {
    Log("PurgeCache: orphans: create selection");
    std::vector<CSongFiles> orphans;
    constexpr std::size_t kBlock = 512;
    const std::vector<SongID> all = i_world.songsRef->Ids();
    for (std::size_t at = 0; at < all.size(); at += kBlock)
        i_world.songsRef->WithMany([&](const auto& find) {
            for (std::size_t n = at; n < std::min(at + kBlock, all.size()); ++n) {
                const CSong* const songP = find(all[n]);
                if (songP == nullptr || songP->MainFile() != SDB_SongFile_NONE) continue;
                const bool cachedB = std::ranges::any_of(
                    kCached, [&](SDB_SongFile type) { return songP->GetStatus(type) != SDB_SongFileStatus_NONE; });
                if (cachedB) orphans.emplace_back(*songP, i_world.settingsRef);
            }
        });
    Log("PurgeCache: orphans: remove missing");
    for (const CSongFiles& orphan : orphans)
        for (const SDB_SongFile type : kCached) {
            FileInfo info;
            if (orphan.Ref(type).IsEmpty() || FSrCheckFile(orphan.Ref(type), info) != fnfErr) continue;
            (void)CallOnMain("purge cache", i_world.databaseRef, [&](const CSongDatabase& database) {
                CSong* const songP = database.GetSong(orphan.Song());
                const bool sameB = songP != nullptr && songP->FileRef(type).GetPath() == orphan.Ref(type).GetPath();
                return sameB ? songP->SetFile(type, CFileRef()) : noErr;
            });
        }
}
