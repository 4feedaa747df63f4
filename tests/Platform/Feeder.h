#pragma once
#include <atomic>
#include <cmath>
#include <thread>

#include "Platform/CClock.h"

/** The thread that feeds a device of a test: a scripted clock moves on once it has done what there was to do, so that no
    machine is too slow for it. Any thread. */
class Feeder {
public:
    [[nodiscard]] bool IsThere() const { return i_fedT != kNobody_T; }
    /** It waits for the clock, or nobody does. */
    [[nodiscard]] bool IsDone() const { return i_fedT >= CClock::Get().SteadyT(); }
    /** It will come: until then it is not done. */
    void Expect() { i_fedT = -HUGE_VAL; }
    /** Nobody waits for it any more. */
    void Forget() { i_fedT = kNobody_T; }
    /** Of the thread itself: it has nothing to do until the clock moves. When it ends it is forgotten, unless another one
        feeds by then. */
    void NoteDone() {
        struct Leaving {
            Feeder* feederP = nullptr;
            ~Leaving() {
                if (feederP != nullptr && feederP->i_who == std::this_thread::get_id()) feederP->Forget();
            }
        };
        static thread_local Leaving t_leaving;
        t_leaving.feederP = this;
        i_who = std::this_thread::get_id();
        i_fedT = CClock::Get().SteadyT();
    }

    /** A rest shorter than this looks for sound that is late. */
    static constexpr double kLook_MostT = 0.05;

private:
    static constexpr double kNobody_T = HUGE_VAL;
    std::atomic<double> i_fedT{kNobody_T};
    std::atomic<std::thread::id> i_who;
};
