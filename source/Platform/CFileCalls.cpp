#include "Platform/CFileCalls.h"

#include <atomic>

#include "Platform/CFileCalls_Linux.h"

namespace {

std::atomic<CFileCalls*> s_callsP{nullptr};

}   // namespace

CFileCalls& CFileCalls::Get() {
    static CFileCalls_Linux s_system;
    CFileCalls* const installedP = s_callsP.load(std::memory_order_acquire);
    return installedP == nullptr ? s_system : *installedP;
}

void CFileCalls::Install(CFileCalls* callsP) { s_callsP.store(callsP, std::memory_order_release); }
