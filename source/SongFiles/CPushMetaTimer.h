#pragma once
#include "Threads/CHandle.h"
#include "Threads/CT_Timer.h"

class CSongFileWork;

/** Names the files of edited songs after them, once the last edit lies some seconds back: a run of edits costs one
    rename. Armed anew by each edit. It ends itself when the work has gone. */
class CPushMetaTimer final : public CT_Timer {
public:
    explicit CPushMetaTimer(CHandle<CSongFileWork> work)
        : CT_Timer("push meta value set update timer", -1.0), i_work(std::move(work)) {}
    OSErr Timer() override;

private:
    const CHandle<CSongFileWork> i_work;
};
