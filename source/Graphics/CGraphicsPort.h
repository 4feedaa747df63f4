#pragma once
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Graphics/CPixels.h"
#include "Threads/CMutex.h"

class CG_Overlay;
class COffscreen;
class CPortContext;
class CPortView;
class CPortWindow;

/** How a port's draw treats what is there; the numbers are those of the platform that the modes come from. */
enum class TransferMode : short {
    kCopy = 0,
    kKeepTransparent = 3,   // pixels of the source's transparent colour are not drawn
    kBlend = 258,           // by the alpha of its pixels, which they are multiplied with
};
/** The shape of the frame of a graphics disc's picture. */
enum class FrameShape { kPicture, k4x3, k16x9 };
/** A part of a picture of the size `whole`. */
struct PicturePart {
    Rect part, whole;
};

/** A surface that shows a stack of overlays: the drawing area of a window, or an offscreen.
    Units    pixels; a rectangle is one of the port's bounds.
    Threads  main; OverlayNames from any. The lock of the stack is held over the overlays' drawing, so that none leaves
             while it draws; it comes before an overlay's own lock.
    Owner    the window, or whoever made the offscreen. Overlays are not owned; a port that goes leaves them. */
class CGraphicsPort {
public:
    /** Fills a port of another opacity than 1.0 that has a context: the window above it takes it for clear. */
    static constexpr Pixel32 kKey_Color = 0xFF0080;
    static constexpr int kScreen_VIDEO = 0, kScreen_PREVIEW = 1, kScreen_VIDEO2 = 9, kScreen_NONE = -1;

    /** Shown by `view`, which paints by Redraw; `windowP` null for a pane inside a window. All outlive the port. */
    CGraphicsPort(int screen, CPortView& view, CPortWindow* windowP, std::string name = "Artwork");
    /** Drawn into `pixels` (depth 32); with `contextP` scaled, by that context alone, else copied as it is. */
    CGraphicsPort(int screen, COffscreen& pixels, CPortContext* contextP, std::string name = "Artwork");
    virtual ~CGraphicsPort();
    CGraphicsPort(const CGraphicsPort&) = delete;
    CGraphicsPort& operator=(const CGraphicsPort&) = delete;

    /** Below 0 `index` counts from the end: -1 is the very end, -2 just before the last. A second overlay of a song
        takes the place of the picture that is there. */
    void Add(CG_Overlay& overlay, short index);
    void Remove(CG_Overlay& overlay);
    [[nodiscard]] bool Shows(const CG_Overlay& overlay) const;
    /** From the bottom to the top. */
    [[nodiscard]] std::vector<std::string> OverlayNames() const;
    [[nodiscard]] std::vector<CG_Overlay*> Overlays() const;
    /** The picture of the song that is shown; null for none. */
    [[nodiscard]] CG_Overlay* Source() const noexcept { return i_sourceP; }

    /** Draws the whole stack: from the window's paint event, or when an offscreen is wanted. */
    void Redraw();
    [[nodiscard]] std::uint32_t Redraws() const noexcept { return i_redrawsL; }

    /** With no window: hands the offscreen to the platform. */
    virtual void Flush();
    /** Has the area painted with the window's next paint event; with `part`, what shows that part of the picture. */
    virtual void Refresh(const std::optional<PicturePart>& part = {});
    /** Draws `source` over `rect`; nothing for the place of the frame. Only while the port is drawn. */
    virtual void Draw(const CPixels& source, const std::optional<Rect>& rect = {},
                      TransferMode mode = TransferMode::kCopy, const std::optional<RGBColor>& transparent = {});
    /** Makes `rect` the largest rectangle of the frame's proportions inside it, centred. */
    virtual void Fit(Rect& rect) const;
    /** The rectangle of the content. */
    [[nodiscard]] virtual Rect Frame() const;
    [[nodiscard]] virtual Rect Bounds() const;

    /** Sets the window's opacity and transparency from the port's, and paints it now. */
    void ForceUpdate();
    /** Where the frame goes in the bounds. */
    [[nodiscard]] Rect Place() const;
    /** The largest rectangle of the proportions of `frame` inside `rect`, centred. */
    [[nodiscard]] static Rect FitInto(const Rect& frame, const Rect& rect);

    [[nodiscard]] float Opacity() const noexcept { return i_opacityF; }
    void SetOpacity(float opacity) noexcept { i_opacityF = opacity; }
    [[nodiscard]] bool IsTransparent() const noexcept { return i_transparentB; }
    void SetTransparent(bool transparentB) noexcept { i_transparentB = transparentB; }
    /** Nothing is seen through it: its background is filled with the colour of the border. */
    [[nodiscard]] bool IsSolid() const noexcept { return i_opacityF == 1.0F && !i_transparentB; }
    /** A song's media overlay lies under its picture. */
    [[nodiscard]] std::uint8_t Under() const noexcept { return i_under; }
    void SetUnder(bool underB) noexcept { i_under = underB ? 1 : 0; }
    void SetFrameShape(FrameShape shape);
    /** What is shown while no song's picture is there; null for the background alone. Not owned, no part of the stack. */
    void SetBackdrop(CG_Overlay* overlayP);
    /** The cover of a song that has no picture, depth 32; null for none. The room does not see it. */
    virtual void SetCover(std::shared_ptr<const CPixels>) {}

    [[nodiscard]] int Screen() const noexcept { return i_screen; }
    [[nodiscard]] bool IsVideoWindow() const noexcept {
        return i_screen == kScreen_VIDEO || i_screen == kScreen_VIDEO2;
    }
    [[nodiscard]] CPortWindow* Window() const noexcept { return i_windowP; }
    [[nodiscard]] const RGBColor& Background() const noexcept { return i_background; }
    [[nodiscard]] const std::string& Name() const noexcept { return i_name; }

protected:
    /** Under everything, when there is no picture of a song. */
    virtual void DrawEmpty();
    [[nodiscard]] CPortView* View() const noexcept { return i_viewP; }
    /** What of the bounds shows that part of the picture, neighbours that are mixed with it included. */
    [[nodiscard]] Rect AreaOf(const PicturePart& part) const;

private:
    void PrepareBackground(bool forceB);
    void FindSource();
    [[nodiscard]] CPortContext* Context() const;

    const int i_screen;
    CPortView* const i_viewP;         // null for an offscreen
    CPortWindow* const i_windowP;     // null for a pane and for an offscreen
    COffscreen* const i_offscreenP;   // null for a window
    CPortContext* const i_contextP;   // of the offscreen; null for a plain one
    const std::string i_name;

    CG_Overlay* i_sourceP = nullptr;   // in i_overlayVec
    CG_Overlay* i_backdropP = nullptr;
    std::uint8_t i_under = 0;
    float i_opacityF = 1.0F;
    bool i_transparentB = false;
    FrameShape i_shape = FrameShape::kPicture;
    RGBColor i_background;   // as of the last redraw
    std::uint32_t i_redrawsL = 0;
    mutable CMutex i_lock;
    std::vector<CG_Overlay*> i_overlayVec;   // 0 lies at the bottom; the main thread alone changes it, under i_lock
};
