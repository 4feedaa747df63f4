#include "Core/CBackOff.h"

#include <algorithm>

#include "Platform/CClock.h"

namespace {
constexpr double kWait_FirstT = 2.0, kWait_MostT = 8.0;
}   // namespace

bool CBackOff::IsOver() const { return CClock::Get().SteadyT() >= i_againAtT; }

void CBackOff::NoteFailure() {
    i_waitT = std::clamp(i_waitT * 2, kWait_FirstT, kWait_MostT);
    i_againAtT = CClock::Get().SteadyT() + i_waitT;
}
