#pragma once
#include <memory>

#include "Core/Ref.h"
#include "Graphics/CG_Overlay.h"

class CAS_QuickTimeVideo;
class CPixels;

/** What the video windows show between songs: a picture or a movie, all of it, as large as it goes.
    Owner    CBreakScreen. A port has it as its backdrop, under the stack. */
class CBreakOverlay final : public CG_Overlay {
public:
    explicit CBreakOverlay(std::shared_ptr<const CPixels> picture);
    /** One that is open; who owns this says when it shows its next picture. */
    explicit CBreakOverlay(Ref<CAS_QuickTimeVideo> movieP);
    ~CBreakOverlay() override;

    void Draw(CGraphicsPort& port) override;
    /** Null for a picture. */
    [[nodiscard]] CAS_QuickTimeVideo* Movie() const;

private:
    const std::shared_ptr<const CPixels> i_picture;   // either this
    const Ref<CAS_QuickTimeVideo> i_movieP;           // or this
};
