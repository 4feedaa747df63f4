#pragma once
#include "Threads/CMainThreadProc.h"

/** Sets a timer's interval on the main thread. The timer is found again by its fork: it may have gone. */
class MT_SetFireInterval final : public CMainThreadProc {
public:
    MT_SetFireInterval(ForkID id, double seconds)
        : CMainThreadProc("set fire interval"), i_id(id), i_seconds(seconds) {}

protected:
    OSErr Operate() override;

private:
    const ForkID i_id;
    const double i_seconds;
};
