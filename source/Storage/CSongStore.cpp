#include "Storage/CSongStore.h"

#include <array>
#include <limits>

#include "Core/CLog.h"
#include "Files/CDataFork.h"
#include "Files/FSrObjects.h"
#include "Library/CSongDatabase.h"
#include "Storage/CKeptSongs.h"
#include "Storage/CLibraryRestore.h"
#include "Storage/CLoadingScope.h"
#include "Storage/CScopedClock.h"
#include "Storage/CSongFileReader.h"
#include "Storage/CSongFileWriter.h"
#include "Storage/CSongsXML.h"

namespace {
constexpr const char* kSongs_Name = "Songs.vlb";
constexpr const char* kSongsMeta_Name = "Songs Meta.xml";
constexpr const char* kSongsXML_Name = "Songs.xml";
constexpr const char* kLibrary_Name = "Library.xml";

/** Bytes that are wrong or too few. Any other failure is of the disc, of a permission, of the machine. */
bool IsDamage(OSErr err) { return err == eofErr || err == paramErr; }

/** Records between two looks at the progress. */
std::uint32_t TickOf(std::uint32_t songsL) { return songsL < 1000 ? 10 : 50; }
}   // namespace

CSongStore::CSongStore(CSongDatabase& database, LibraryPlaces places, CLibraryHost& host)
    : i_database(database),
      i_host(host),
      i_places(std::move(places)),
      i_forms(i_places.musicFolder, CSongStatus(i_places.musicFolder, i_places.cacheFolder)),
      i_backup(i_places.root) {}

OSErr CSongStore::FinishRestore() {
    const OSErr err = CLibraryRestore(i_places.root).FinishEarlier();
    i_betweenB = Failed(err);
    return err;
}

OSErr CSongStore::CanRead(CFileRef& file) const {
    for (const char* const nameZ : {kSongs_Name, kSongsMeta_Name, kSongsXML_Name, kLibrary_Name}) {
        file = CFileRef(i_places.root, nameZ);
        CDataFork fork;
        std::array<std::byte, 1> first{};
        std::size_t got = 0;
        OSErr err = fork.Open(file, FileAccess::kRead);
        if (!Failed(err)) err = fork.Read(first, got);
        if (Failed(err) && err != fnfErr && !IsDamage(err)) return LogStep(err, "reading the library", file.GetPath());
    }
    return noErr;
}

OSErr CSongStore::Load() {
    const CLoadingScope loading(i_database);
    if (const OSErr err = FinishRestore(); Failed(err)) return err;
    SongDictionaries meta;
    const OSErr metaErr = ReadSongTable(CFileRef(i_places.root, kSongsMeta_Name), SongTable::kMeta, meta);
    i_metaDamagedB = IsDamage(metaErr);
    OSErr err = LoadRecords(meta);
    if (err == fnfErr) err = LoadXML(meta);
    i_wholeB = !Failed(err);
    i_songsDamagedB = IsDamage(err);
    for (const OSErr each : {err, metaErr})
        i_keptBackB = i_keptBackB || (Failed(each) && each != fnfErr && !IsDamage(each));
    if (!i_wholeB) i_restOfLost = std::move(meta);
    const OSErr metaFault = metaErr == fnfErr ? noErr : metaErr;
    if (err == fnfErr) return i_keptBackB ? metaFault : fnfErr;
    return FirstOf(err, metaFault);
}

