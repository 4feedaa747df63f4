#include "Storage/CLibraryCheck.h"

#include <algorithm>
#include <cerrno>
#include <unordered_set>

#include "Core/CLog.h"
#include "Core/FaultText.h"
#include "Files/FSError.h"
#include "Files/FSrObjects.h"
#include "Library/SourceType.h"
#include "Storage/CSongFileReader.h"
#include "Storage/SDB_ForEach_LoadLibrary.h"
#include "Storage/SingerAccounts.h"

namespace {

std::string Quoted(std::string_view name) { return "“" + std::string(name) + "”"; }
std::string SongWords(const SongRecord& record) {
    return "song " + std::to_string(record.songID) + " " + Quoted(record.Text(SongText::kName));
}
std::string ListWords(std::string_view name, std::uint32_t id) {
    return "list " + Quoted(name) + " (" + std::to_string(id) + ")";
}

struct PathRow {
    SongText text;
    std::uint16_t relative;   // the flag
    const char* wordZ;
};
constexpr PathRow kPaths[] = {
    {SongText::kVideoPath, kSongFlag_VideoRelative, "video"},
    {SongText::kAudioPath, kSongFlag_AudioRelative, "audio"},
    {SongText::kZipPath, kSongFlag_ZipRelative, "zip"},
    {SongText::kProjectPath, kSongFlag_ProjectRelative, "project"},
    {SongText::kLaunchPath, kSongFlag_LaunchRelative, "launch"},
};

/** The library's own list stands in "Library.xml" itself, others in files; what comes from elsewhere in none. */
bool IsKeptInFile(const PlaylistRecord& list) {
    const std::int64_t type = list.Type();
    return IsSourceType(static_cast<std::int32_t>(type)) && IsSaveable(static_cast<SourceType>(type)) &&
           type != static_cast<std::int64_t>(kSourceDB_LIBRARY);
}

}   // namespace

LibraryFindings CLibraryCheck::Run() {
    LibraryImage image;
    if (const OSErr err = SDB_ForEach_LoadLibrary(i_places.root).Run(image); Failed(err)) {
        i_found.err = err;
        Problem("the folder cannot be read: " + FaultWords(err, FaultOf::kFolder));
    }
    for (const UnreadFile& unread : image.unread)
        Problem(unread.file.GetPath().lexically_relative(i_places.root.GetPath()).string() +
                " cannot be read whole: " + FaultWords(unread.err, FaultOf::kFile));
    if (image.index) i_nextIDL = image.index->nextID;
    CheckSongs();
    CheckSongsMeta();
    if (image.index) CheckIndex(*image.index);
    if (!image.index && image.unread.empty() && i_found.songsL != 0) Problem("Library.xml is missing");
    CheckSingers(image);   // before the rows that name them
    for (const PlaylistFile& list : image.lists) CheckList(list.record);
    for (const VenueFolder& venue : image.venues)
        for (const SingerFolder& singer : venue.singers)
            for (const PlaylistFile& list : singer.lists) CheckList(list.record);
    if (image.index)
        for (const PlaylistRecord& named : image.index->playlists)
            if (!named.items && IsKeptInFile(named) && !i_lists.contains(named.ID()))
                Problem(ListWords(named.Name().UTF8(), named.ID()) + " has no file");
    if (image.index && i_songsReadB)
        for (const Song& song : i_songs)
            if (!song.listedB) Problem("song " + std::to_string(song.idL) + " is not in the library's list");
    CheckCounter();
    FindSetAside(i_places.root);
    return std::move(i_found);
}

CLibraryCheck::Song* CLibraryCheck::Find(std::uint32_t id) {
    const auto it = std::ranges::lower_bound(i_songs, id, {}, &Song::idL);
    return it != i_songs.end() && it->idL == id ? &*it : nullptr;
}

/** An id that is in use: the counter must be above it. */
void CLibraryCheck::Note(std::uint32_t id, const std::string& what) {
    if (id < i_nextIDL) return;
    ++i_aboveL;
    if (id < i_highestL) return;
    i_highestL = id;
    i_highest = what;
}

void CLibraryCheck::CheckCounter() {
    if (i_nextIDL == 0 || i_aboveL == 0) return;   // without a counter there is nothing to compare with
    Problem(std::to_string(i_aboveL) + " ids are not below the counter, " + std::to_string(i_nextIDL) +
            "; the highest is that of " + i_highest);
}

void CLibraryCheck::CheckSongs() {
    CSongFileReader reader;
    if (const OSErr err = reader.Open(CFileRef(i_places.root, "Songs.vlb")); Failed(err)) {
        if (err != fnfErr) return Problem("Songs.vlb cannot be read: " + FaultWords(err, FaultOf::kFile));
        return Problem("Songs.vlb is missing");
    }
    for (SongRecord record; reader.Next(record);) {
        i_songs.push_back({record.songID});
        Note(record.songID, SongWords(record));
        if (i_files == SongFiles::kLookFor) CheckSongFiles(record);
    }
    const OSErr err = reader.Finish();
    i_songsReadB = !Failed(err);
    if (Failed(err))
        Problem("Songs.vlb cannot be read whole, only " + std::to_string(reader.Count()) + " of " +
                std::to_string(reader.Header().songsL) + " songs: " + FaultWords(err, FaultOf::kFile));
    if (reader.MisreadTexts() != 0)
        Problem("Songs.vlb has " + std::to_string(reader.MisreadTexts()) + " texts that cannot be read");
    std::ranges::sort(i_songs, {}, &Song::idL);
    for (std::size_t n = 1; n < i_songs.size(); ++n)
        if (i_songs[n].idL == i_songs[n - 1].idL) Problem("song " + std::to_string(i_songs[n].idL) + " is there twice");
    i_found.songsL = i_songs.size();
}

