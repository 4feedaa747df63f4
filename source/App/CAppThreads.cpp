#include "App/CAppThreads.h"

#include "App/CApp.h"
#include "Audio/CSpoolPump.h"

CAppThreads::CAppThreads(CApp& /*app*/) { CSpoolPump::AllowAll(); }

CAppThreads::~CAppThreads() {
    CSpoolPump::AbortAll();   // a pump that waits for room or data would hold up the end of its thread
}

CAppAlerts::CAppAlerts(CApp& app) : i_alerts(app.Ui()) {}
