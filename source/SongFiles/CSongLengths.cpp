#include "SongFiles/CSongLengths.h"

#include <utility>

#include "Core/CLog.h"
#include "Library/CSongDatabase.h"
#include "SongFiles/CT_FindLengths.h"

void CSongLengths::Find(std::span<const SongID> songs) {
    i_waiting.insert(i_waiting.end(), songs.begin(), songs.end());
    if (!i_runningB && !i_waiting.empty()) StartTask();
}

void CSongLengths::FindAll() { Find(i_database.Songs()->Ids()); }

void CSongLengths::StartTask() {
    // The task tells its end only while the database is there, and with it this object.
    const OSErr err = CT_FindLengths::Start(i_database, std::exchange(i_waiting, {}), [this](OSErr ended) {
        i_runningB = false;
        if (Failed(ended)) i_waiting.clear();   // the user wants no more of it
        if (!i_waiting.empty()) StartTask();
    });
    i_runningB = !Failed(err);
    if (Failed(err)) Log("### Error finding lengths");
}