void CLibraryCheck::CheckSongFiles(const SongRecord& record) {
    for (const PathRow& row : kPaths) {
        const std::string_view text = record.Text(row.text);
        if (text.empty()) continue;
        std::filesystem::path path(text);
        if ((record.flags & row.relative) != 0) path = i_places.musicFolder / path;
        FileInfo info;
        const int errnoL = CFileCalls::Get().Look(path, true, info);
        CFileRef found(path);
        if ((errnoL == 0 && info.kind != FileKind::kFolder) || i_modder(found)) continue;
        if (errnoL != 0 && errnoL != ENOENT && errnoL != ENOTDIR)
            Problem(SongWords(record) + ": the " + row.wordZ +
                    " file cannot be read: " + FaultText(MapErrno(errnoL), path));
        else
            Problem(SongWords(record) + ": the " + row.wordZ + " file is missing: " + path.string());
    }
}

void CLibraryCheck::CheckSongsMeta() {
    SongDictionaries meta;
    const OSErr err = ReadSongTable(CFileRef(i_places.root, "Songs Meta.xml"), SongTable::kMeta, meta);
    if (Failed(err) && err != fnfErr)
        Problem("Songs Meta.xml cannot be read whole: " + FaultWords(err, FaultOf::kFile));
    if (!i_songsReadB) return;
    for (const auto& [id, keys] : meta)
        if (Find(id) == nullptr) Problem("Songs Meta.xml names song " + std::to_string(id) + ", which is not there");
}

void CLibraryCheck::CheckIndex(const LibraryIndex& index) {
    for (const PlaylistRecord& list : index.playlists)
        if (list.items) CheckList(list);
}

void CLibraryCheck::CheckSingers(const LibraryImage& image) {
    for (const VenueFolder& venue : image.venues) {
        std::vector<SingerRecord> folders;
        for (const SingerFolder& folder : venue.singers) {
            if (folder.singer)
                folders.push_back(*folder.singer);
            else if (!folder.lists.empty() && AccountOf(folder, venue.together) == venue.together.end())
                Problem("a singer's folder without an account: " + folder.folder.GetName());
        }
        for (const SingerRecord& singer : MergeSingers(std::move(folders), venue.together)) CheckSinger(singer);
    }
    i_found.singersL = i_singers.size() + i_newSingersL;
}

void CLibraryCheck::CheckSinger(const SingerRecord& singer) {
    const std::string name = NameOf(singer).UTF8();
    if (singer.ID() == 0) {   // gets one at the load
        ++i_newSingersL;
        return;
    }
    const auto [it, newB] = i_singers.emplace(singer.ID(), name);
    if (!newB)
        Problem("singers " + Quoted(it->second) + " and " + Quoted(name) + " have the same id " +
                std::to_string(singer.ID()));
    Note(singer.ID(), "singer " + Quoted(name));
}

void CLibraryCheck::CheckList(const PlaylistRecord& list) {
    const std::string name = list.Name().UTF8();
    const auto [it, newB] = i_lists.emplace(list.ID(), name);
    if (list.ID() == 0)
        Problem("list " + Quoted(name) + " has no id, and gets one at the next load");
    else if (!newB)
        Problem("lists " + Quoted(it->second) + " and " + Quoted(name) + " have the same id " +
                std::to_string(list.ID()));
    Note(list.ID(), ListWords(name, list.ID()));
    ++i_found.playlistsL;
    if (list.items) CheckRows(list, ListWords(name, list.ID()));
}

void CLibraryCheck::CheckRows(const PlaylistRecord& list, const std::string& name) {
    const bool libraryB = list.Type() == static_cast<std::int64_t>(kSourceDB_LIBRARY);
    std::unordered_set<std::uint32_t> ids;
    for (const PlaylistItemRecord& row : *list.items) {
        const std::string where = name + ": row " + std::to_string(row.itemID);
        if (row.itemID != 0 && !ids.insert(row.itemID).second) Problem(where + " is there twice");
        if (row.kind == PlaylistItemKind::kSinger) {
            if (!i_singers.contains(row.sourceID))
                Problem(where + " names singer " + std::to_string(row.sourceID) + ", who is not there");
            continue;
        }
        Song* const songP = Find(row.sourceID);
        if (songP == nullptr) {
            if (row.sourceID != 0 && i_songsReadB)
                Problem(where + " names song " + std::to_string(row.sourceID) + ", which is not there");
        } else if (libraryB) {
            songP->listedB = true;
        }
    }
}

/** Files that an earlier run could not read: whoever looks after the library wants to know of them. */
void CLibraryCheck::FindSetAside(const CFileRef& folder) {
    std::vector<std::string> names;
    if (Failed(FSrList(folder, names))) return;
    for (const std::string& name : names)
        if (name.find(" (damaged ") != std::string::npos) Problem("a damaged file was set aside: " + name);
}
