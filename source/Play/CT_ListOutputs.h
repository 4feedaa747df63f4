#pragma once
#include <functional>
#include <string>
#include <vector>

#include "Platform/CAudioOutput.h"
#include "Threads/CT_Preemptive.h"

/** Asks an output that nobody plays through for the devices of the machine, which may take a while. */
class CT_ListOutputs final : public CT_Preemptive {
public:
    /** On the main thread. */
    using Done = std::function<void(const std::vector<std::string>& names)>;

    CT_ListOutputs(AudioOutputChoice choice, Done done)
        : CT_Preemptive("list outputs"), i_choice(std::move(choice)), i_done(std::move(done)) {}

protected:
    OSErr Operate(OSErr err) override {
        if (!Failed(err)) i_names = i_choice.outputP->DeviceNames();
        return err;
    }
    OSErr Completion(OSErr err) override {
        if (!Failed(err)) i_done(i_names);
        return err;
    }

private:
    const AudioOutputChoice i_choice;
    const Done i_done;
    std::vector<std::string> i_names;
};
