#pragma once
#include <functional>
#include <memory>

#include "Threads/CHandle.h"
#include "Threads/CT_Timer.h"
#include "Threads/CThreadHost.h"

class CSongDatabase;

/** Work that waits until no list is being sorted, with a line in the task list; the main thread goes on meanwhile. Nothing is done
    when the database goes, or the user cancels.
    Threads  main. */
class CT_OnceSorted final : public CT_Timer {
public:
    /** Does `work` now, or later. */
    static void Do(CSongDatabase& database, std::function<void()> work);
    OSErr Timer() override;

private:
    CT_OnceSorted(CSongDatabase& database, std::function<void()> work);

    const CHandle<CSongDatabase> i_databaseRef;
    const std::function<void()> i_work;
    std::unique_ptr<CTaskView> i_viewP;
};
