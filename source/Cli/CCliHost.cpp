#include "Cli/CCliHost.h"

#include "Audio/CSpoolPump.h"

CCliHost::CCliHost() {
    Install(this);
    CSpoolPump::AllowAll();
    i_threads = std::make_unique<CThreadManager>();
}

CCliHost::~CCliHost() {
    CSpoolPump::AbortAll();
    i_threads.reset();
    Install(nullptr);
}
