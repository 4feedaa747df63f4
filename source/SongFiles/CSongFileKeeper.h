#pragma once
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "Files/FSrTrash.h"
#include "Library/CRowValues.h"
#include "Library/CSongFiles.h"

/** Keeps the files of songs for those who name them: the only way by which a file of a song is deleted, moved, renamed,
    exchanged or packed. A file that another song names too is left as it is, and none gets the ending of another kind.
    Songs name one file when the paths agree, when folder and name are the same to the disc, by another road or in other
    capitals, and when the one names a link to the other that has its name. A link of another name is not known as one:
    that would take a look at each file of the library.
    Threads  Note and Tell any; the rest workers, since it looks at the disc. The first question looks through all songs.
    Owner    shared by the tasks on files that run; the database tells it of places that change meanwhile.
    Errors   alreadyReportedErr for a file that is left: Tell says so once for all of them. paramErr for an ending. */
class CSongFileKeeper {
public:
    CSongFileKeeper(std::shared_ptr<CMutex_SongMap> songsRef, std::shared_ptr<const LibrarySettings> settingsRef);

    /** noErr when nobody but these songs names the file. */
    OSErr MayTouch(const CFileRef& file, std::span<const SongID> owners);
    OSErr MayTouch(const CFileRef& file, SongID owner) { return MayTouch(file, std::span(&owner, 1)); }
    /** The same for a file of the cache: nobody but `owner` names it, and he only as what is cached. Never told. */
    [[nodiscard]] bool IsCacheOf(const CFileRef& file, SongID owner);
    /** Another song names the file as its sound. */
    [[nodiscard]] bool IsSoundOfAnother(const CFileRef& file, SongID owner);

    OSErr Delete(const CFileRef& file, SongID owner);
    OSErr Trash(const CFileRef& file, std::span<const SongID> owners, TrashedFile& trashed);
    OSErr Rename(CFileRef& file, const std::string& newName, SongID owner);
    OSErr Move(CFileRef& file, const CFileRef& folder, const std::string& newName, SongID owner);
    /** `fresh` takes the place of `file`, which lies where `fresh` was. */
    OSErr Exchange(const CFileRef& fresh, const CFileRef& file, SongID owner);

    /** A place of the song names this file from now on. Under a CMeta's lock too. */
    void Note(SongID song, std::string_view path);
    /** One alert for all files that were left since the last one. */
    void Tell();

private:
    struct Owner {
        SongID song;
        SDB_SongFile type;
        std::string name;   // of the song
    };
    struct FolderIdentity {
        std::uint64_t deviceL = 0, inodeL = 0;
        bool operator==(const FolderIdentity&) const = default;
    };
    struct Named {
        std::uint32_t hash;
        SongID song;
        auto operator<=>(const Named&) const = default;
    };
    void Look();
    [[nodiscard]] std::vector<SongID> Candidates(std::uint32_t hash);
    [[nodiscard]] std::vector<Owner> OwnersOf(const CFileRef& file);
    [[nodiscard]] bool IsSame(const CFileRef::Path& one, const CFileRef::Path& other);
    [[nodiscard]] std::optional<FolderIdentity> FolderOf(const CFileRef::Path& file);

    const std::shared_ptr<CMutex_SongMap> i_songsRef;
    const std::shared_ptr<const LibrarySettings> i_settingsRef;
    std::once_flag i_lookedOnce;
    std::mutex i_lock;                                             // guards the rest; held over no look at the disc
    std::vector<Named> i_named;                                    // sorted
    std::unordered_multimap<std::uint32_t, SongID> i_namedSince;   // the keeper was made
    std::map<std::string, std::optional<FolderIdentity>> i_folders;
    std::vector<std::string> i_left;   // a line for each file, for Tell
    std::size_t i_leftL = 0;
};
