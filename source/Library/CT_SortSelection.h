#pragma once
#include <memory>

#include "Library/CRowValues.h"
#include "Threads/CHandle.h"
#include "Threads/CT_Preemptive.h"

class CSongDatabase;

/** A list to be sorted, and the result. */
struct SortJob {
    CRowValues values;
    std::shared_ptr<const CMutex_PLIVec> listRef;
    SortSpec spec;
    std::uint32_t nextStampL;   // rows from this stamp on come later, and are none of its business
    PlaylistID list;
    std::string listName;
    std::vector<PLItemID> order = {};   // what is made
};

/** Sorts a list by its keys on a thread of its own and hands the result to the list on the main thread, if it is still
    there. Nothing of the list is held meanwhile but, for a block of rows at a time, its lock. */
class CT_SortSelection final : public CT_Preemptive {
public:
    CT_SortSelection(SortJob job, CHandle<CSongDatabase> databaseRef);
    /** The sort, for those who have time to wait. Logs its begin and end. */
    static void Run(SortJob& job);

protected:
    OSErr Operate(OSErr err) override;
    OSErr Completion(OSErr err) override;

private:
    SortJob i_job;
    CHandle<CSongDatabase> i_databaseRef;
};
