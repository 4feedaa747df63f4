#pragma once
#include <atomic>
#include <cmath>

#include "Platform/CClock.h"

/** The thread that feeds a device of a test: a scripted clock moves on once it has done what there was to do, so that no
    machine is too slow for it. Any thread. */
class Feeder {
public:
    [[nodiscard]] bool IsThere() const { return i_fedT != kNobody_T; }
    /** It waits for the clock, or nobody does. */
    [[nodiscard]] bool IsDone() const { return i_fedT >= CClock::Get().SteadyT(); }
    /** Nobody waits for it any more. */
    void Forget() { i_fedT = kNobody_T; }
    /** Of the thread itself: it has nothing to do until the clock moves; it is forgotten when it ends. */
    void NoteDone() {
        struct Leaving {
            Feeder* feederP = nullptr;
            ~Leaving() {
                if (feederP != nullptr) feederP->Forget();
            }
        };
        static thread_local Leaving t_leaving;
        t_leaving.feederP = this;
        i_fedT = CClock::Get().SteadyT();
    }

    /** A rest shorter than this looks for sound that is late. */
    static constexpr double kLook_MostT = 0.05;

private:
    static constexpr double kNobody_T = HUGE_VAL;
    std::atomic<double> i_fedT{kNobody_T};
};
