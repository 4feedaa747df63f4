#pragma once
#include "Play/CSongPlay.h"
#include "Threads/CS_MainThread_AbortProc.h"
#include "Threads/CT_Preemptive.h"

/** Makes a song ready: opens its files, fills its ring, makes its player. The completion tells the song.
    Owner    the fork; it keeps the play. */
class CT_PlayAudio final : public CT_Preemptive {
public:
    CT_PlayAudio(Ref<CSongPlay> playP, std::unique_ptr<CS_MainThread_AbortProc> loadCompletionP)
        : CT_Preemptive("Audio PreRoll"), i_playP(std::move(playP)), i_loadCompletionP(std::move(loadCompletionP)) {}

protected:
    OSErr Operate(OSErr) override { return i_playP->PreRoll(std::move(i_loadCompletionP)); }
    OSErr Completion(OSErr err) override {
        i_playP->PreRollOver(err);
        return err;
    }

private:
    const Ref<CSongPlay> i_playP;
    std::unique_ptr<CS_MainThread_AbortProc> i_loadCompletionP;
};
