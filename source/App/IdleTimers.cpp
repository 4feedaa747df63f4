#include "App/IdleTimers.h"

#include "App/CApp.h"
#include "App/LocalTime.h"
#include "Core/CLog.h"

CT_IdleTimer_Save::CT_IdleTimer_Save(CApp& app) : CT_Timer("idle timer save", kTimer_Off, true), i_app(app) {}

void CT_IdleTimer_Save::SetFireInterval(double seconds) {
    if (seconds != kTimer_Off && seconds == GetFireInterval()) return;
    CT_Timer::SetFireInterval(seconds);
}

OSErr CT_IdleTimer_Save::Timer() {
    i_app.FireSaveTimer(*this);
    return timerKeepErr;
}

CT_Timer_LogTime::CT_Timer_LogTime() : CT_Timer("idle timer log Time", 900.0) {}

OSErr CT_Timer_LogTime::Timer() {
    LogF("Curr Time:     %s\n", LocalTimeText().c_str());
    return noErr;
}

CT_IdleTimer_NoSleep::CT_IdleTimer_NoSleep(CApp& app) : CT_Timer("idle timer no sleep", 30.0, true), i_app(app) {}

OSErr CT_IdleTimer_NoSleep::Timer() {
    i_app.FireNoSleep();
    return noErr;
}

CT_Timer_VideoRefresh::CT_Timer_VideoRefresh(CApp& app) : CT_Timer("idle timer graphics", 1.0 / 15.0), i_app(app) {}

OSErr CT_Timer_VideoRefresh::Timer() {
    i_app.FireVideoRefresh();
    return noErr;
}

CT_IdleTimer_App::CT_IdleTimer_App(CApp& app) : CT_Timer("idle timer app", 0.5), i_app(app) {}

OSErr CT_IdleTimer_App::Timer() {
    i_app.FireIdle();
    return noErr;
}
