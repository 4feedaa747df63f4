#pragma once
#include "App/CApp.h"

/** Sets the initialising flag for the length of a scope and puts it back.
    Threads  main only. */
class CScopedInitializing {
public:
    CScopedInitializing(CApp& app, bool initializingB)
        : i_app(app), i_beforeB(app.i_initializingB.exchange(initializingB, std::memory_order_relaxed)) {}
    ~CScopedInitializing() { i_app.i_initializingB.store(i_beforeB, std::memory_order_relaxed); }
    CScopedInitializing(const CScopedInitializing&) = delete;
    CScopedInitializing& operator=(const CScopedInitializing&) = delete;

private:
    CApp& i_app;
    bool i_beforeB;
};
