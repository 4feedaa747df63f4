#pragma once
#include <memory>

#include "App/CAppWindows.h"
#include "Graphics/COffscreen.h"

/** No windows: the headless host. The video window is a port of 300 x 216 pixels in memory, drawn when somebody asks it
    to. */
class CAppWindows_None final : public CAppWindows {
public:
    ~CAppWindows_None() override;
    std::vector<WindowRow> Rows() const override {
        return {{PREF_Wind_VIDEO, "Video", WindowRow::FullScreen{"Full Screen", "Full Screen Display"}}};
    }
    void Create(WindowKind kind) override;
    void Dispose(WindowKind kind) override;
    bool Exists(WindowKind) const override { return false; }
    void Show(WindowKind) override {}
    void Hide(WindowKind) override {}
    void Select(WindowKind) override {}
    void SetPlace(WindowKind, const Place&) override {}
    std::optional<Place> PlaceOf(WindowKind) const override { return std::nullopt; }
    void SetStatus(std::string_view) override {}
    void KeepDisplayOn(bool) override {}

private:
    COffscreen i_pixels;
    std::unique_ptr<CGraphicsPort> i_port;   // over i_pixels; null without a video window
};
