#include "Core/CAlerts.h"

#include <cstdio>
#include <cstdlib>
#include <mutex>

#include "Core/AlertHook.h"
#include "Core/Assertions.h"
#include "Core/CApp.h"
#include "Core/CLog.h"
#include "Core/CMutex_ThreadQue_Alert.h"
#include "Core/ThreadInfo.h"
#include "Platform/CUserInterface.h"

namespace {

std::mutex s_inUseLock;
CAlerts* s_inUseP = nullptr;   // guarded by s_inUseLock

/** The rule of assertions; see Assertions.h. `s_nestingL` counts threads that report one from off the main thread, and the
    alert of the main thread that is being shown. */
std::atomic<long> s_nestingL{0};

class ScopedNesting {
public:
    ScopedNesting() { s_nestingL.fetch_add(1); }
    ~ScopedNesting() { s_nestingL.fetch_sub(1); }
    ScopedNesting(const ScopedNesting&) = delete;
    ScopedNesting& operator=(const ScopedNesting&) = delete;
};

/** Queued with the instance in use, which stays alive meanwhile. */
void QueueAlert(std::string_view message, std::string_view detail) {
    const std::scoped_lock guard(s_inUseLock);   // adding to the queue waits for nobody
    if (s_inUseP != nullptr) s_inUseP->Queue(message, detail);
}

constexpr int kAssert_ExitCode = -2;

bool ReportAssertion(const char* expressionZ, const char* fileZ, long lineL, bool continueB) {
    const bool nestedB = s_nestingL.load() != 0 || IsPreemptiveThread();
    if (IsPreemptiveThread()) continueB = true;
    const ScopedNesting nesting;
    char textZ[1024];
    std::snprintf(textZ, sizeof textZ, "Assert Fail: %s, in file: '%s' at line %ld", expressionZ, fileZ, lineL);
    Log(textZ);
    if (gApp == nullptr || gApp->IsShutdown()) return true;
    if (!nestedB) {
        MessageAlert(textZ);
        return true;
    }
    QueueAlert(textZ, {});
    if (!continueB) std::_Exit(kAssert_ExitCode);
    return true;
}

}   // namespace

CAlerts::CAlerts(CUserInterface& ui) : i_ui(ui), i_queue(std::make_unique<CMutex_ThreadQue_Alert>()) {
    {
        const std::scoped_lock guard(s_inUseLock);
        s_inUseP = this;
    }
    SetAssertHandler(&ReportAssertion);
    SetAlertHook([](std::string_view message, std::string_view detail) { MessageAlert(message, detail); });
}

CAlerts::~CAlerts() {
    SetAssertHandler(nullptr);
    SetAlertHook(nullptr);
    {
        const std::scoped_lock guard(s_inUseLock);
        s_inUseP = nullptr;
    }
    i_queue.reset();   // drops what waits: it stands in the log
}

void CAlerts::ShowNow(const std::string& message, const std::string& detail) {
    const ScopedNesting nesting;   // an assertion under the dialog is queued, not shown over it
    i_ui.Alert(message, detail);
}

void CAlerts::Message(std::string_view message, std::string_view detail) {
    if (IsPreemptiveThread() || !IsLoopThread())
        Queue(message, detail);
    else
        ShowNow(std::string(message), std::string(detail));
}

void CAlerts::Queue(std::string_view message, std::string_view detail) {
    LogF("Queing alert message: “%.*s: %.*s”\n", static_cast<int>(message.size()), message.data(),
         static_cast<int>(detail.size()), detail.data());
    if (i_queue->Waiting() >= kAlerts_MostWaiting) {
        Log("too many alerts wait: this one is only logged");
        return;
    }
    const OSErr err = i_queue->Add(CT_QueElement(
        [this, message = std::string(message), detail = std::string(detail)](CT_QueElement&) {
            ShowNow(message, detail);
            return noErr;
        },
        [](CT_QueElement&, OSErr shown) { return shown; }));
    if (Failed(err)) Log("the alert was dropped: the application is quitting");
}

void CAlerts::AppReady() { i_queue->WakeUp(); }

void MessageAlert(std::string_view message, std::string_view detail) {
    LogF("MessageAlert: “%.*s”, “%.*s”\n", static_cast<int>(message.size()), message.data(),
         static_cast<int>(detail.size()), detail.data());
    if (IsPreemptiveThread() || !IsLoopThread()) {
        QueueAlert(message, detail);
        return;
    }
    CAlerts* alertsP = nullptr;
    {
        const std::scoped_lock guard(s_inUseLock);
        alertsP = s_inUseP;   // dies on this thread alone, so it outlives the dialog below
    }
    if (alertsP != nullptr) alertsP->Message(message, detail);
}

void MessageAlert(std::string_view message, long numberL) {
    MessageAlert(std::string(message) + ": " + std::to_string(numberL));
}

void FatalAlert(std::string_view message) {
    MessageAlert(message);
    CLog::Get().Close();
    std::_Exit(0);
}
