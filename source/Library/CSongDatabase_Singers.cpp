// The singers of the venues.
#include "Core/Assertions.h"
#include "Core/CLog.h"
#include "Library/CSinger.h"
#include "Library/CSongDatabase.h"
#include "Library/CT_SongChanges.h"
#include "Threads/ThreadInfo.h"

CSinger* CSongDatabase::AddSinger(PlaylistID venue, SingerID id) {
    (void)Assert(IsMainThread());
    if (Number(id) < 0) id = SingerID{GetNextID()};
    if (Number(id) == 0) {
        Log("### Error a singer with the id 0");
        return nullptr;
    }
    NoteID(Number(id));
    auto singerP = std::make_unique<CSinger>(this, id, venue);
    CSinger* const madeP = singerP.get();
    return i_singersRef->Add(id, std::move(singerP)) ? madeP : nullptr;
}

CSinger& CSongDatabase::NewSinger(PlaylistID venue, const SuperString& name) {
    CSinger& singer = *AddSinger(venue);   // a new id is nobody's
    singer.Meta().SetString("SNGR"_key, name.Empty() ? SuperString("* New Singer") : name);
    for (const SingerList which : kSingerLists) AddSingerList(singer, which);
    if (CPlayList* const venueP = GetPlayList(venue)) venueP->AddItem({singer.GetSingerID()});
    SetDirty(true, "new singer");
    return singer;
}

CPlayList& CSongDatabase::AddSingerList(CSinger& singer, SingerList which, PlaylistID id) {
    CPlayList& list = AddPlaylist(SourceTypeOf(which), {}, id);
    list.SetSinger(singer.GetSingerID());
    singer.SetList(which, list.ID());
    return list;
}

CSinger* CSongDatabase::GetSinger(SingerID id) const { return i_singersRef->Find(id); }

CSinger* CSongDatabase::GetSingerByName(const SuperString& name) const {
    for (CSinger* const singerP : Singers())
        if (singerP->Name() == name) return singerP;
    return nullptr;
}

std::vector<CSinger*> CSongDatabase::Singers() const {
    std::vector<SingerID> ids = i_singersRef->Ids();
    std::ranges::sort(ids);
    std::vector<CSinger*> singers;
    for (const SingerID id : ids) singers.push_back(i_singersRef->Find(id));
    return singers;
}

SingerID CSongDatabase::OwnerOf(PlaylistID list) const {
    for (const CSinger* const singerP : Singers())
        if (singerP->Owns(list)) return singerP->GetSingerID();
    return i_host.FindListOwner(list);
}

void CSongDatabase::QueueSingerChange() {
    if (i_loadingB.load(std::memory_order_relaxed)) return;
    if (!i_singersChangedB.exchange(true)) CT_Timer::SetInterval(i_changesTimer, CT_SongChanges::kDelayT);
}
