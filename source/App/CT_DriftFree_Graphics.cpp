#include "App/CT_DriftFree_Graphics.h"

#include <algorithm>
#include <cmath>

#include "Graphics/CDGConstants.h"
#include "Graphics/CGraphicsClock.h"

namespace {

constexpr double kSectorMicroseconds = 1e6 / 75.0;
constexpr int kPacketsPerSector = 4;

}   // namespace

long SectorMicroseconds(double tempoF) { return std::lround(kSectorMicroseconds / std::clamp(tempoF, 0.1, 10.0)); }

CT_DriftFree_Graphics::CT_DriftFree_Graphics(std::shared_ptr<GraphicsPace> pace)
    : CT_DriftFree("CT_DriftFree_Graphics", SectorMicroseconds(1.0)), i_pace(std::move(pace)) {}

void CT_DriftFree_Graphics::Tick() {
    if (i_pace->pausedB.load(std::memory_order_relaxed)) return;
    const std::scoped_lock guard(i_pace->lock);
    if (i_pace->clockP != nullptr) i_pace->clockP->AddPending(kPacketsPerSector);
}
