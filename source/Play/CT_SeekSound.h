#pragma once
#include "Play/CSongPlay.h"
#include "Threads/CT_Preemptive.h"

/** Takes the sound of a song to where it was asked to go; of several askings the last one counts.
    Owner    the fork; it keeps the play. */
class CT_SeekSound final : public CT_Preemptive {
public:
    explicit CT_SeekSound(Ref<CSongPlay> playP) : CT_Preemptive("song seek"), i_playP(std::move(playP)) {}

protected:
    OSErr Operate(OSErr) override {
        i_playP->RunSeeks();
        return noErr;
    }
    OSErr Completion(OSErr err) override {
        i_playP->SeeksDone();
        return err;
    }

private:
    const Ref<CSongPlay> i_playP;
};
