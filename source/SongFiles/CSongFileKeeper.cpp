#include "SongFiles/CSongFileKeeper.h"

#include <algorithm>

#include "Core/AlertHook.h"
#include "Core/CLog.h"
#include "Core/Localize.h"
#include "Core/SmallExtension.h"
#include "Files/FSError.h"
#include "Files/FSrMove.h"
#include "Files/FSrObjects.h"

namespace {

constexpr std::size_t kLook_Block = 512;   // songs under one lock
constexpr std::size_t kTold_Most = 10;     // files in an alert

std::string_view NameOf(std::string_view path) { return path.substr(path.find_last_of("/\\") + 1); }

/** A name as a disc sees it that does not tell capitals from small letters. */
std::string Folded(std::string_view name) {
    const bool plainB = std::ranges::all_of(name, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    if (!plainB) return SuperString(name).Lowercased().UTF8();
    std::string folded(name);
    for (char& c : folded)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + ('a' - 'A'));
    return folded;
}

std::uint32_t HashOf(std::string_view path) {
    std::uint32_t hash = 2166136261U;   // FNV-1a
    for (const char c : Folded(NameOf(path))) hash = (hash ^ static_cast<unsigned char>(c)) * 16777619U;
    return hash;
}

/** The places that say where a file lies which is not our own scratch. */
bool IsNaming(SDB_SongFile type) { return type != SDB_SongFile_UNPACK && type != SDB_SongFile_TEMP_ZIP; }

/** `work(type, path)` for each file that the song names. */
template <class Work>
void ForEachFile(const CSong& song, Work&& work) {
    for (std::int16_t n = 0; n < static_cast<std::int16_t>(SDB_SongFile_numtypes); ++n) {
        const auto type = static_cast<SDB_SongFile>(n);
        if (!IsNaming(type)) continue;
        if (const CMetaValue value = song.Meta().Stored(SongFileKey(type))) work(type, value.FilePath());
    }
}

bool IsLink(const CFileRef::Path& file) {
    FileInfo info;
    return CFileCalls::Get().Look(file, false, info) == 0 && info.kind == FileKind::kLink;
}

OSErr CheckEnding(const CFileRef& file, const std::string& newName) {
    const bool sameB = newName.empty() || SmallExtension(file.GetPath()) == SmallExtension(newName);
    return sameB ? noErr : LogStep(paramErr, "giving a file another ending", file.GetPath());
}

}   // namespace

CSongFileKeeper::CSongFileKeeper(std::shared_ptr<CMutex_SongMap> songsRef,
                                 std::shared_ptr<const LibrarySettings> settingsRef)
    : i_songsRef(std::move(songsRef)), i_settingsRef(std::move(settingsRef)) {}

void CSongFileKeeper::Look() {
    std::vector<Named> named;
    const std::vector<SongID> all = i_songsRef->Ids();
    named.reserve(all.size() * 2);
    for (std::size_t at = 0; at < all.size(); at += kLook_Block)
        i_songsRef->WithMany([&](const auto& find) {
            for (std::size_t n = at; n < std::min(at + kLook_Block, all.size()); ++n)
                if (const CSong* const songP = find(all[n]))
                    ForEachFile(*songP, [&](SDB_SongFile, const std::string& path) {
                        named.push_back({HashOf(path), all[n]});
                    });
        });
    std::ranges::sort(named);
    const std::scoped_lock guard(i_lock);
    i_named = std::move(named);
}

void CSongFileKeeper::Note(SongID song, std::string_view path) {
    const std::uint32_t hash = HashOf(path);
    const std::scoped_lock guard(i_lock);
    i_namedSince.emplace(hash, song);
}

std::vector<SongID> CSongFileKeeper::Candidates(std::uint32_t hash) {
    std::call_once(i_lookedOnce, [this] { Look(); });
    std::vector<SongID> songs;
    const std::scoped_lock guard(i_lock);
    for (auto it = std::ranges::lower_bound(i_named, hash, {}, &Named::hash); it != i_named.end() && it->hash == hash;
         ++it)
        songs.push_back(it->song);
    const auto since = i_namedSince.equal_range(hash);
    for (auto it = since.first; it != since.second; ++it) songs.push_back(it->second);
    std::ranges::sort(songs);
    songs.erase(std::unique(songs.begin(), songs.end()), songs.end());
    return songs;
}

std::vector<CSongFileKeeper::Owner> CSongFileKeeper::OwnersOf(const CFileRef& file) {
    struct Place {
        Owner owner;
        CFileRef::Path path;
    };
    std::vector<Place> places;   // as they are now, whatever they were when all songs were looked through
    const std::string name = Folded(NameOf(file.GetPath().native()));
    for (const SongID id : Candidates(HashOf(file.GetPath().native())))
        (void)i_songsRef->With(id, [&](const CSong& song) {
            ForEachFile(song, [&](SDB_SongFile type, const std::string& path) {
                if (Folded(NameOf(path)) == name)
                    places.push_back({{id, type, song.Name().UTF8()}, i_settingsRef->Whole(path)});
            });
        });
    std::vector<Owner> owners;
    for (Place& place : places)
        if (IsSame(file.GetPath(), place.path)) owners.push_back(std::move(place.owner));
    return owners;
}

