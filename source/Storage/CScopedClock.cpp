#include "Storage/CScopedClock.h"

#include "Core/CLog.h"
#include "Platform/CClock.h"

CScopedClock::CScopedClock(const char* wordsZ) : i_wordsZ(wordsZ), i_startT(CClock::Get().SteadyT()) {}
CScopedClock::~CScopedClock() { LogF("%s: %.3f s", i_wordsZ, CClock::Get().SteadyT() - i_startT); }
