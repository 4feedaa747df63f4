// The operations on lists that any thread may ask for. Ids go in, copies come out: no pointer to a list crosses the
// threads.
#include "Library/CSongDatabase.h"
#include "Threads/CHandle.h"

namespace {

/** Finds the list on the main thread and works on it there. */
class CMainThread_OnList : public CMainThreadProc {
public:
    CMainThread_OnList(const char* nameZ, CHandle<CSongDatabase> databaseRef, PlaylistID list)
        : CMainThreadProc(nameZ, StackHeld::kYes), i_databaseRef(std::move(databaseRef)), i_list(list) {}

protected:
    OSErr Operate() final {
        auto* const databaseP = i_databaseRef.Get();
        if (databaseP == nullptr) return abortErr;
        CPlayList* const listP = databaseP->GetPlayList(i_list);
        return listP == nullptr ? fnfErr : OnList(*listP);
    }
    virtual OSErr OnList(CPlayList& list) = 0;

private:
    CHandle<CSongDatabase> i_databaseRef;
    PlaylistID i_list;
};

class CPlayList_AddItem1 final : public CMainThread_OnList {
public:
    CPlayList_AddItem1(CHandle<CSongDatabase> databaseRef, PlaylistID list, std::vector<PLTarget> targets,
                       RowIndex where, std::vector<PLItemID>& items)
        : CMainThread_OnList("add item", std::move(databaseRef), list),
          i_targets(std::move(targets)),
          i_where(where),
          i_items(items) {}

protected:
    OSErr OnList(CPlayList& list) override {
        std::vector<PLNewItem> asked;
        asked.reserve(i_targets.size());
        for (const PLTarget& target : i_targets) asked.push_back({target});
        i_items = list.AddItemVec(std::move(asked), i_where);
        return noErr;
    }

private:
    std::vector<PLTarget> i_targets;
    RowIndex i_where;
    std::vector<PLItemID>& i_items;
};

class CMainThread_RemoveItems final : public CMainThread_OnList {
public:
    CMainThread_RemoveItems(CHandle<CSongDatabase> databaseRef, PlaylistID list, std::vector<PLItemID> items)
        : CMainThread_OnList("remove items", std::move(databaseRef), list), i_items(std::move(items)) {}

protected:
    OSErr OnList(CPlayList& list) override {
        // The rows may have gone since they were asked for, which is nobody's fault.
        const std::size_t askedL = i_items.size();
        std::erase_if(i_items, [&](PLItemID id) { return !list.Items()->Get(id); });
        const OSErr err = list.RemoveItems(i_items);
        return i_items.size() == askedL ? err : FirstOf(err, fnfErr);
    }

private:
    std::vector<PLItemID> i_items;
};

class CMainThread_MoveItems final : public CMainThread_OnList {
public:
    CMainThread_MoveItems(CHandle<CSongDatabase> databaseRef, PlaylistID list, std::vector<PLItemID> items, RowIndex to)
        : CMainThread_OnList("move items", std::move(databaseRef), list), i_items(std::move(items)), i_to(to) {}

protected:
    OSErr OnList(CPlayList& list) override { return list.MoveItems(i_items, i_to) == SDB_Index_NONE ? fnfErr : noErr; }

private:
    std::vector<PLItemID> i_items;
    RowIndex i_to;
};

class CMainThread_GetSortedList final : public CMainThread_OnList {
public:
    CMainThread_GetSortedList(CHandle<CSongDatabase> databaseRef, PlaylistID list, std::vector<PLRow>& rows)
        : CMainThread_OnList("get sorted list", std::move(databaseRef), list), i_rows(rows) {}

protected:
    OSErr OnList(CPlayList& list) override {
        for (const PLItemID id : list.GetSortedList())
            if (const auto row = list.Items()->Get(id)) i_rows.push_back(*row);
        return noErr;
    }

private:
    std::vector<PLRow>& i_rows;
};

class CMainThread_ForEachPLItem final : public CMainThread_OnList {
public:
    CMainThread_ForEachPLItem(CHandle<CSongDatabase> databaseRef, PlaylistID list,
                              const std::function<void(CPlayListItem&)>& proc)
        : CMainThread_OnList("for each item", std::move(databaseRef), list), i_proc(proc) {}

protected:
    OSErr OnList(CPlayList& list) override {
        list.ForEachPLItem(i_proc);
        return noErr;
    }

private:
    const std::function<void(CPlayListItem&)>& i_proc;
};

class CMainThread_UpdateIndices final : public CMainThread_OnList {
public:
    CMainThread_UpdateIndices(CHandle<CSongDatabase> databaseRef, PlaylistID list)
        : CMainThread_OnList("update indices", std::move(databaseRef), list) {}

protected:
    OSErr OnList(CPlayList& list) override {
        list.UpdateIndices();
        return noErr;
    }
};

}   // namespace

OSErr CSongDatabase::AddToList(PlaylistID list, std::vector<PLTarget> targets, RowIndex where,
                               std::vector<PLItemID>& items) {
    return CPlayList_AddItem1(i_self.Handle(), list, std::move(targets), where, items).Call(CallMode::kWait);
}
OSErr CSongDatabase::RemoveFromList(PlaylistID list, std::vector<PLItemID> items) {
    return CMainThread_RemoveItems(i_self.Handle(), list, std::move(items)).Call(CallMode::kWait);
}
OSErr CSongDatabase::MoveInList(PlaylistID list, std::vector<PLItemID> items, RowIndex to) {
    return CMainThread_MoveItems(i_self.Handle(), list, std::move(items), to).Call(CallMode::kWait);
}
OSErr CSongDatabase::GetSortedList(PlaylistID list, std::vector<PLRow>& rows) {
    rows.clear();
    return CMainThread_GetSortedList(i_self.Handle(), list, rows).Call(CallMode::kWait);
}
OSErr CSongDatabase::ForEachPLItem(PlaylistID list, const std::function<void(CPlayListItem&)>& proc) {
    return CMainThread_ForEachPLItem(i_self.Handle(), list, proc).Call(CallMode::kWait);
}
OSErr CSongDatabase::UpdateIndices(PlaylistID list) {
    return CMainThread_UpdateIndices(i_self.Handle(), list).Call(CallMode::kWait);
}
