#include "SongFiles/CSong_ZipCompletion.h"

#include "Library/CSongDatabase.h"
#include "Threads/CHandle.h"

CSong_ZipCompletion::CSong_ZipCompletion(CHandle<CSongDatabase> databaseRef, const CSongFiles& packed,
                                         std::vector<Place> places)
    : CS_MainThread_AbortProc("zip completion", StackHeld::kYes),
      i_databaseRef(std::move(databaseRef)),
      i_packed(packed),
      i_places(std::move(places)) {}

OSErr CSong_ZipCompletion::Operate() {
    auto* const databaseP = i_databaseRef.Get();
    if (databaseP == nullptr) return abortErr;
    CSong* const songP = databaseP->GetSong(i_packed.Song());
    if (songP == nullptr) return fnfErr;
    const CSongFiles now(*songP, databaseP->Settings());
    for (const SDB_SongFile type : {SDB_SongFile_AUDIO, SDB_SongFile_VIDEO})
        if (now.Ref(type).GetPath() != i_packed.Ref(type).GetPath()) return opWrErr;
    OSErr err = noErr;
    for (const Place& place : i_places) err = FirstOf(err, songP->SetFile(place.type, place.file));
    return err;
}
