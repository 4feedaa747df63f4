#pragma once
#include <functional>

#include "Graphics/CG_Overlay.h"

/** The lyrics of a song that carries them as text, or the movie behind them.
    Owner    whoever wired the song; what `draw` draws outlives it. */
class CMediaOverlay final : public CG_Overlay {
public:
    using DrawStream = std::function<void(CGraphicsPort& port)>;
    CMediaOverlay(CGraphicsSong& song, DrawStream draw)
        : CG_Overlay("mediastream"), i_song(song), i_draw(std::move(draw)) {}

    [[nodiscard]] CGraphicsSong* Song() const override { return &i_song; }
    void Draw(CGraphicsPort& port) override { i_draw(port); }

private:
    CGraphicsSong& i_song;
    const DrawStream i_draw;
};
