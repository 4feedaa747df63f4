#include "Threads/CT_QueElement.h"

#include <exception>

#include "Core/Assertions.h"
#include "Core/CLog.h"
#include "Threads/CMutex_ThreadQue.h"

OSErr CT_QueElement::Run() {
    if (!i_entry) return paramErr;
    try {
        return i_entry(*this);
    } catch (const std::exception& thrown) {
        LogF("### Error queue element: %s", thrown.what());
        return abortErr;
    }
}

OSErr CT_QueElement::Complete(OSErr err) {
    Assert(i_taskErr == noErr);
    i_taskErr = err;
    if (!i_completion) {
        NumberedReport("No Completion Routine", paramErr);
        return paramErr;
    }
    try {
        return i_completion(*this, err);
    } catch (const std::exception& thrown) {
        LogF("### Error queue completion: %s", thrown.what());
        return abortErr;
    }
}

void CT_QueElement::Finish(OSErr err) {
    if (!i_linkP || i_linkP->doneB.exchange(true)) return;
    QueAnchor& anchor = *i_linkP->anchorP;
    CMutex_ThreadQue* queP = nullptr;
    {
        const std::scoped_lock guard(anchor.lock);
        queP = anchor.queP;
        if (queP != nullptr) ++anchor.usersL;
    }
    if (queP != nullptr) {
        queP->ElementDone(*this);
        const std::scoped_lock guard(anchor.lock);
        --anchor.usersL;
    }
    (void)Complete(err);   // its own status says how it fared; nobody is left to hear of it
}
