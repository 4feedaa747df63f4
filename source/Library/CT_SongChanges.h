#pragma once
#include <memory>

#include "Threads/CHandle.h"
#include "Threads/CT_Timer.h"

class CSongDatabase;

/** Hands on the changes that songs queued: armed by the first of them, off afterwards. It ends itself when its database
    has gone. */
class CT_SongChanges final : public CT_Timer {
public:
    static constexpr double kDelayT = 0.25;
    explicit CT_SongChanges(CHandle<CSongDatabase> databaseRef)
        : CT_Timer("song changes", -1.0), i_databaseRef(std::move(databaseRef)) {}
    OSErr Timer() override;

private:
    CHandle<CSongDatabase> i_databaseRef;
};
