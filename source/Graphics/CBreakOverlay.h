#pragma once
#include <memory>

#include "Graphics/CG_Overlay.h"

class CPixels;

/** What the video windows show between songs: one picture, all of it, as large as it goes.
    Owner    CBreakScreen. A port has it as its backdrop, under the stack. */
class CBreakOverlay final : public CG_Overlay {
public:
    explicit CBreakOverlay(std::shared_ptr<const CPixels> picture);
    void Draw(CGraphicsPort& port) override;

private:
    const std::shared_ptr<const CPixels> i_picture;
};
