#include "Core/MT_SetFireInterval.h"

#include "Core/APP_TimerForkData.h"
#include "Core/CThreadManager.h"

OSErr MT_SetFireInterval::Operate() {
    const auto forkP = CThreadManager::Find(i_id);
    if (!forkP || forkP->timerDataP == nullptr) return fnfErr;
    forkP->timerDataP->SetFireInterval(i_seconds);
    return noErr;
}
