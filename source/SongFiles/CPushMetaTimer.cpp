#include "SongFiles/CPushMetaTimer.h"

#include "SongFiles/CSongFileWork.h"

OSErr CPushMetaTimer::Timer() {
    CSongFileWork* const workP = i_work.Get();
    if (workP == nullptr) return timerDisposeErr;
    SetFireInterval(-1.0);
    workP->PushEdits();
    return timerKeepErr;
}
