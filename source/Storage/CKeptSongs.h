#pragma once
#include <functional>
#include <string>

#include "Files/CTempItem.h"
#include "Storage/SongRecord.h"

/** The songs of the newest kept copy of a library in which "Songs.vlb" is whole, for a library whose own is damaged.
    Nothing of the library or of its copies is written.
    Threads  one at a time; blocks as long as the disc does.
    Owner    whoever needs the songs. Unpacked files go with it.
    Errors   statuses, logged. */
class CKeptSongs {
public:
    /** Looks through the copies of the library in `root`. fnfErr: none of them is whole. */
    OSErr Find(const CFileRef& root);
    [[nodiscard]] const CFileRef& Copy() const noexcept { return i_copy; }
    [[nodiscard]] std::size_t Count() const noexcept { return i_countL; }
    /** When the copy was made, in local time, to the minute. */
    [[nodiscard]] std::string Date() const;
    OSErr ForEach(const std::function<void(const SongRecord& record)>& work) const;

private:
    OSErr Take(const CFileRef& copy);

    CFileRef i_copy;
    std::size_t i_countL = 0;
    std::unique_ptr<CTempItem> i_folderP;   // "Songs.vlb" lies in it
};
