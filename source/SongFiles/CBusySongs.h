#pragma once
#include <memory>
#include <set>
#include <string>

#include "Library/LibraryIDs.h"
#include "Threads/CMutex.h"

/** The songs whose files somebody is packing, unpacking or moving right now: one at a time for each.
    Threads  any.
    Owner    shared by those who work on files. */
class CBusySongs {
public:
    /** The song is this caller's for as long as the object lives, if it could be had. */
    class Hold {
    public:
        Hold(std::shared_ptr<CBusySongs> busyRef, SongID song);
        ~Hold();
        Hold(const Hold&) = delete;
        Hold& operator=(const Hold&) = delete;
        [[nodiscard]] bool IsHeld() const noexcept { return i_heldB; }

    private:
        const std::shared_ptr<CBusySongs> i_busyRef;
        const SongID i_song;
        const bool i_heldB;
    };
    [[nodiscard]] bool IsBusy(SongID song) const;

private:
    CMutexT<std::set<std::int32_t>> i_songs;
};

/** Tells the user that this song's zip is being worked on. Any thread. */
void TellSongBusy(const std::string& name);
