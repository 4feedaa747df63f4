#include "Library/CPushMetaTimer.h"

#include "Library/CSongDatabase.h"

OSErr CPushMetaTimer::Timer() {
    const auto databaseRef = i_databaseRef.lock();
    if (databaseRef == nullptr || *databaseRef == nullptr) return timerDisposeErr;
    SetFireInterval(-1.0);
    (*databaseRef)->PushEdits();
    return timerKeepErr;
}
