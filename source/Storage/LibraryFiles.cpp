#include "Storage/LibraryFiles.h"

#include <charconv>
#include <utility>

#include "Core/CLog.h"
#include "Library/ReadID.h"
#include "Storage/PropertyListStream.h"

namespace {

constexpr std::string_view kKey_Library = "Library", kKey_OldLibrary = "Vopla Library", kKey_Playlists = "Playlists",
                           kKey_Items = "Playlist Items", kKey_Major = "Major Version", kKey_Minor = "Minor Version",
                           kKey_NextID = "Next item ID (don't change this!!)", kKey_Venue = "Current Venue",
                           kKey_Application = "Application Version", kKey_SearchPaths = "Library Search Paths";
constexpr std::string_view kKey_Singers = "Singers", kKey_Singer = "Singer", kKey_Tonight = "Tonight",
                           kKey_Favorites = "Favorites", kKey_History = "History", kKey_Twirled = "Twirled Down",
                           kKey_SongInfo = "Song Info", kKey_Tracks = "Tracks";

using ItemPath = std::span<const std::string>;

/** True for a member of the array that lies at `array` below `depth` leading keys. */
bool IsMember(ItemPath path, std::size_t depth, std::string_view array) {
    return path.size() == depth + 2 && path[depth] == array && path.back().empty();
}

void TakeItem(const CCFValue& value, std::vector<PlaylistItemRecord>& items) {
    if (const CCFDictionary* rowP = value.Dictionary())
        items.push_back(PlaylistItemRecord::FromDictionary(*rowP));
    else
        LogF("Illegal key type: %s in Playlist Items", std::string(CFTypeName(value.Type())).c_str());
}

PlaylistRecord MakePlaylist(const CCFDictionary& dictionary, std::vector<PlaylistItemRecord> items) {
    PlaylistRecord playlist{dictionary, std::nullopt};
    if (playlist.keys.Remove(kKey_Items) || !items.empty()) playlist.items = std::move(items);
    return playlist;
}

/** The other keys of `dictionary`, which no field holds. */
CCFDictionary Without(CCFDictionary dictionary, std::initializer_list<std::string_view> known) {
    for (const std::string_view key : known) dictionary.Remove(key);
    return dictionary;
}

void Put(CCFXmlWriter& writer, std::string_view key, const CCFValue& value) {
    writer.Key(key);
    writer.Value(value);
}
void PutAll(CCFXmlWriter& writer, const CCFDictionary& dictionary) {
    for (const auto& [key, value] : dictionary) Put(writer, key, value);
}

}   // namespace

OSErr ReadLibraryIndex(const CFileRef& file, LibraryIndex& index) {
    std::vector<PlaylistItemRecord> items;   // of the list that is being read
    std::vector<PlaylistRecord> playlists;
    CCFValue root(false);
    const OSErr err = ReadPropertyListStream(
        file,
        [&](ItemPath path, const CCFValue& value) {
            if (path.front() != kKey_Library && path.front() != kKey_OldLibrary) return false;
            if (path.size() == 5 && IsMember(path.first(3), 1, kKey_Playlists) && IsMember(path, 3, kKey_Items)) {
                TakeItem(value, items);
                return true;
            }
            if (!IsMember(path, 1, kKey_Playlists)) return false;
            if (const CCFDictionary* listP = value.Dictionary())
                playlists.push_back(MakePlaylist(*listP, std::exchange(items, {})));
            return true;
        },
        root);
    if (Failed(err)) return err;
    const CCFDictionary* rootP = root.Dictionary();
    const CCFValue* valueP = rootP == nullptr ? nullptr : rootP->Find(kKey_Library);
    if (rootP != nullptr && valueP == nullptr) valueP = rootP->Find(kKey_OldLibrary);
    const CCFDictionary* libraryP = valueP == nullptr ? nullptr : valueP->Dictionary();
    if (libraryP == nullptr) return LogStep(paramErr, "no library in it", file.GetPath());

    LibraryIndex got;
    got.majorL = libraryP->GetInteger(kKey_Major);
    got.minorL = libraryP->GetInteger(kKey_Minor);
    got.nextID = ReadID(*libraryP, kKey_NextID);
    got.currentVenue = libraryP->GetString(kKey_Venue);
    got.applicationVersion = libraryP->GetString(kKey_Application);
    for (const CCFValue& path : libraryP->GetArray(kKey_SearchPaths))
        if (const SuperString* textP = path.String()) got.searchPaths.push_back(*textP);
    got.playlists = std::move(playlists);
    got.otherKeys = Without(*libraryP, {kKey_Major, kKey_Minor, kKey_NextID, kKey_Venue, kKey_Application,
                                        kKey_SearchPaths, kKey_Playlists});
    index = std::move(got);
    return noErr;
}

