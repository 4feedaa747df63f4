#pragma once
#include <memory>

#include "Audio/CSpoolPump.h"
#include "Threads/CT_Cooperative.h"
#include "Threads/CT_Preemptive.h"

/** The task that runs a pump, on a thread of its own or as part of the main thread's world.
    Owner    the thread layer, from Start on. The spools are let go on the pump's thread, where closing may take its
    time. */
template <class Task>
class CAS_SpoolRecT final : public Task {
public:
    CAS_SpoolRecT(Ref<CSpooler> sourceP, Ref<CSpooler> destinationP)
        : Task("Spooler"), i_pumpP(std::make_unique<CSpoolPump>(std::move(sourceP), std::move(destinationP))) {}
    [[nodiscard]] long FirstWrite() const { return i_pumpP->FirstWrite(); }

protected:
    OSErr Operate(OSErr) override {
        const OSErr err = i_pumpP->Run();
        i_pumpP.reset();
        return err;
    }

private:
    std::unique_ptr<CSpoolPump> i_pumpP;
};

/** Moves all that `sourceP` gives into `destinationP`, on a preemptive task or, with `cooperativeB`, on a cooperative
    one, and comes back when the first block is there, the source has none, or the start failed. Any thread; the main
    one keeps its timers going.
    Errors   the source's, else the destination's. One that is worth it is told to the user. */
OSErr StartSpooling(const Ref<CSpooler>& sourceP, const Ref<CSpooler>& destinationP, bool cooperativeB);
