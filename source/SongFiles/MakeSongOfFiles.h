#pragma once
#include "Library/SongFileFacts.h"

class CSong;
class CSongDatabase;
struct SongFileSet;

/** A new song of these files, named after them, with their facts; not yet in the library's list. Null when there are no more ids. Main
    thread. */
CSong* MakeSongOfFiles(CSongDatabase& database, const SongFileSet& set, DateAdded date = DateAdded::kNow);
