#pragma once
#include "App/CAlerts.h"
#include "App/CAppPart.h"
#include "Threads/CThreadManager.h"

class CApp;

/** The thread manager. A thread that still runs when it goes is ended, or left alone after its time. */
class CAppThreads final : public CAppPart {
public:
    explicit CAppThreads(CApp& app);
    ~CAppThreads() override;
    [[nodiscard]] CThreadManager& Manager() noexcept { return i_manager; }

private:
    CThreadManager i_manager;
};

/** "Alert Que": what is told from other threads. */
class CAppAlerts final : public CAppPart {
public:
    explicit CAppAlerts(CApp& app);
    void Ready() override { i_alerts.AppReady(); }

private:
    CAlerts i_alerts;
};
