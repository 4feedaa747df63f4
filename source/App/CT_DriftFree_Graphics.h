#pragma once
#include <memory>

#include "Core/CT_DriftFree.h"

class CGraphicsClock;

/** What the clock thread shares with its song: the thread may end after the song has gone. */
struct GraphicsPace {
    explicit GraphicsPace(CGraphicsClock& songs) : clockP(&songs) {}
    std::mutex lock;                   // guards clockP; held for one addition
    CGraphicsClock* clockP = nullptr;  // null once the song has gone
    std::atomic<bool> pausedB{false};
};

/** Advances the picture: adds a CD sector's four packets to the song's pending time, 75 times a second at tempo 1.0.
    Owner    the fork, as every thread; the song tells it to Stop and takes its clock out of the shared pace. */
class CT_DriftFree_Graphics final : public CT_DriftFree {
public:
    explicit CT_DriftFree_Graphics(std::shared_ptr<GraphicsPace> pace);

protected:
    void Tick() override;

private:
    const std::shared_ptr<GraphicsPace> i_pace;
};

/** Microseconds of a CD sector at `tempoF`. */
[[nodiscard]] long SectorMicroseconds(double tempoF);
