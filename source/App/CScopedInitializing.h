#pragma once
#include "App/CAppState.h"

/** Sets the initialising flag for the length of a scope and puts it back.
    Threads  main only. */
class CScopedInitializing {
public:
    CScopedInitializing(CAppState& state, bool initializingB)
        : i_state(state), i_beforeB(state.SetInitializing(initializingB)) {}
    ~CScopedInitializing() { i_state.SetInitializing(i_beforeB); }
    CScopedInitializing(const CScopedInitializing&) = delete;
    CScopedInitializing& operator=(const CScopedInitializing&) = delete;

private:
    CAppState& i_state;
    const bool i_beforeB;
};