OSErr WriteLibraryIndex(const CFileRef& file, const LibraryIndex& index) { return WriteLibraryIndex(file, index, {}); }

OSErr WriteLibraryIndex(const CFileRef& file, const LibraryIndex& index,
                        const std::function<void(CCFXmlWriter&)>& writeFirst) {
    return WritePropertyListStream(file, [&index, &writeFirst](CCFXmlWriter& writer) {
        writer.BeginDictionary();
        writer.Key(kKey_Library);
        writer.BeginDictionary();
        Put(writer, kKey_Major, LibraryIndex::kMajor);
        Put(writer, kKey_Minor, LibraryIndex::kMinor);
        Put(writer, kKey_NextID, static_cast<std::int64_t>(index.nextID));
        Put(writer, kKey_Venue, index.currentVenue);
        Put(writer, kKey_Application, index.applicationVersion);
        Put(writer, kKey_SearchPaths, CFArray(index.searchPaths.begin(), index.searchPaths.end()));
        PutAll(writer, index.otherKeys);
        writer.Key(kKey_Playlists);
        writer.BeginArray();
        if (writeFirst) writeFirst(writer);
        for (const PlaylistRecord& playlist : index.playlists) playlist.Write(writer);
        writer.End();
        writer.End();
        writer.End();
    });
}

OSErr ReadPlaylistFile(const CFileRef& file, PlaylistRecord& playlist) {
    std::vector<PlaylistItemRecord> items;
    CCFValue root(false);
    const OSErr err = ReadPropertyListStream(
        file,
        [&items](ItemPath path, const CCFValue& value) {
            if (!IsMember(path, 0, kKey_Items)) return false;
            TakeItem(value, items);
            return true;
        },
        root);
    if (Failed(err)) return err;
    if (root.Dictionary() == nullptr) return LogStep(paramErr, "no playlist in it", file.GetPath());
    playlist = MakePlaylist(*root.Dictionary(), std::move(items));
    if (!playlist.items) playlist.items.emplace();
    return noErr;
}

OSErr WritePlaylistFile(const CFileRef& file, const PlaylistRecord& playlist) {
    return WritePropertyListStream(file, [&playlist](CCFXmlWriter& writer) { playlist.Write(writer); });
}

namespace {

SingerRecord MakeSinger(const CCFDictionary& dictionary) {
    SingerRecord singer;
    singer.meta = dictionary.GetDictionary(kKey_Singer);
    singer.tonightID = ReadID(dictionary, kKey_Tonight);
    singer.favoritesID = ReadID(dictionary, kKey_Favorites);
    singer.historyID = ReadID(dictionary, kKey_History);
    if (dictionary.Has(kKey_Twirled)) singer.twirledDownB = dictionary.GetBool(kKey_Twirled);
    singer.songInfo = dictionary.GetDictionary(kKey_SongInfo);
    singer.otherKeys =
        Without(dictionary, {kKey_Singer, kKey_Tonight, kKey_Favorites, kKey_History, kKey_Twirled, kKey_SongInfo});
    return singer;
}

CCFDictionary SingerDictionary(const SingerRecord& singer, bool aloneB) {
    CCFDictionary dictionary = singer.otherKeys;
    dictionary.Set(kKey_Singer, singer.meta);
    dictionary.Set(kKey_Tonight, static_cast<std::int64_t>(singer.tonightID));
    dictionary.Set(kKey_Favorites, static_cast<std::int64_t>(singer.favoritesID));
    dictionary.Set(kKey_History, static_cast<std::int64_t>(singer.historyID));
    if (aloneB) dictionary.Set(kKey_Twirled, singer.twirledDownB.value_or(false));
    dictionary.Set(kKey_SongInfo, singer.songInfo);
    return dictionary;
}

}   // namespace

