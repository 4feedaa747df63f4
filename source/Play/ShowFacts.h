#pragma once
#include <atomic>
#include <memory>

/** What all songs of a show ask of it, and tell it: one object, which each of them holds.
    Threads  any. */
struct ShowFacts {
    std::atomic<bool> quittingB{false};   // nothing follows any more
    std::atomic<long> globalSlip300{0};   // "Global Song Sync Slip (300ths)"
    std::atomic<double> drawnT{0};        // when a picture was drawn last (CClock::SteadyT)
};
using ShowFactsRef = std::shared_ptr<ShowFacts>;
