#include "App/CAppWindows_None.h"

#include "Core/CLog.h"
#include "Graphics/CDGPlane.h"

CAppWindows_None::~CAppWindows_None() { Dispose(PREF_Wind_VIDEO); }

void CAppWindows_None::Create(WindowKind kind) {
    if (kind != PREF_Wind_VIDEO || i_port != nullptr) return;
    if (Failed(LogStep(i_pixels.Create(kCDGPlane_Area, 32), "making the video port"))) return;
    i_port = std::make_unique<CGraphicsPort>(CGraphicsPort::kScreen_VIDEO, i_pixels, nullptr);
    Ports().Enter(*i_port);
}

void CAppWindows_None::Dispose(WindowKind kind) {
    if (kind != PREF_Wind_VIDEO || i_port == nullptr) return;
    Ports().Leave(*i_port);
    i_port.reset();
}
