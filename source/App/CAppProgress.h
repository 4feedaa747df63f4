#pragma once
#include <memory>

#include "App/CAppPart.h"
#include "Platform/CUserInterface.h"

class CApp;

/** The window that shows how far the start or the quit is. */
class CAppProgress final : public CAppPart {
public:
    explicit CAppProgress(CApp& app);
    ~CAppProgress() override;
    [[nodiscard]] CProgressView& View() { return *i_view; }

private:
    CApp& i_app;
    const std::unique_ptr<CProgressView> i_view;
};
