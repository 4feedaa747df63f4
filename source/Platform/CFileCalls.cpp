#include "Platform/CFileCalls.h"

#include <atomic>

#include "Platform/CFileCalls_Linux.h"

namespace {

std::atomic<CFileCalls*> s_installedP{nullptr};

}   // namespace

CFileCalls& CFileCalls::Get() {
    static CFileCalls_Linux s_system;
    CFileCalls* const installedP = s_installedP.load(std::memory_order_acquire);
    return installedP == nullptr ? s_system : *installedP;
}

void CFileCalls::Install(CFileCalls* callsP) { s_installedP.store(callsP, std::memory_order_release); }
