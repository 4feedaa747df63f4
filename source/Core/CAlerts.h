#pragma once
#include <memory>
#include <string>
#include <string_view>

class CMutex_ThreadQue_Alert;
class CUserInterface;

/** Tells the user, from any thread. An alert of the main thread is shown at once, of another it is queued and shown on
    the main thread once the application is ready; the caller never waits for the user. Assertions end here too.
    Owner    CApp. One at a time; while none lives, an alert is only logged.
    Threads  Message and Queue any; all else main. Members run with the queue alive, which the destructor ends first. */
class CAlerts {
public:
    explicit CAlerts(CUserInterface& ui);
    ~CAlerts();
    CAlerts(const CAlerts&) = delete;
    CAlerts& operator=(const CAlerts&) = delete;

    void Message(std::string_view message, std::string_view detail);
    void Queue(std::string_view message, std::string_view detail);
    /** The application is ready: what waits is shown now. */
    void AppReady();

    /** Alerts that may stand in the queue; what comes above is logged alone, so that a fault in a loop cannot bury the KJ
        under dialogs. */
    static constexpr std::size_t kAlerts_MostWaiting = 20;

private:
    void ShowNow(const std::string& message, const std::string& detail);

    CUserInterface& i_ui;
    std::unique_ptr<CMutex_ThreadQue_Alert> i_queue;   // "Alert Que"
};

/** The alert of the application in use; logs it in any case. Any thread. */
void MessageAlert(std::string_view message, std::string_view detail = {});
/** The form with a number: "message: number". */
void MessageAlert(std::string_view message, long numberL);
/** Shows the alert and ends the process: there is no way on. Main thread. */
[[noreturn]] void FatalAlert(std::string_view message);
