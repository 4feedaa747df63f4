#include "App/IdleTimers.h"

#include "App/CApp.h"
#include "App/CAppSaves.h"
#include "App/CAppWindowSet.h"
#include "App/LocalTime.h"
#include "Core/CLog.h"

CT_IdleTimer_Save::CT_IdleTimer_Save(CApp& app) : CT_Timer("idle timer save", kTimer_Off, true), i_app(app) {}

void CT_IdleTimer_Save::SetFireInterval(double seconds) {
    if (seconds != kTimer_Off && seconds == GetFireInterval()) return;
    CT_Timer::SetFireInterval(seconds);
}

OSErr CT_IdleTimer_Save::Timer() {
    i_app.Saves().UserRests(*this);
    return timerKeepErr;
}

CT_Timer_LogTime::CT_Timer_LogTime() : CT_Timer("idle timer log Time", 900.0) {}

OSErr CT_Timer_LogTime::Timer() {
    LogF("Curr Time:     %s\n", LocalTimeText().c_str());
    return noErr;
}

CT_IdleTimer_NoSleep::CT_IdleTimer_NoSleep(CApp& app) : CT_Timer("idle timer no sleep", 30.0, true), i_app(app) {}

OSErr CT_IdleTimer_NoSleep::Timer() {
    if (auto* const windowsP = i_app.Parts().Find<CAppWindowSet>(); windowsP != nullptr) windowsP->KeepAwake();
    return noErr;
}

CT_Timer_VideoRefresh::CT_Timer_VideoRefresh(CApp& app) : CT_Timer("idle timer graphics", 1.0 / 15.0), i_app(app) {}

OSErr CT_Timer_VideoRefresh::Timer() {
    i_app.RefreshVideo();
    return noErr;
}

CT_IdleTimer_App::CT_IdleTimer_App(CApp& app) : CT_Timer("idle timer app", 0.5), i_app(app) {}

OSErr CT_IdleTimer_App::Timer() {
    if (i_app.IsAppReady()) i_app.Parts().ForEach("idling", [](CAppPart& part) { part.Idle(); });
    return noErr;
}

CAppTimers::CAppTimers(CApp& app)
    : i_timers{new CT_IdleTimer_Save(app), new CT_Timer_LogTime(), new CT_IdleTimer_NoSleep(app),
               new CT_Timer_VideoRefresh(app), new CT_IdleTimer_App(app)} {}

CAppTimers::~CAppTimers() {
    LogF("Timers: %zu\n", i_timers.size());
    for (CT_Timer* const timerP : i_timers) {
        LogF("\tdisposing: %s\n", timerP->Name().c_str());
        timerP->Dispose();
    }
}
