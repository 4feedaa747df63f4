#include "Graphics/CGraphicsPort.h"

#include <cmath>
#include <utility>

#include "Core/Assertions.h"
#include "Core/CLog.h"
#include "Graphics/CDGPlane.h"
#include "Graphics/CG_Overlay.h"
#include "Graphics/COffscreen.h"
#include "Graphics/CPortContext.h"
#include "Graphics/CPortView.h"
#include "Graphics/CPortWindow.h"
#include "Graphics/PixelCopy.h"
#include "Threads/ThreadInfo.h"

namespace {
constexpr std::uint8_t kOpaque = 255;
constexpr std::uint8_t kSeeThrough = 0;   // the window's own opacity fades what is drawn above it

int RoundHalfUp(double value) { return static_cast<int>(std::floor(value + 0.5)); }
}   // namespace

CGraphicsPort::CGraphicsPort(int screen, CPortView& view, CPortWindow* windowP, std::string name)
    : i_screen(screen),
      i_viewP(&view),
      i_windowP(windowP),
      i_offscreenP(nullptr),
      i_contextP(nullptr),
      i_name(std::move(name)) {}

CGraphicsPort::CGraphicsPort(int screen, COffscreen& pixels, CPortContext* contextP, std::string name)
    : i_screen(screen),
      i_viewP(nullptr),
      i_windowP(nullptr),
      i_offscreenP(&pixels),
      i_contextP(contextP),
      i_name(std::move(name)) {}

CGraphicsPort::~CGraphicsPort() {
    for (CG_Overlay* const overlayP : i_overlayVec)
        overlayP->i_portVec.With([this](auto& portVec) { std::erase(portVec, this); });
}

void CGraphicsPort::Add(CG_Overlay& overlay, short indexS) {
    if (!Assert(IsMainThread())) return;
    if (overlay.Song() != nullptr && i_sourceP != nullptr) {
        Log("$$$$$$ double overlay");
        Remove(*i_sourceP);
    }
    {
        const CMutex::Scope guard(i_lock);
        if (indexS < 0) indexS = static_cast<short>(indexS + static_cast<short>(i_overlayVec.size()) + 1);
        if (!AssertWords(indexS >= 0 && indexS <= static_cast<short>(i_overlayVec.size()),
                         "indexS >= 0 && indexS <= (short)i_overlayVec.size()"))
            return;
        if (!AssertWords(std::ranges::find(i_overlayVec, &overlay) == i_overlayVec.end(), "it != i_portVec.end()"))
            return;
        LogF("adding overlay <%s> to <%s>\n", overlay.Name().c_str(), i_name.c_str());
        i_overlayVec.insert(i_overlayVec.begin() + indexS, &overlay);
        overlay.i_portVec.With([this](auto& portVec) { portVec.push_back(this); });
    }
    FindSource();
}

void CGraphicsPort::Remove(CG_Overlay& overlay) {
    if (!Assert(IsMainThread())) return;
    {
        const CMutex::Scope guard(i_lock);
        const auto it = std::ranges::find(i_overlayVec, &overlay);
        if (it == i_overlayVec.end()) return;
        LogF("removing overlay <%s> from <%s>\n", overlay.Name().c_str(), i_name.c_str());
        overlay.i_portVec.With([this](auto& portVec) { std::erase(portVec, this); });
        i_overlayVec.erase(it);
    }
    FindSource();
}

void CGraphicsPort::FindSource() {
    const auto it = std::ranges::find_if(i_overlayVec, &CG_Overlay::IsSongPicture);
    i_sourceP = it == i_overlayVec.end() ? nullptr : *it;
    constexpr const char* kLineZ = "-------------------";
    Log(kLineZ);
    LogF("%s overlays:\n", i_name.c_str());
    for (const CG_Overlay* const overlayP : i_overlayVec) LogF("-->overlay <%s>\n", overlayP->Name().c_str());
    Log(kLineZ);
    Refresh();
}

std::vector<CG_Overlay*> CGraphicsPort::Overlays() const {
    const CMutex::Scope guard(i_lock);
    return i_overlayVec;
}

bool CGraphicsPort::Shows(const CG_Overlay& overlay) const {
    const CMutex::Scope guard(i_lock);
    return std::ranges::find(i_overlayVec, &overlay) != i_overlayVec.end();
}

std::vector<std::string> CGraphicsPort::OverlayNames() const {
    const CMutex::Scope guard(i_lock);
    std::vector<std::string> names;
    for (const CG_Overlay* const overlayP : i_overlayVec) names.push_back(overlayP->Name());
    return names;
}

CPortContext* CGraphicsPort::Context() const { return i_viewP != nullptr ? i_viewP->Context() : i_contextP; }

void CGraphicsPort::Redraw() {
    if (!Assert(IsMainThread())) return;
    PrepareBackground(true);
    if (i_sourceP == nullptr) DrawEmpty();
    {
        const CMutex::Scope guard(i_lock);
        for (CG_Overlay* const overlayP : i_overlayVec) overlayP->Draw(*this);
    }
    ++i_redrawsL;
}

void CGraphicsPort::PrepareBackground(bool forceB) {
    const Rect bounds = Bounds();
    if (bounds.Empty()) return;
    if (i_sourceP != nullptr && IsSolid())
        i_background = i_sourceP->Background();
    else if (forceB)
        i_background = {};
    const Rect area = Offset(bounds, -bounds.left, -bounds.top);
    const Pixel32 color = PackColor(i_background);
    if (i_viewP != nullptr) {
        if (CPortContext* const contextP = i_viewP->Context(); contextP != nullptr)
            contextP->FillRect(area, color, IsSolid() ? kOpaque : kSeeThrough);
    } else if (i_contextP != nullptr) {
        i_contextP->FillRect(area, i_opacityF == 1.0F ? color : kKey_Color, kOpaque);
    } else {
        static_cast<void>(LogStep(i_offscreenP->Fill32(bounds, color), "filling a port"));
    }
}

