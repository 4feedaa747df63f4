#pragma once
#include "Graphics/CG_Overlay.h"

class CGraphics;

/** The picture of a song: CD+G, or the movie of a video song.
    Owner    the CGraphics that it shows. */
class CGraphicsOverlay final : public CG_Overlay {
public:
    CGraphicsOverlay(CGraphics& graphics, CGraphicsSong& song);

    [[nodiscard]] CGraphicsSong* Song() const override { return &i_song; }
    /** The border colour of the table; black around a movie. */
    [[nodiscard]] RGBColor Background() const override;
    void Draw(CGraphicsPort& port) override;
    /** A movie's own. */
    [[nodiscard]] std::optional<Rect> Frame() const override;

private:
    CGraphics& i_graphics;
    CGraphicsSong& i_song;
};
