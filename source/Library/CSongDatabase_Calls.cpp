// The operations on lists that any thread may ask for. Ids go in, copies come out: no pointer to a list crosses the
// threads.
#include "Library/CSongDatabase.h"
#include "Threads/CallOnMain.h"

OSErr CSongDatabase::OnList(const char* nameZ, PlaylistID list, const std::function<OSErr(CPlayList& list)>& work) {
    return CallOnMain(nameZ, i_self.Handle(), [&](CSongDatabase& database) {
        CPlayList* const listP = database.GetPlayList(list);
        return listP == nullptr ? fnfErr : work(*listP);
    });
}

OSErr CSongDatabase::AddToList(PlaylistID list, std::vector<PLTarget> targets, RowIndex where,
                               std::vector<PLItemID>& items) {
    return OnList("CPlayList_AddItem1", list, [&](CPlayList& found) {
        std::vector<PLNewItem> asked;
        asked.reserve(targets.size());
        for (const PLTarget& target : targets) asked.push_back({target});
        items = found.AddItemVec(std::move(asked), where);
        return noErr;
    });
}

OSErr CSongDatabase::RemoveFromList(PlaylistID list, std::vector<PLItemID> items) {
    return OnList("CMainThread_RemoveItems", list, [&](CPlayList& found) {
        // The rows may have gone since they were asked for, which is nobody's fault.
        const std::size_t askedL = items.size();
        std::erase_if(items, [&](PLItemID id) { return !found.Items()->Get(id); });
        const OSErr err = found.RemoveItems(items);
        return items.size() == askedL ? err : FirstOf(err, fnfErr);
    });
}

OSErr CSongDatabase::MoveInList(PlaylistID list, std::vector<PLItemID> items, RowIndex to) {
    return OnList("CMainThread_MoveItems", list,
                  [&](CPlayList& found) { return found.MoveItems(items, to) == SDB_Index_NONE ? fnfErr : noErr; });
}

OSErr CSongDatabase::GetSortedList(PlaylistID list, std::vector<PLRow>& rows) {
    rows.clear();
    return OnList("CMainThread_GetSortedList", list, [&](CPlayList& found) {
        for (const PLItemID id : found.GetSortedList())
            if (const auto row = found.Items()->Get(id)) rows.push_back(*row);
        return noErr;
    });
}

OSErr CSongDatabase::ForEachPLItem(PlaylistID list, const std::function<void(CPlayListItem&)>& proc) {
    return OnList("CMainThread_ForEachPLItem", list, [&](CPlayList& found) {
        found.ForEachPLItem(proc);
        return noErr;
    });
}

OSErr CSongDatabase::UpdateIndices(PlaylistID list) {
    return OnList("CMainThread_UpdateIndices", list, [](CPlayList& found) {
        found.UpdateIndices();
        return noErr;
    });
}
