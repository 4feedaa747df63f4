#pragma once
#include "Play/CSongPlay.h"
#include "Threads/CMainThreadProc.h"

/** A call to a song that plays, on the main thread, later. It keeps the play, which knows by then whether it was
    stopped. Any thread. */
class CMainThread_SongCall final : public CMainThreadProc {
public:
    using Act = void (CSongPlay::*)();

    static void Post(const char* nameZ, Ref<CSongPlay> playP, Act act) {
        // Without an application nobody plays any more.
        if (Failed((new CMainThread_SongCall(nameZ, std::move(playP), act))->Call(CallMode::kPost))) return;
    }

protected:
    OSErr Operate() override {
        (i_playP.Get()->*i_act)();
        return noErr;
    }

private:
    CMainThread_SongCall(const char* nameZ, Ref<CSongPlay> playP, Act act)
        : CMainThreadProc(nameZ), i_playP(std::move(playP)), i_act(act) {}

    const Ref<CSongPlay> i_playP;
    const Act i_act;
};
