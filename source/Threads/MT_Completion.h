#pragma once
#include <memory>

#include "Threads/CMainThreadProc.h"
#include "Threads/ForkRecord.h"

/** Runs a fork's completion routine on the main thread, with the last result of the fork. */
class MT_Completion final : public CMainThreadProc {
public:
    explicit MT_Completion(std::shared_ptr<ForkRecord> forkP)
        : CMainThreadProc("completion"), i_forkP(std::move(forkP)) {}

protected:
    OSErr Operate() override {
        const OSErr err = i_forkP->completion(i_forkP->dataP, i_forkP->lastResult.load());
        i_forkP->completeB.store(true);
        return err;
    }

private:
    const std::shared_ptr<ForkRecord> i_forkP;
};