bool CSongFileKeeper::IsSame(const CFileRef::Path& one, const CFileRef::Path& other) {
    if (one.lexically_normal() == other.lexically_normal()) return true;
    const auto folder = FolderOf(one);
    const bool folderB = folder && folder == FolderOf(other);
    if (!folderB && !IsLink(one) && !IsLink(other)) return false;
    FileInfo first, second;
    return CFileCalls::Get().Look(one, true, first) == 0 && CFileCalls::Get().Look(other, true, second) == 0 &&
           first.deviceL == second.deviceL && first.inodeL == second.inodeL;
}

/** Each folder is looked at once: a library may have ten thousand files of one name, in as many folders. */
std::optional<CSongFileKeeper::FolderIdentity> CSongFileKeeper::FolderOf(const CFileRef::Path& file) {
    const CFileRef::Path folder = file.parent_path();
    {
        const std::scoped_lock guard(i_lock);
        if (const auto it = i_folders.find(folder.native()); it != i_folders.end()) return it->second;
    }
    FileInfo info;
    std::optional<FolderIdentity> identity;
    if (CFileCalls::Get().Look(folder, true, info) == 0) identity = {info.deviceL, info.inodeL};
    const std::scoped_lock guard(i_lock);
    return i_folders.insert_or_assign(folder.native(), identity).first->second;
}

OSErr CSongFileKeeper::MayTouch(const CFileRef& file, std::span<const SongID> owners) {
    for (const Owner& owner : OwnersOf(file)) {
        if (std::ranges::find(owners, owner.song) != owners.end()) continue;
        LogF("### %s is left as it is: the song “%s” uses it too", file.GetPath().c_str(), owner.name.c_str());
        const std::scoped_lock guard(i_lock);
        ++i_leftL;
        if (i_left.size() < kTold_Most) i_left.push_back(file.GetPath().string() + ", of “" + owner.name + "”");
        return alreadyReportedErr;
    }
    return noErr;
}

bool CSongFileKeeper::IsCacheOf(const CFileRef& file, SongID owner) {
    return std::ranges::all_of(OwnersOf(file), [owner](const Owner& named) {
        return named.song == owner &&
               (named.type == SDB_SongFile_AUDIO_CACHE || named.type == SDB_SongFile_VIDEO_CACHE);
    });
}

bool CSongFileKeeper::IsSoundOfAnother(const CFileRef& file, SongID owner) {
    return std::ranges::any_of(OwnersOf(file), [owner](const Owner& named) {
        return named.song != owner && named.type == SDB_SongFile_AUDIO;
    });
}

OSErr CSongFileKeeper::Delete(const CFileRef& file, SongID owner) {
    const OSErr err = MayTouch(file, owner);
    return Failed(err) ? err : FSrDelete(file);
}

OSErr CSongFileKeeper::Trash(const CFileRef& file, std::span<const SongID> owners, TrashedFile& trashed) {
    const OSErr err = MayTouch(file, owners);
    return Failed(err) ? err : FSrMoveToTrash(file, &trashed);
}

OSErr CSongFileKeeper::Rename(CFileRef& file, const std::string& newName, SongID owner) {
    if (const OSErr err = FirstOf(CheckEnding(file, newName), MayTouch(file, owner)); Failed(err)) return err;
    return FSrRename(file, newName);
}

OSErr CSongFileKeeper::Move(CFileRef& file, const CFileRef& folder, const std::string& newName, SongID owner) {
    if (const OSErr err = FirstOf(CheckEnding(file, newName), MayTouch(file, owner)); Failed(err)) return err;
    // What lies there already would go to the trash.
    if (const OSErr err = MayTouch(CFileRef(folder, newName.empty() ? file.GetName() : newName), owner); Failed(err))
        return err;
    return FSrMoveFile(file, folder, newName);
}

OSErr CSongFileKeeper::Exchange(const CFileRef& fresh, const CFileRef& file, SongID owner) {
    if (const OSErr err = FirstOf(CheckEnding(file, fresh.GetName()), MayTouch(file, owner)); Failed(err)) return err;
    return FSError(CFileCalls::Get().Exchange(fresh.GetPath(), file.GetPath()), "exchange", fresh.GetPath());
}

void CSongFileKeeper::Tell() {
    std::string lines;
    {
        const std::scoped_lock guard(i_lock);
        if (i_leftL == 0) return;
        for (const std::string& line : i_left) lines += line + "\n";
        if (i_leftL > i_left.size())
            lines += Localize("And %1 more, in the log.", {std::to_string(i_leftL - i_left.size())}) + "\n";
        i_left.clear();
        i_leftL = 0;
    }
    ShowAlert(Localize("Some files were left as they are, since other songs use them too."), lines);
}
