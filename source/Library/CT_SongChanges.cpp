#include "Library/CT_SongChanges.h"

#include "Library/CSongDatabase.h"

OSErr CT_SongChanges::Timer() {
    const auto databaseRef = i_databaseRef.lock();
    if (databaseRef == nullptr || *databaseRef == nullptr) return timerDisposeErr;
    SetFireInterval(-1.0);   // before the flush: what is queued during it arms the timer again
    (*databaseRef)->FlushChanges();
    return timerKeepErr;
}
