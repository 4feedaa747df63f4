#pragma once
#include "Play/CSongPlay.h"
#include "Threads/CT_Preemptive.h"

/** Ends the player of a song that was stopped: the device takes its time to close, and the main thread has none.
    Owner    the fork; it keeps the play. */
class CT_EndSong final : public CT_Preemptive {
public:
    explicit CT_EndSong(Ref<CSongPlay> playP) : CT_Preemptive("song end"), i_playP(std::move(playP)) {}

protected:
    OSErr Operate(OSErr) override {
        i_playP->Dispose();
        return noErr;
    }

private:
    const Ref<CSongPlay> i_playP;
};
