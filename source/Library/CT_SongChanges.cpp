#include "Library/CT_SongChanges.h"

#include "Library/CSongDatabase.h"

OSErr CT_SongChanges::Timer() {
    auto* const databaseP = i_databaseRef.Get();
    if (databaseP == nullptr) return timerDisposeErr;
    SetFireInterval(-1.0);   // before the flush: what is queued during it arms the timer again
    databaseP->FlushChanges();
    return timerKeepErr;
}