OSErr ReadSingerFile(const CFileRef& file, SingerRecord& singer) {
    CCFValue root(false);
    if (const OSErr err = ReadPropertyListStream(file, {}, root); Failed(err)) return err;
    const CCFDictionary* rootP = root.Dictionary();
    if (rootP == nullptr || !rootP->Has(kKey_Singer)) return LogStep(paramErr, "no singer in it", file.GetPath());
    singer = MakeSinger(*rootP);
    return noErr;
}

OSErr WriteSingerFile(const CFileRef& file, const SingerRecord& singer) {
    return WritePropertyListStream(file,
                                   [&singer](CCFXmlWriter& writer) { writer.Value(SingerDictionary(singer, true)); });
}

OSErr ReadSingersFile(const CFileRef& file, std::vector<SingerRecord>& singers) {
    std::vector<SingerRecord> got;
    CCFValue root(false);
    const OSErr err = ReadPropertyListStream(
        file,
        [&got](ItemPath path, const CCFValue& value) {
            if (!IsMember(path, 0, kKey_Singers)) return false;
            if (const CCFDictionary* singerP = value.Dictionary()) got.push_back(MakeSinger(*singerP));
            return true;
        },
        root);
    if (Failed(err)) return err;
    if (root.Dictionary() == nullptr || !root.Dictionary()->Has(kKey_Singers))
        return LogStep(paramErr, "no singers in it", file.GetPath());
    singers = std::move(got);
    return noErr;
}

OSErr WriteSingersFile(const CFileRef& file, const std::vector<SingerRecord>& singers) {
    return WritePropertyListStream(file, [&singers](CCFXmlWriter& writer) {
        writer.BeginDictionary();
        writer.Key(kKey_Singers);
        writer.BeginArray();
        for (const SingerRecord& singer : singers) writer.Value(SingerDictionary(singer, false));
        writer.End();
        writer.End();
    });
}

std::vector<SingerRecord> MergeSingers(std::vector<SingerRecord> folders, std::vector<SingerRecord> together) {
    std::vector<std::uint32_t> ids;
    for (const SingerRecord& singer : folders) ids.push_back(singer.ID());
    std::ranges::sort(ids);
    for (SingerRecord& singer : together)
        if (singer.ID() == 0 || !std::ranges::binary_search(ids, singer.ID())) folders.push_back(std::move(singer));
    return folders;
}

OSErr ReadSongTable(const CFileRef& file, SongTable form, SongDictionaries& songs) {
    const std::size_t depth = form == SongTable::kTracks ? 1 : 0;
    SongDictionaries got;
    CCFValue root(false);
    const OSErr err = ReadPropertyListStream(
        file,
        [&got, depth](ItemPath path, const CCFValue& value) {
            if (path.size() != depth + 1 || (depth == 1 && path.front() != kKey_Tracks)) return false;
            const std::string& key = path.back();
            std::uint32_t id = 0;
            const auto [endP, fault] = std::from_chars(key.data(), key.data() + key.size(), id);
            const bool idB = fault == std::errc() && endP == key.data() + key.size() && id != 0;
            if (const CCFDictionary* songP = value.Dictionary(); songP != nullptr && idB)
                got.insert_or_assign(id, *songP);
            else
                LogF("Illegal key type: %s, %s", key.c_str(), std::string(CFTypeName(value.Type())).c_str());
            return true;
        },
        root);
    if (Failed(err)) return err;
    const CCFDictionary* rootP = root.Dictionary();
    if (rootP == nullptr || (depth == 1 && !rootP->Has(kKey_Tracks)))
        return LogStep(paramErr, "no songs in it", file.GetPath());
    songs = std::move(got);
    return noErr;
}

OSErr WriteSongTable(const CFileRef& file, SongTable form, const SongDictionaries& songs) {
    return WritePropertyListStream(file, [form, &songs](CCFXmlWriter& writer) {
        writer.BeginDictionary();
        if (form == SongTable::kTracks) {
            writer.Key(kKey_Tracks);
            writer.BeginDictionary();
        }
        for (const auto& [id, song] : songs) Put(writer, std::to_string(id), song);
        if (form == SongTable::kTracks) writer.End();
        writer.End();
    });
}
