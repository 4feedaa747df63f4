#pragma once
#include <array>
#include <memory>

#include "Graphics/CGraphicsPort.h"
#include "Graphics/CPlayWindowRule.h"

class CGraphicsOverlay;
class CMediaOverlay;

/** The ports by the numbers of their screens, and the ways in which a song gets on and off them.
    Threads  main.
    Owner    CAppWindows; ports and overlays stay their owners'. */
class CGraphicsPorts {
public:
    /** Screen 0, 1 or 9; null for one that is not there, and for every other number. */
    [[nodiscard]] CGraphicsPort* Port(int screen) const noexcept;
    /** A port is there from now on, with what the others show of the song. It must be taken out before it goes. */
    void Enter(CGraphicsPort& port);
    /** It shows nothing any more; one that is not there is left alone. */
    void Leave(CGraphicsPort& port);

    /** Puts a song on the screens: `mediaP` its lyrics, `pictureP` its picture. fnfErr without either: the caller tells
        the user. */
    OSErr WireUp(CMediaOverlay* mediaP, CGraphicsOverlay* pictureP);
    /** Takes the lyrics of a song off again. Its picture leaves with its CGraphics. */
    void Unwire(CMediaOverlay& media);

    /** Shown while no song's picture is: see CGraphicsPort. On all ports, also those that come later. */
    void SetBackdrop(CG_Overlay* overlayP);
    /** What the preview shows while a song without a picture plays: its cover, depth 32; null for none. */
    void SetCover(std::shared_ptr<const CPixels> cover);
    /** It looks different now. */
    void RefreshBackdrop();
    [[nodiscard]] bool ShowsBackdrop() const;
    /** The size of the largest port, in pixels. */
    [[nodiscard]] Rect LargestBounds() const;
    void SetFrameShape(FrameShape shape);
    /** What playing does to the video windows, both alike. Without a port of screen 0 it is a fault. */
    void ApplyRule(const CPlayWindowRule& rule, PlayMode mode);

private:
    template <class Work>
    void Each(Work&& work) const {
        for (CGraphicsPort* const portP : i_ports)
            if (portP != nullptr) work(*portP);
    }

    std::array<CGraphicsPort*, 3> i_ports{};   // in the order of kScreens
    CG_Overlay* i_backdropP = nullptr;
    std::shared_ptr<const CPixels> i_cover;
    FrameShape i_shape = FrameShape::kPicture;
};
