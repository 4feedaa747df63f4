#include "Graphics/CGraphicsOverlay.h"

#include "Graphics/CGraphics.h"
#include "Graphics/CGraphicsSong.h"

CGraphicsOverlay::CGraphicsOverlay(CGraphics& graphics, CGraphicsSong& song)
    : CG_Overlay("song: " + song.Name()), i_graphics(graphics), i_song(song) {}

RGBColor CGraphicsOverlay::Background() const { return Frame() ? RGBColor{} : i_graphics.BorderColor(); }

void CGraphicsOverlay::Draw(CGraphicsPort& port) { i_graphics.RenderFor(port); }

std::optional<Rect> CGraphicsOverlay::Frame() const {
    const CGraphicsMovie* const movieP = i_song.IsVideoSong() ? i_song.Movie() : nullptr;
    if (movieP == nullptr || movieP->Picture() == nullptr) return {};
    return movieP->Frame();
}
