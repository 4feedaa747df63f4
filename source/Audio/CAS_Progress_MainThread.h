#pragma once
#include "Audio/CSpooler.h"
#include "Threads/CMainThreadProc.h"

/** Brings the progress of a spool to its line in the task list. Holds the spool until it was shown. */
class CAS_Progress_MainThread final : public CMainThreadProc {
public:
    CAS_Progress_MainThread(Ref<CSpooler> spoolP, long doneL, long totalL)
        : CMainThreadProc("progress", StackHeld::kNo), i_spoolP(std::move(spoolP)), i_doneL(doneL), i_totalL(totalL) {}

protected:
    OSErr Operate() override {
        i_spoolP->ReportTask(i_doneL, i_totalL);
        return noErr;
    }

private:
    const Ref<CSpooler> i_spoolP;
    const long i_doneL, i_totalL;
};
