#include "Threads/MT_SetFireInterval.h"

#include "Threads/APP_TimerForkData.h"
#include "Threads/CThreadManager.h"

OSErr MT_SetFireInterval::Operate() {
    const auto forkP = CThreadManager::Find(i_id);
    if (!forkP || forkP->timerDataP == nullptr) return fnfErr;
    forkP->timerDataP->SetFireInterval(i_seconds);
    return noErr;
}
