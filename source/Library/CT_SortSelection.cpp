#include "Library/CT_SortSelection.h"

#include "Core/CLog.h"
#include "Library/CPlayList.h"
#include "Library/CSongDatabase.h"
#include "Threads/CHandle.h"

CT_SortSelection::CT_SortSelection(SortJob job, CHandle<CSongDatabase> databaseRef)
    : CT_Preemptive("sort selection"), i_job(std::move(job)), i_databaseRef(std::move(databaseRef)) {}

void CT_SortSelection::Run(SortJob& job) {
    LogF("## Sort %s: %s\n", "Begin", job.listName.c_str());
    // A million rows are copied here, and not by who asks: the memory for them alone costs the main thread a frame.
    const bool byPlaceB = std::ranges::find(job.spec, "stIx"_key, &MetaSortKey::key) != job.spec.end();
    if (byPlaceB) (void)job.listRef->UpdateIndices();
    const std::vector<PLRow> rows = job.values.Sorted(job.listRef->RowsBefore(job.nextStampL), job.spec);
    job.order.reserve(rows.size());
    for (const PLRow& row : rows) job.order.push_back(row.id);
    LogF("## Sort %s: %s\n", "End  ", job.listName.c_str());
}

OSErr CT_SortSelection::Operate(OSErr err) {
    if (!Failed(err)) Run(i_job);
    return err;
}

OSErr CT_SortSelection::Completion(OSErr err) {
    auto* const databaseP = i_databaseRef.Get();
    if (databaseP == nullptr) return err;
    if (CPlayList* listP = databaseP->GetPlayList(i_job.list)) listP->SortCompletion(std::move(i_job), err);
    return err;
}
