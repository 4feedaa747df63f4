#include "App/CAppProgress.h"

#include "App/CApp.h"

CAppProgress::CAppProgress(CApp& app)
    : i_app(app),
      i_view(app.Ui().OpenProgress(app.IsShutdown() ? "Quitting…" : "Initializing " + CApp::DisplayName())) {}

CAppProgress::~CAppProgress() { i_app.State().SetInitializing(false); }
