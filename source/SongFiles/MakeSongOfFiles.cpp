#include "SongFiles/MakeSongOfFiles.h"

#include "Library/CSongDatabase.h"
#include "SongFiles/FileTitle.h"
#include "SongFiles/SongFileSets.h"

CSong* MakeSongOfFiles(CSongDatabase& database, const SongFileSet& set, DateAdded date) {
    CSong* const songP = database.CreateSong();
    if (songP == nullptr) return nullptr;
    const FileTitle title = FileTitle::Of(set.base);
    songP->Meta().SetString("name"_key, title.title);
    songP->Meta().SetString("arts"_key, title.artist);
    songP->Meta().SetString("albm"_key, title.album);
    songP->Meta().SetInteger("trak"_key, title.trackL);
    SetSongFacts(songP->Meta(), set.facts, date);
    (void)songP->SetFile(SDB_SongFile_AUDIO, set.audio);   // a new song has no disc to defend
    (void)songP->SetFile(SDB_SongFile_VIDEO, set.video);
    (void)songP->SetFile(SDB_SongFile_ZIP, set.zip);
    return songP;
}
