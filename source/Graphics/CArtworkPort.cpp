#include "Graphics/CArtworkPort.h"

#include <utility>

#include "Core/Assertions.h"
#include "Graphics/CPortView.h"
#include "Threads/ThreadInfo.h"

CArtworkPort::ScSkipForecedUpdate::ScSkipForecedUpdate(CArtworkPort& port) : i_port(port) { ++i_port.i_skipsL; }

CArtworkPort::ScSkipForecedUpdate::~ScSkipForecedUpdate() {
    if (--i_port.i_skipsL == 0 && std::exchange(i_port.i_skippedB, false)) i_port.Refresh();
}

CArtworkPort::CArtworkPort(CPortView& view) : CGraphicsPort(kScreen_PREVIEW, view, nullptr) {}

void CArtworkPort::SetEnabled(bool enabledB) {
    if (!std::exchange(i_enabledB, enabledB)) Refresh();
}

void CArtworkPort::SetCover(std::shared_ptr<const CPixels> cover) {
    if (std::exchange(i_cover, std::move(cover)) == i_cover) return;
    if (Source() == nullptr) Refresh();
}

void CArtworkPort::Flush() {
    if (!Assert(IsMainThread())) return;
    if (i_enabledB && i_skipsL == 0) View()->PaintNow();
}

void CArtworkPort::Refresh(const std::optional<PicturePart>& part) {
    if (!Assert(IsMainThread())) return;
    if (i_skipsL > 0) i_skippedB = true;
    if (!i_enabledB || i_skipsL > 0) return;
    View()->Invalidate(part ? AreaOf(*part) : Bounds());
}

void CArtworkPort::DrawEmpty() {
    if (i_cover == nullptr) return CGraphicsPort::DrawEmpty();
    Draw(*i_cover, FitInto(i_cover->bounds(), Bounds()));
}