void CGraphicsPort::DrawEmpty() {
    if (i_backdropP != nullptr) i_backdropP->Draw(*this);
}

void CGraphicsPort::Flush() {
    if (!Assert(IsMainThread())) return;
    if (i_viewP == nullptr && i_contextP != nullptr) i_contextP->Flush();
}

void CGraphicsPort::Refresh(const std::optional<PicturePart>& part) {
    if (!Assert(IsMainThread())) return;
    const Rect bounds = Bounds();
    if (i_viewP == nullptr || !IsVideoWindow() || bounds.Empty()) return;
    i_viewP->Invalidate(part ? AreaOf(*part) : bounds);
}

Rect CGraphicsPort::AreaOf(const PicturePart& part) const {
    const Rect place = Place();
    const int width = part.whole.Width(), height = part.whole.Height();
    if (width == 0 || height == 0) return Bounds();
    // One pixel of the picture around it: where it is scaled smoothly, neighbours are mixed.
    const auto scaled = [](int at, int from, int to, bool upB) {
        const int product = at * to;
        return product >= 0 ? (product + (upB ? from - 1 : 0)) / from : -((-product + (upB ? 0 : from - 1)) / from);
    };
    const Rect& p = part.part;
    const int left = p.left - part.whole.left - 1, top = p.top - part.whole.top - 1;
    const int right = p.right - part.whole.left + 1, bottom = p.bottom - part.whole.top + 1;
    const Rect area{ToCoordinate(place.top + scaled(top, height, place.Height(), false)),
                    ToCoordinate(place.left + scaled(left, width, place.Width(), false)),
                    ToCoordinate(place.top + scaled(bottom, height, place.Height(), true)),
                    ToCoordinate(place.left + scaled(right, width, place.Width(), true))};
    return Intersect(area, Bounds());
}

void CGraphicsPort::Draw(const CPixels& source, const std::optional<Rect>& rect, TransferMode mode,
                         const std::optional<RGBColor>& transparent) {
    if (!Assert(IsMainThread())) return;
    const Rect to = rect ? *rect : Place();
    if (to.Empty()) return;
    const std::optional<RGBColor> leftOut = mode == TransferMode::kKeepTransparent ? transparent : std::nullopt;
    if (CPortContext* const contextP = Context(); contextP != nullptr)
        contextP->DrawScaled(source, to, {.leftOut = leftOut, .blendB = mode == TransferMode::kBlend});
    else if (i_offscreenP != nullptr)
        static_cast<void>(
            LogStep(CopyPixels(source, *i_offscreenP, source.bounds(), to, leftOut), "drawing into a port"));
}

void CGraphicsPort::Fit(Rect& rect) const { rect = FitInto(Frame(), rect); }

Rect CGraphicsPort::FitInto(const Rect& frame, const Rect& rect) {
    if (rect.Empty() || frame.Empty()) return rect;
    const double width = rect.Width(), height = rect.Height();
    const double frameWidth = frame.Width(), frameHeight = frame.Height();
    if (frameWidth * height > width * frameHeight) {
        const int fitted = RoundHalfUp(width * (frameHeight / frameWidth));
        return MakeRect(rect.left, rect.top + RoundHalfUp((height - fitted) / 2), rect.Width(), fitted);
    }
    if (frameWidth * height < width * frameHeight) {
        const int fitted = RoundHalfUp(height * (frameWidth / frameHeight));
        return MakeRect(rect.left + RoundHalfUp((width - fitted) / 2), rect.top, fitted, rect.Height());
    }
    return rect;
}

Rect CGraphicsPort::Frame() const {
    for (auto it = i_overlayVec.rbegin(); it != i_overlayVec.rend(); ++it)
        if (const auto frame = (*it)->Frame()) return *frame;
    Rect frame = kCDGPlane_Area;
    if (i_shape == FrameShape::k4x3) frame.right = static_cast<short>(frame.bottom * 4 / 3);
    if (i_shape == FrameShape::k16x9) frame.right = static_cast<short>(frame.bottom * 16 / 9);
    return frame;
}

Rect CGraphicsPort::Bounds() const { return i_viewP != nullptr ? i_viewP->Bounds() : i_offscreenP->bounds(); }

Rect CGraphicsPort::Place() const {
    if (i_viewP == nullptr && i_contextP == nullptr) return Frame();
    Rect place = Bounds();
    Fit(place);
    return place;
}

void CGraphicsPort::ForceUpdate() {
    if (!Assert(IsMainThread())) return;
    if (i_windowP != nullptr) {
        static_cast<void>(i_windowP->SetOpacity(i_opacityF));   // told once, by the window
        static_cast<void>(i_windowP->SetTransparent(!IsSolid()));
    }
    Refresh();
    if (i_viewP != nullptr) i_viewP->PaintNow();
}

void CGraphicsPort::SetFrameShape(FrameShape shape) {
    if (std::exchange(i_shape, shape) != shape) Refresh();
}

void CGraphicsPort::SetBackdrop(CG_Overlay* overlayP) {
    i_backdropP = overlayP;
    if (i_sourceP == nullptr) Refresh();
}
