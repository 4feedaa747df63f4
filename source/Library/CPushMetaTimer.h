#pragma once
#include <memory>

#include "Core/CT_Timer.h"

class CSongDatabase;

/** Names the files of edited songs after them, once the last edit lies some seconds back: a run of edits costs one
    rename. Armed anew by each edit. It ends itself when its database has gone. */
class CPushMetaTimer final : public CT_Timer {
public:
    explicit CPushMetaTimer(std::weak_ptr<CSongDatabase*> databaseRef)
        : CT_Timer("push meta value set update timer", -1.0), i_databaseRef(std::move(databaseRef)) {}
    OSErr Timer() override;

private:
    std::weak_ptr<CSongDatabase*> i_databaseRef;
};
