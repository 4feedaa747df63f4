#include "App/CAppProgress.h"

#include "App/CApp.h"
#include "Core/Localize.h"

CAppProgress::CAppProgress(CApp& app)
    : i_app(app),
      i_view(app.Ui().OpenProgress(app.IsShutdown() ? Localize("Quitting…")
                                                    : Localize("Initializing %1", {CApp::DisplayName()}))) {}

CAppProgress::~CAppProgress() { i_app.State().SetInitializing(false); }
