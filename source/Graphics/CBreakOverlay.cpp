#include "Graphics/CBreakOverlay.h"

#include "Graphics/CGraphicsPort.h"

CBreakOverlay::CBreakOverlay(std::shared_ptr<const CPixels> picture)
    : CG_Overlay("break"), i_picture(std::move(picture)) {}

void CBreakOverlay::Draw(CGraphicsPort& port) {
    port.Draw(*i_picture, CGraphicsPort::FitInto(i_picture->bounds(), port.Bounds()));
}
