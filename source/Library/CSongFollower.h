#pragma once
#include <span>

#include "Library/LibraryIDs.h"
#include "Meta/MetaKey.h"

class CMetaValue;

/** A value of a song that has changed. */
struct SongChange {
    SongID song;
    MetaKey key;
    bool batchB;   // one of many that came in one go: no edit of the user's
};

/** Who does what follows a change of songs, on their files above all: the database tells, and starts nothing.
    Owner    whoever made it; it takes itself out of the database before it goes. */
class CSongFollower {
public:
    virtual ~CSongFollower() = default;
    /** A quarter of a second after the first of them. Main thread. */
    virtual void SongsWereChanged(std::span<const SongChange> /*changes*/) {}
    /** Another one plays now, or none. Main thread. */
    virtual void PlayingSongChanged(SongID /*before*/) {}
    /** A place of the song names another file now. Any thread; under a CMeta's lock too. */
    virtual void FileNamed(SongID /*song*/, const CMetaValue& /*file*/) {}
};
