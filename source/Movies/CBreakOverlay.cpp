#include "Movies/CBreakOverlay.h"

#include "Graphics/CGraphicsPort.h"
#include "Movies/CAS_QuickTimeVideo.h"

CBreakOverlay::CBreakOverlay(std::shared_ptr<const CPixels> picture)
    : CG_Overlay("break"), i_picture(std::move(picture)) {}

CBreakOverlay::CBreakOverlay(Ref<CAS_QuickTimeVideo> movieP) : CG_Overlay("break movie"), i_movieP(std::move(movieP)) {}

CBreakOverlay::~CBreakOverlay() = default;

CAS_QuickTimeVideo* CBreakOverlay::Movie() const { return i_movieP.Get(); }

void CBreakOverlay::Draw(CGraphicsPort& port) {
    const CPixels* const pixelsP = Movie() != nullptr ? Movie()->Picture() : i_picture.get();
    if (pixelsP == nullptr) return;   // the movie has not come to its first one
    const Rect frame = Movie() != nullptr ? Movie()->Frame() : pixelsP->bounds();
    port.Draw(*pixelsP, CGraphicsPort::FitInto(frame, port.Bounds()));
}
