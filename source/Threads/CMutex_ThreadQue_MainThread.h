#pragma once
#include "Threads/CMutex_ThreadQue.h"

/** The manager's own queue: its thread starts at once, and counts as one that runs. */
class CMutex_ThreadQue_MainThread final : public CMutex_ThreadQue {
public:
    CMutex_ThreadQue_MainThread() : CMutex_ThreadQue(kQue_MainThread) { SpawnAtOnce(); }
    ~CMutex_ThreadQue_MainThread() override { Shut(); }
};
