#pragma once
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "Platform/CUserInterface.h"
#include "Threads/CHandle.h"

class CMutex_ThreadQue_Alert;

/** Tells the user, from any thread. An alert of the main thread is shown at once, of another it is queued and shown on
    the main thread once the application is ready; the caller never waits for the user. Assertions end here too.
    Owner    CApp. One at a time; while none lives, an alert is only logged.
    Threads  Queue any; all else main. No lock is held while an alert is added, logged or shown. */
class CAlerts {
public:
    explicit CAlerts(CUserInterface& ui);
    ~CAlerts();
    CAlerts(const CAlerts&) = delete;
    CAlerts& operator=(const CAlerts&) = delete;

    /** Main thread: shows it now, or only beeps while the user mutes alerts. */
    void ShowNow(const std::string& message, const std::string& detail);
    /** Main thread: the last word of the process. */
    void ShowLast(const std::string& message);
    /** Shown on the main thread later; never waits. */
    static void Queue(std::string_view message, std::string_view detail);
    /** A prepared dialog, asked on the main thread later. `answered` runs there afterwards; it may be empty. */
    static void Queue(const Question& question, std::function<void(const Answer&)> answered);
    /** The application is ready: what waits is shown now. */
    void AppReady();

    /** Alerts that may stand in the queue; what comes above is logged alone, so that a fault in a loop cannot bury the KJ
        under dialogs. */
    static constexpr std::size_t kAlerts_MostWaiting = 20;

private:
    struct Waiting {
        Question question;
        std::function<void(const Answer&)> answered;
    };
    static void Add(std::function<void(CAlerts&)> show);
    /** The next of the questions, when none stands. */
    void AskNext();

    CUserInterface& i_ui;
    std::deque<Waiting> i_questions;   // the first one stands on the screen when i_asksB
    bool i_asksB = false;
    CHandled<CAlerts> i_self{this};                    // an answer may come later
    std::shared_ptr<CMutex_ThreadQue_Alert> i_queue;   // "Alert Que"; shared with a thread that adds to it right now
};

/** The alert of the application in use; logs it in any case. Any thread. */
void MessageAlert(std::string_view message, std::string_view detail = {});
/** The form with a number: "message: number". */
void MessageAlert(std::string_view message, long numberL);
/** Shows the alert and ends the process: there is no way on. Any thread; the main one shows it. */
[[noreturn]] void FatalAlert(std::string_view message);
