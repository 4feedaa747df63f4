#pragma once
#include <vector>

#include "App/CAppPart.h"
#include "Threads/CT_Timer.h"

class CApp;

// The five timers of the application, one line of work each. The map of forks owns them.

/** Saves library and preferences after 2 idle seconds. Off until something is dirty. */
class CT_IdleTimer_Save final : public CT_Timer {
public:
    explicit CT_IdleTimer_Save(CApp& app);
    void SetFireInterval(double seconds) override;
    OSErr Timer() override;

private:
    CApp& i_app;
};

/** A line with the time every quarter of an hour: a log of a whole night can be read by the clock. */
class CT_Timer_LogTime final : public CT_Timer {
public:
    CT_Timer_LogTime();
    OSErr Timer() override;
};

/** While a song plays and nobody touches the machine: the display is kept on, should nothing do so any more. */
class CT_IdleTimer_NoSleep final : public CT_Timer {
public:
    explicit CT_IdleTimer_NoSleep(CApp& app);
    OSErr Timer() override;

private:
    CApp& i_app;
};

/** Draws what has fallen due, 15 times a second. */
class CT_Timer_VideoRefresh final : public CT_Timer {
public:
    explicit CT_Timer_VideoRefresh(CApp& app);
    OSErr Timer() override;

private:
    CApp& i_app;
};

/** What the application looks after twice a second once it is ready. */
class CT_IdleTimer_App final : public CT_Timer {
public:
    explicit CT_IdleTimer_App(CApp& app);
    OSErr Timer() override;

private:
    CApp& i_app;
};

inline constexpr double kTimer_Off = -1.0;

/** The timers, from the start to the quit. */
class CAppTimers final : public CAppPart {
public:
    explicit CAppTimers(CApp& app);
    ~CAppTimers() override;
    [[nodiscard]] CT_Timer& SaveTimer() { return *i_timers.front(); }

private:
    std::vector<CT_Timer*> i_timers;
};
