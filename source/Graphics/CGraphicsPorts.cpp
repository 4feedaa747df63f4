#include "Graphics/CGraphicsPorts.h"

#include "Core/Assertions.h"
#include "Core/CLog.h"
#include "Graphics/CGraphicsOverlay.h"
#include "Graphics/CMediaOverlay.h"
#include "Graphics/CPortWindow.h"

namespace {
/** The order in which a song's picture gets on them. */
constexpr std::array kScreens = {CGraphicsPort::kScreen_VIDEO2, CGraphicsPort::kScreen_VIDEO,
                                 CGraphicsPort::kScreen_PREVIEW};
}   // namespace

CGraphicsPort* CGraphicsPorts::Port(int screen) const noexcept {
    const auto* const it = std::ranges::find(kScreens, screen);
    return it == kScreens.end() ? nullptr : i_ports[static_cast<std::size_t>(it - kScreens.begin())];
}

void CGraphicsPorts::Enter(CGraphicsPort& port) {
    const auto* const it = std::ranges::find(kScreens, port.Screen());
    if (!Assert(it != kScreens.end()) || !Assert(Port(port.Screen()) == nullptr)) return;
    const CGraphicsPort* shownP = nullptr;   // any other: all of them show the song
    Each([&shownP](const CGraphicsPort& other) { shownP = &other; });
    i_ports[static_cast<std::size_t>(it - kScreens.begin())] = &port;
    port.SetBackdrop(i_backdropP);
    port.SetCover(i_cover);
    port.SetFrameShape(i_shape);
    if (shownP == nullptr) return;
    port.SetUnder(shownP->Under() != 0);
    // The picture comes last: what else the song has would seem to be a second one, and take its place.
    for (const bool pictureB : {false, true})
        for (CG_Overlay* const overlayP : shownP->Overlays())
            if (overlayP->Song() != nullptr && overlayP->IsSongPicture() == pictureB) port.Add(*overlayP, -1);
}

void CGraphicsPorts::Leave(CGraphicsPort& port) {
    const auto it = std::ranges::find(i_ports, &port);
    if (it == i_ports.end()) return;
    *it = nullptr;
    for (CG_Overlay* const overlayP : port.Overlays()) port.Remove(*overlayP);
    port.SetBackdrop(nullptr);   // nobody tells it any more when that goes
}

OSErr CGraphicsPorts::WireUp(CMediaOverlay* mediaP, CGraphicsOverlay* pictureP) {
    if (mediaP == nullptr && pictureP == nullptr) return LogStep(fnfErr, "wiring graphics");
    if (mediaP != nullptr) {
        Each([mediaP](CGraphicsPort& port) { port.Add(*mediaP, port.IsVideoWindow() ? port.Under() : -1); });
    }
    if (pictureP != nullptr) {
        if (mediaP != nullptr) Each([](CGraphicsPort& port) { port.SetUnder(true); });
        Each([pictureP](CGraphicsPort& port) { port.Add(*pictureP, port.Under()); });
    }
    return noErr;
}

void CGraphicsPorts::Unwire(CMediaOverlay& media) {
    Each([&media](CGraphicsPort& port) {
        port.Remove(media);
        port.SetUnder(false);
    });
}

void CGraphicsPorts::SetBackdrop(CG_Overlay* overlayP) {
    i_backdropP = overlayP;
    Each([overlayP](CGraphicsPort& port) { port.SetBackdrop(overlayP); });
}

void CGraphicsPorts::SetCover(std::shared_ptr<const CPixels> cover) {
    i_cover = std::move(cover);
    Each([this](CGraphicsPort& port) { port.SetCover(i_cover); });
}

void CGraphicsPorts::RefreshBackdrop() {
    Each([](CGraphicsPort& port) {
        if (port.Source() == nullptr) port.Refresh();
    });
}

bool CGraphicsPorts::ShowsBackdrop() const {
    bool shownB = false;
    Each([&shownB](const CGraphicsPort& port) { shownB = shownB || port.Source() == nullptr; });
    return i_backdropP != nullptr && shownB;
}

Rect CGraphicsPorts::LargestBounds() const {
    Rect largest;
    Each([&largest](const CGraphicsPort& port) {
        largest = Union(largest, MakeRect(0, 0, port.Bounds().Width(), port.Bounds().Height()));
    });
    return largest;
}

void CGraphicsPorts::SetFrameShape(FrameShape shape) {
    i_shape = shape;
    Each([shape](CGraphicsPort& port) { port.SetFrameShape(shape); });
}

void CGraphicsPorts::ApplyRule(const CPlayWindowRule& rule, PlayMode mode) {
    CGraphicsPort* const graphicsP = Port(CGraphicsPort::kScreen_VIDEO);
    if (!Assert(graphicsP)) return;
    for (const CGraphicsPort* const portP : {graphicsP, Port(CGraphicsPort::kScreen_VIDEO2)})
        if (portP != nullptr && portP->Window() != nullptr) rule.Apply(mode, *portP->Window());
}
