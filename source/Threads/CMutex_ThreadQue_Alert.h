#pragma once
#include "Threads/CMutex_ThreadQue.h"

/** Alerts of every thread, one after the other on the main thread, none before the application is ready. WakeUp at that
    moment spares them the second until the next look. */
class CMutex_ThreadQue_Alert final : public CMutex_ThreadQue {
public:
    CMutex_ThreadQue_Alert() : CMutex_ThreadQue(kQue_Alert) {}
    ~CMutex_ThreadQue_Alert() override { Shut(); }
};
