#pragma once
#include "Audio/CSpooler.h"
#include "Threads/CT_Preemptive.h"

/** Closes one side of a spool where that may take its time: the main thread must not wait for a file. */
class CAS_CloseSpool final : public CT_Preemptive {
public:
    CAS_CloseSpool(Ref<CSpooler> spoolP, bool writeB)
        : CT_Preemptive("Spool Closer"), i_spoolP(std::move(spoolP)), i_writeB(writeB) {}

protected:
    OSErr Operate(OSErr) override {
        const OSErr err = i_spoolP->Close(i_writeB);
        i_spoolP = nullptr;   // goes here, not on the main thread
        return err;
    }

private:
    Ref<CSpooler> i_spoolP;
    const bool i_writeB;
};
