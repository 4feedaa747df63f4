#pragma once
#include <atomic>
#include <functional>
#include <memory>

#include "Library/CRowValues.h"
#include "Shell/CTextFilter.h"
#include "Threads/CT_Preemptive.h"

/** Rows of a list to be looked through, and where their values are found. */
struct FilterJob {
    CTextFilter filter;
    std::vector<PLItemID> rows;   // in the shown order
    std::shared_ptr<CMutex_PLIVec> listRef;
    CRowValues values;
};

/** Who waits for the rows that match. It is told on the main thread, in pieces that grow, in the order of the job. */
class CFilterResult {
public:
    using Found = std::function<void(std::span<const PLItemID> items, bool lastB)>;
    explicit CFilterResult(Found found) : i_found(std::move(found)) {}

    /** Any thread. Nothing is told any more. Main thread: not even what was posted. */
    void Cancel() { i_cancelledB.store(true, std::memory_order_relaxed); }
    [[nodiscard]] bool IsCancelled() const { return i_cancelledB.load(std::memory_order_relaxed); }
    /** Main thread. */
    void Tell(std::span<const PLItemID> items, bool lastB) {
        if (!IsCancelled()) i_found(items, lastB);
    }

private:
    const Found i_found;
    std::atomic<bool> i_cancelledB{false};
};

/** Looks a list through for the rows that match, on a thread of its own. Nothing of the list is held between two
    pieces. */
class CT_FilterRows final : public CT_Preemptive {
public:
    CT_FilterRows(FilterJob job, std::shared_ptr<CFilterResult> resultRef);

protected:
    OSErr Operate(OSErr err) override;

private:
    FilterJob i_job;
    const std::shared_ptr<CFilterResult> i_resultRef;
};
