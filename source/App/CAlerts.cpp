#include "App/CAlerts.h"

#include <unistd.h>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <mutex>

#include "App/CApp.h"
#include "App/CCrashReporter.h"
#include "Core/AlertHook.h"
#include "Core/Assertions.h"
#include "Core/CLog.h"
#include "Platform/BesideShow.h"
#include "Threads/CallOnMain.h"
#include "Threads/CMutex_ThreadQue_Alert.h"
#include "Threads/ThreadInfo.h"

namespace {

/** The instance in use, and its queue, which a thread may still add to when the instance goes. */
struct InUse {
    CAlerts* alertsP = nullptr;
    std::shared_ptr<CMutex_ThreadQue_Alert> queue;
};
std::mutex s_inUseLock;
InUse s_inUse;   // guarded by s_inUseLock
std::atomic<bool> s_fatalB{false};

InUse Use() {
    const std::scoped_lock guard(s_inUseLock);
    return s_inUse;
}

void SetUse(InUse use) {
    const std::scoped_lock guard(s_inUseLock);
    std::swap(s_inUse, use);
}

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
    CAlerts::Queue(textZ, {});
    if (!continueB) std::_Exit(kAssert_ExitCode);
    return true;
}

}   // namespace

CAlerts::CAlerts(CUserInterface& ui) : i_ui(ui), i_queue(std::make_shared<CMutex_ThreadQue_Alert>()) {
    SetUse({this, i_queue});
    SetAssertHandler(&ReportAssertion);
    SetAlertHook([](std::string_view message, std::string_view detail) { MessageAlert(message, detail); });
}

CAlerts::~CAlerts() {
    i_self.Empty();
    SetAssertHandler(nullptr);
    SetAlertHook(nullptr);
    SetUse({});
    i_queue->Quit(true);   // drops what waits: it stands in the log. What comes late is refused.
}

void CAlerts::ShowNow(const std::string& message, const std::string& detail) {
    const ScopedNesting nesting;   // an assertion under the dialog is queued, not shown over it
    if (i_ui.AlertsMuted())
        i_ui.Beep();
    else
        i_ui.Alert(message, detail);
}

void CAlerts::ShowLast(const std::string& message) {
    const ScopedNesting nesting;
    AlertAndWait(i_ui, message, {});
}

void CAlerts::Add(std::function<void(CAlerts&)> show) {
    const InUse use = Use();
    if (use.queue == nullptr) return;   // no application: the log has it
    if (use.queue->Waiting() >= kAlerts_MostWaiting) {
        Log("too many alerts wait: this one is only logged");
        return;
    }
    // The instance outlives its elements: its destructor ends the queue first.
    const OSErr err = use.queue->Add(CT_QueElement(
        [alertsP = use.alertsP, show = std::move(show)](CT_QueElement&) {
            show(*alertsP);
            return noErr;
        },
        [](CT_QueElement&, OSErr shown) { return shown; }));
    if (Failed(err)) Log("the alert was dropped: the application is quitting");
}

void CAlerts::Queue(std::string_view message, std::string_view detail) {
    LogF("Queing alert message: “%.*s: %.*s”\n", static_cast<int>(message.size()), message.data(),
         static_cast<int>(detail.size()), detail.data());
    Add([message = std::string(message), detail = std::string(detail)](CAlerts& alerts) {
        alerts.ShowNow(message, detail);
        if (message.find("log file") == std::string::npos) return;
        const OSErr err = LogStep(CCrashReporter::KeepLog(CLog::Get().File()), "keeping the log");
        static_cast<void>(err);   // the user can still take the log itself
    });
}

void CAlerts::Queue(const Question& question, std::function<void(const Answer&)> answered) {
    LogF("Queing dialog message: %s\n", question.text.c_str());
    Add([question, answered = std::move(answered)](CAlerts& alerts) {
        if (alerts.i_questions.size() >= kAlerts_MostWaiting)
            return Log("too many questions wait: this one is only logged");
        alerts.i_questions.push_back({question, answered});
        alerts.AskNext();
    });
}

void CAlerts::AskNext() {
    if (i_asksB || i_questions.empty() || (gApp != nullptr && gApp->IsShutdown())) return;
    i_asksB = true;
    const Waiting next = i_questions.front();
    const auto taken = [self = i_self.Handle(), answered = next.answered](const Answer& answer) {
        if (answered) answered(answer);
        CAlerts* const alertsP = self.Get();
        if (alertsP == nullptr) return;
        alertsP->i_questions.pop_front();
        alertsP->i_asksB = false;
        alertsP->AskNext();
    };
    AskThen(i_ui, next.question, taken, AskedFor::kItself);
}

void CAlerts::AppReady() { i_queue->WakeUp(); }

void MessageAlert(std::string_view message, std::string_view detail) {
    LogF("MessageAlert: “%.*s”, “%.*s”\n", static_cast<int>(message.size()), message.data(),
         static_cast<int>(detail.size()), detail.data());
    if (!IsLoopThread()) {
        CAlerts::Queue(message, detail);
        return;
    }
    // Dies on this thread alone, so it outlives the dialog. Nothing holds up a quit: what must be answered there is asked.
    if (CAlerts* const alertsP = Use().alertsP; alertsP != nullptr && !(gApp != nullptr && gApp->IsShutdown()))
        alertsP->ShowNow(std::string(message), std::string(detail));
}

void MessageAlert(std::string_view message, long numberL) {
    MessageAlert(std::string(message) + ": " + std::to_string(numberL));
}

namespace {

[[noreturn]] void ShowAndEnd(std::string_view message) {
    LogF("MessageAlert: “%.*s”, “”\n", static_cast<int>(message.size()), message.data());
    if (CAlerts* const alertsP = IsLoopThread() ? Use().alertsP : nullptr; alertsP != nullptr)
        alertsP->ShowLast(std::string(message));
    CLog::Get().Close();
    std::cerr << "vopla: " << message << std::endl;   // for who started it without a screen
    std::_Exit(1);
}

}   // namespace

void FatalAlert(std::string_view message) {
    const bool againB = s_fatalB.exchange(true);
    if (IsLoopThread()) ShowAndEnd(message);
    const auto show = [words = std::string(message)] { ShowAndEnd(words); };   // where it can be shown
    if (!againB && !PostToMain("fatal alert", show)) ShowAndEnd(message);      // the log alone
    for (;;) ::pause();   // the process ends under this thread, behind the alert
}
