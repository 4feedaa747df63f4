#pragma once
#include <optional>

#include "Graphics/CGraphicsPort.h"
#include "Graphics/CPortContext.h"
#include "Graphics/CPortView.h"

/** A window's drawing area that notes what is done to it, and the port in it. */
struct Screen final : CPortView, CPortContext {
    Rect bounds{0, 0, 216, 300};
    int refreshesL = 0, paintsL = 0;
    Rect invalid;   // all of it
    struct Fill {
        Rect rect;
        Pixel32 color;
        std::uint8_t alpha;
    };
    std::vector<Fill> fills;
    const CPixels* pictureP = nullptr;   // the last one drawn, and how
    Rect to;
    std::optional<RGBColor> left;
    CGraphicsPort port;

    explicit Screen(int screen, CPortWindow* windowP = nullptr, const char* nameZ = "Test")
        : port(screen, *this, windowP, nameZ) {}

    Rect Bounds() const override { return bounds; }
    void Invalidate(const Rect& rect) override {
        ++refreshesL;
        invalid = Union(invalid, rect);
    }
    void PaintNow() override { ++paintsL; }
    CPortContext* Context() override { return this; }
    void FillRect(const Rect& rect, Pixel32 color, std::uint8_t alpha) override {
        fills.push_back({rect, color, alpha});
    }
    void DrawScaled(const CPixels& source, const Rect& place, const PictureDraw& how) override {
        pictureP = &source;
        to = place;
        left = how.leftOut;
    }
};
