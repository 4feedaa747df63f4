#pragma once
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

class CMainLoop;

/** Requests that come on another thread, are carried out on the main one, and answered where they came.
    Threads  Answer any but main; End main.
    Owner    TVoplaApp, which ends them before it ends the thread that waits here.
    Errors   none: `busy` is the answer when the main thread does not come to it in time, and nothing is done then. */
class CHostRequests {
public:
    using Deed = std::function<std::string()>;

    explicit CHostRequests(CMainLoop& loop) : i_loop(loop) {}
    CHostRequests(const CHostRequests&) = delete;
    CHostRequests& operator=(const CHostRequests&) = delete;

    /** Waits for the main thread, kMost_Seconds at the most. */
    [[nodiscard]] std::string Answer(Deed deed, std::string busy);
    /** Requests that wait get "busy", now and from now on. */
    void End();

    static constexpr double kMost_Seconds = 4.0;   // less than the other side waits

private:
    struct State {
        std::mutex lock;   // guards what follows; never held over a deed
        std::condition_variable changed;
        bool endedB = false;
    };

    CMainLoop& i_loop;
    const std::shared_ptr<State> i_stateRef = std::make_shared<State>();   // the posted deeds may outlive this object
};