OSErr CSongStore::LoadRecords(SongDictionaries& meta) {
    const CScopedClock clock("Time To Load (Binary)");
    CSongFileReader reader;
    if (const OSErr err = reader.Open(CFileRef(i_places.root, kSongs_Name)); Failed(err)) {
        if (err == paramErr && reader.IsTooNew()) i_tooNew = reader.TooNewText();
        return err;
    }
    i_flags = reader.Header().flags;
    i_olderB = reader.Header().Version() < CSongFileReader::kNewestVersion;
    const std::uint32_t songsL = reader.Header().songsL, tickL = TickOf(songsL);
    FileInfo info;   // the header's number is not to be trusted, the size of the file is
    if (!Failed(FSrCheckFile(CFileRef(i_places.root, kSongs_Name), info)))
        i_database.Songs()->Reserve(std::min<std::size_t>(songsL, info.bytesL / SongRecord::kBytes));
    i_host.ShowProgress("Loading songs into Database…");
    for (SongRecord record; reader.Next(record);) {
        if (reader.Count() % tickL == 0) i_host.ShowSteps(reader.Count(), songsL);
        const bool idB = record.songID <= static_cast<std::uint32_t>(std::numeric_limits<std::int32_t>::max());
        CSong* songP = idB ? i_database.CreateSong(SongID{static_cast<std::int32_t>(record.songID)}) : nullptr;
        if (songP == nullptr) {   // damaged, or there twice: the song matters more than its number
            songP = i_database.CreateSong();
            LogF("### Error the id %u of a song cannot be used", record.songID);
            if (songP == nullptr) continue;
        }
        i_forms.Load(record, songP->Meta());
        if ((record.flags & kSongFlag_Missing) != 0) i_database.NoteMissing(songP->GetSongID(), true);
        LoadRest(record.songID, meta, songP->Meta());
    }
    return reader.Finish();
}

void CSongStore::LoadRest(std::uint32_t id, SongDictionaries& meta, CMeta& song) {
    const auto it = meta.find(id);
    if (it == meta.end()) return;
    i_forms.LoadRest(it->second, song);
    meta.erase(it);   // a second song of the id has none
}

std::size_t CSongStore::LoadMissing(const CKeptSongs& kept) {
    const CLoadingScope loading(i_database);
    std::size_t madeL = 0;
    const OSErr err = kept.ForEach([&](const SongRecord& record) {
        if (MakeLost(record) != nullptr) ++madeL;
    });
    if (Failed(err)) (void)LogStep(err, "bringing songs back", kept.Copy().GetPath());
    LogF("Songs brought back from %s: %zu", kept.Copy().GetPath().c_str(), madeL);
    return madeL;
}

CSong* CSongStore::MakeLost(const SongRecord& record) {
    const bool idB = record.songID <= static_cast<std::uint32_t>(std::numeric_limits<std::int32_t>::max());
    const SongID id{idB ? static_cast<std::int32_t>(record.songID) : 0};
    if (Number(id) <= 0 || i_database.WithSong(id, [](CSong&) {})) return nullptr;
    CSong* const songP = i_database.CreateSong(id);
    if (songP == nullptr) return nullptr;
    i_forms.Load(record, songP->Meta());
    LoadRest(record.songID, i_restOfLost, songP->Meta());
    return songP;
}

/** The old form; the next save writes the new one, which is read first from then on. */
OSErr CSongStore::LoadXML(SongDictionaries& meta) {
    const CFileRef file(i_places.root, kSongsXML_Name);
    bool thereB = false;
    if (const OSErr err = FSrFileExists(file, thereB); Failed(err) || !thereB) return FirstOf(err, fnfErr);
    const CScopedClock clock("Time To Load (XML)");
    i_olderB = true;
    CSongsXML songs(i_database, CSongStatus(i_places.musicFolder, i_places.cacheFolder));
    return songs.Load(file, [&](std::uint32_t id, CMeta& song) { LoadRest(id, meta, song); });
}

OSErr CSongStore::Prepare() {
    if (IsTooNew()) return LogStep(opWrErr, "saving over the library of a later version");
    if (i_keptBackB) return LogStep(opWrErr, "saving over a library that could not be read");
    if (i_betweenB) return LogStep(opWrErr, "saving over a restore that is not finished");
    static_cast<void>(i_backup.KeepOnce());   // told; what is damaged is set aside, so that nothing hangs on the copy
    return SetAside();
}

OSErr CSongStore::Save() {
    if (const OSErr err = Prepare(); Failed(err)) return err;
    Log("Saving Database: Start");
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
    if (const OSErr err = writer.Start(CFileRef(i_places.root, kSongs_Name), songsL, i_flags); Failed(err)) return err;
    for (const SongID id : ids) {
        SongRecord record;
        const auto number = static_cast<std::uint32_t>(Number(id));
        const bool thereB = i_database.WithSong(id, [&](CSong& song) {
            CCFDictionary rest;
            record = i_forms.Make(number, song.Meta(), rest);
            if (!rest.Empty()) meta.emplace(number, std::move(rest));
        });
        if (!thereB)
            writer.Skip();
        else if (const OSErr err = writer.Add(record); Failed(err))
            return err;
    }
    return writer.Finish();
}
