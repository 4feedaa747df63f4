#pragma once
#include "Play/CSongLoad.h"
#include "Play/CSongLoadCompletion.h"
#include "Threads/CT_Preemptive.h"

/** Loads a song ahead of its time. A failure is left to the play of the song, which tries again and tells.
    Owner    the fork; it keeps what it loads. */
class CT_Cache final : public CT_Preemptive {
public:
    explicit CT_Cache(Ref<CSongLoad> loadP) : CT_Preemptive("cache song"), i_loadP(std::move(loadP)) {}

protected:
    OSErr Operate(OSErr) override {
        return i_loadP->Load(std::make_unique<CSongLoadCompletion>(i_loadP->Spec().name), LoadFor::kLater);
    }

private:
    const Ref<CSongLoad> i_loadP;
};
