#pragma once
#include <memory>
#include <span>
#include <utility>

#include "Audio/CSpooler.h"
#include "Threads/CallOnMain.h"

/** Tells the task list how far the reading of its base has come, in steps of a hundredth, each told once.
    Threads  as the base. The telling happens on the main thread, later. */
template <class Base>
class CAS_Adapt_Progress : public Base {
public:
    template <class... Args>
    explicit CAS_Adapt_Progress(Args&&... args) : Base(std::forward<Args>(args)...) {
        this->Track(" -> Adapter: Progress");
    }

protected:
    std::uint64_t Consumed_i(std::size_t gotL) override {
        const std::uint64_t unitsL = Base::Consumed_i(gotL);
        const std::uint64_t totalL = this->i_totalL.load();
        if (totalL == 0) return unitsL;
        const std::uint64_t doneL = std::min(totalL, this->i_readL.load() + unitsL);
        const auto stepL = static_cast<long>(doneL * kSteps / totalL);
        if (stepL == i_stepL) return unitsL;
        i_stepL = stepL;
        // Held until it was shown. Without an application nobody looks.
        PostToMain("progress", [spoolP = Ref<CSpooler>(this), stepL] { spoolP->ReportTask(stepL, kSteps); });
        return unitsL;
    }

private:
    static constexpr long kSteps = 100;
    long i_stepL = -1;   // under the read lock
};
