#include "Library/CSongStore.h"

#include <limits>

#include "Core/CLog.h"
#include "Core/FSrObjects.h"
#include "Library/CLibraryRestore.h"
#include "Library/CSongDatabase.h"
#include "Library/CSongFileReader.h"
#include "Library/CSongFileWriter.h"

namespace {
constexpr const char* kSongs_Name = "Songs.vlb";
constexpr const char* kSongsMeta_Name = "Songs Meta.xml";

/** The database's "loading" for a scope. */
class LoadingScope {
public:
    explicit LoadingScope(CSongDatabase& database) : i_database(database) { i_database.SetLoading(true); }
    ~LoadingScope() { i_database.SetLoading(false); }
    LoadingScope(const LoadingScope&) = delete;
    LoadingScope& operator=(const LoadingScope&) = delete;

private:
    CSongDatabase& i_database;
};
}   // namespace

CSongStore::CSongStore(CSongDatabase& database, LibraryPlaces places)
    : i_database(database),
      i_places(std::move(places)),
      i_forms(i_places.musicFolder, CSongStatus(i_places.musicFolder, i_places.cacheFolder)),
      i_backup(i_places.root) {}

OSErr CSongStore::Load() {
    const LoadingScope loading(i_database);
    if (const OSErr err = CLibraryRestore(i_places.root).FinishEarlier(); Failed(err)) {
        i_betweenB = true;
        return err;
    }
    SongDictionaries meta;
    const OSErr metaErr = ReadSongTable(CFileRef(i_places.root, kSongsMeta_Name), SongTable::kMeta, meta);
    i_metaDamagedB = Failed(metaErr) && metaErr != fnfErr;
    const OSErr err = LoadRecords(meta);
    i_songsDamagedB = Failed(err) && err != fnfErr;
    return err == fnfErr || !i_metaDamagedB ? err : FirstOf(err, metaErr);
}

OSErr CSongStore::LoadRecords(SongDictionaries& meta) {
    CSongFileReader reader;
    if (const OSErr err = reader.Open(CFileRef(i_places.root, kSongs_Name)); Failed(err)) {
        if (err == paramErr && reader.IsTooNew()) i_tooNew = reader.TooNewText();
        return err;
    }
    for (SongRecord record; reader.Next(record);) {
        const bool idB = record.songID <= static_cast<std::uint32_t>(std::numeric_limits<std::int32_t>::max());
        CSong* songP = idB ? i_database.CreateSong(SongID{static_cast<std::int32_t>(record.songID)}) : nullptr;
        if (songP == nullptr) {   // damaged, or there twice: the song matters more than its number
            songP = i_database.CreateSong();
            LogF("### Error the id %u of a song cannot be used", record.songID);
            if (songP == nullptr) continue;
        }
        i_forms.Load(record, songP->Meta());
        if (const auto it = meta.find(record.songID); it != meta.end()) {
            i_forms.LoadRest(it->second, songP->Meta());
            meta.erase(it);   // a second song of the id has none
        }
    }
    return reader.Finish();
}

OSErr CSongStore::Save() {
    if (IsTooNew()) return LogStep(opWrErr, "saving over the library of a later version");
    if (i_betweenB) return LogStep(opWrErr, "saving over a restore that is not finished");
    Log("Saving Database: Start");
    static_cast<void>(i_backup.KeepOnce());   // told; what is damaged is set aside, so that nothing hangs on the copy
    if (const OSErr err = SetAside(); Failed(err)) return err;
    SongDictionaries meta;
    if (const OSErr err = WriteRecords(meta); Failed(err)) return err;
    const CFileRef metaFile(i_places.root, kSongsMeta_Name);
    bool thereB = false;
    if (const OSErr err = FSrObjectExists(metaFile, thereB); Failed(err)) return err;
    if (!meta.empty() || thereB) {   // an old one may hold what songs have no more
        const OSErr err = WriteSongTable(metaFile, SongTable::kMeta, meta);
        if (Failed(err)) return LogStep(err, "write meta plist", metaFile.GetPath());
    }
    Log("Saving Database: End");
    return noErr;
}

/** What could not be read whole gets another name, once. */
OSErr CSongStore::SetAside() {
    for (const auto& [nameZ, damagedP] :
         {std::pair{kSongs_Name, &i_songsDamagedB}, {kSongsMeta_Name, &i_metaDamagedB}}) {
        if (!*damagedP) continue;
        CFileRef file(i_places.root, nameZ);
        if (const OSErr err = SetAsideDamaged(file); Failed(err) && err != fnfErr) return err;
        *damagedP = false;
    }
    return noErr;
}

OSErr CSongStore::WriteRecords(SongDictionaries& meta) {
    std::vector<SongID> ids = i_database.Songs()->Ids();
    std::ranges::sort(ids);
    CSongFileWriter writer;
    const auto songsL = static_cast<std::uint32_t>(ids.size());
    if (const OSErr err = writer.Start(CFileRef(i_places.root, kSongs_Name), songsL); Failed(err)) return err;
    for (const SongID id : ids) {
        SongRecord record;
        const auto number = static_cast<std::uint32_t>(Number(id));
        const bool thereB = i_database.WithSong(id, [&](CSong& song) {
            record = i_forms.Make(number, song.Meta());
            if (CCFDictionary rest = i_forms.Rest(song.Meta()); !rest.Empty()) meta.emplace(number, std::move(rest));
        });
        if (!thereB) return LogStep(abortErr, "a song went during the save");
        if (const OSErr err = writer.Add(record); Failed(err)) return err;
    }
    return writer.Finish();
}
