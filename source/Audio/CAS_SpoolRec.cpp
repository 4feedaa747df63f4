#include "Audio/CAS_SpoolRec.h"

#include "Core/AlertHook.h"
#include "Core/CLog.h"
#include "Core/FaultText.h"
#include "Core/Localize.h"

namespace {
/** The number of the first write; 0 when no thread could be had. */
template <class Task>
long Fork(const Ref<CSpooler>& sourceP, const Ref<CSpooler>& destinationP) {
    auto taskP = std::make_unique<CAS_SpoolRecT<Task>>(sourceP, destinationP);
    const long numberL = taskP->FirstWrite();
    return Task::Start(std::move(taskP)) == 0 ? 0 : numberL;
}
}   // namespace

OSErr StartSpooling(const Ref<CSpooler>& sourceP, const Ref<CSpooler>& destinationP, bool cooperativeB) {
    if (!sourceP || !destinationP) {
        Log("### Yikes! Crazy Freak Out Error!");
        return abortErr;
    }
    const long numberL =
        cooperativeB ? Fork<CT_Cooperative>(sourceP, destinationP) : Fork<CT_Preemptive>(sourceP, destinationP);
    if (numberL == 0) return abortErr;   // reported by the thread layer
    destinationP->i_firstWrite.Wait(numberL, WaitMode::kForever);
    const OSErr err = FirstOf(sourceP->Err(), destinationP->Err());
    if (Failed(err) && !CSpooler::IsIgnorable(err) && !sourceP->IsQuiet())
        ShowAlert(Localize("Spooler Error"), FaultWords(err, FaultOf::kSound));
    return err;
}
