#pragma once
#include <functional>
#include <string_view>

#include "Files/CFileRef.h"
#include "Meta/CMetaSongFile.h"

/** Finds a file of a song by another one that lies beside it: the graphics by the sound, the project by the zip.
    Threads  any; looks at the disc. No lock may be held. */
class CSongFileSearch {
public:
    /** `songName` is for the log. */
    explicit CSongFileSearch(std::string_view songName) : i_songName(songName) {}
    /** Looks beside `first` under its own base name, then under `secondName` unless that is empty. Extensions count in
        small letters, then in capitals. fnfErr: nothing there, or only `first` itself. */
    OSErr Find(const CFileRef& first, SDB_SongFile wanted, std::string_view secondName, CFileRef& found) const;

private:
    OSErr FindNamed(const CFileRef& first, SDB_SongFile wanted, const std::string& base, CFileRef& found) const;
    std::string i_songName;
};

/** Gives a file that is no more where it was its place in the present music folder, when there is one; one of a library
    from Windows also its place on a volume, in whatever capitals. */
class CSong_PathModder final : public CFSPathModder {
public:
    explicit CSong_PathModder(CFileRef::Path musicFolder);
    /** True, and `ref` names the new place, when a file is there. */
    bool operator()(CFileRef& ref) const override;

private:
    using Move = std::function<bool(const CFileRef::Path& root, const CFileRef::Path& tail)>;
    [[nodiscard]] bool MoveByTail(std::string tail, const Move& move) const;

    CFileRef::Path i_music;
};
