#pragma once

class CSong;
class CSongDatabase;
struct SongFileSet;

/** A new song of these files, named after them; not yet in the library's list. Null when there are no more ids. Main
    thread. */
CSong* MakeSongOfFiles(CSongDatabase& database, const SongFileSet& set);
