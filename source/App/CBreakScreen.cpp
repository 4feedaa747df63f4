#include "App/CBreakScreen.h"

#include "Core/CAlerts.h"
#include "Core/CApp.h"
#include "Core/CLog.h"
#include "Graphics/CAS_QuickTimeVideo.h"
#include "Graphics/CBreakOverlay.h"
#include "Graphics/CGraphicsPorts.h"
#include "Graphics/COffscreen.h"

namespace {
constexpr std::uint32_t kTurn_Milliseconds = 33;
}

CBreakScreen::CBreakScreen(CGraphicsPorts& ports, CMainLoop& loop)
    : i_ports(ports), i_loop(loop), i_self(std::make_shared<CBreakScreen*>(this)) {}

CBreakScreen::~CBreakScreen() {
    *i_self = nullptr;
    Show(nullptr);
}

void CBreakScreen::Follow(const CCFPrefDictionary& preferences) {
    std::filesystem::path file = preferences.GetString(kBreak_PreferenceZ).UTF8();
    if (file == i_file) return;
    i_file = std::move(file);
    i_tellB = gApp != nullptr && gApp->IsAppReady();
    if (i_file.empty()) {
        Show(nullptr);
    } else if (CT_Preemptive::Start(std::make_unique<CT_ReadBreakPicture>(i_file, i_self)) == 0) {
        Take(i_file, {}, memFullErr);
    }
}

void CBreakScreen::Take(const std::filesystem::path& file, BreakPicture picture, OSErr err) {
    if (file != i_file) {   // another one was chosen meanwhile
        if (picture.movieP != nullptr) static_cast<void>(picture.movieP->Close(false));
        return;
    }
    std::unique_ptr<CBreakOverlay> overlay;
    if (picture.still != nullptr) overlay = std::make_unique<CBreakOverlay>(std::move(picture.still));
    if (picture.movieP != nullptr) overlay = std::make_unique<CBreakOverlay>(std::move(picture.movieP));
    Show(std::move(overlay));
    if (Failed(LogStep(err, "reading the break picture", file)) && i_tellB)
        MessageAlert("The break picture could not be read: " + file.filename().string(), ErrorText(err));
}

void CBreakScreen::Show(std::unique_ptr<CBreakOverlay> overlay) {
    i_ports.SetBackdrop(overlay.get());
    if (i_overlay != nullptr && i_overlay->Movie() != nullptr) static_cast<void>(i_overlay->Movie()->Close(false));
    i_overlay = std::move(overlay);
    if (i_timer != 0) i_loop.KillTimer(i_timer);
    const bool movieB = i_overlay != nullptr && i_overlay->Movie() != nullptr;
    i_timer = movieB ? i_loop.SetTimer(0, kTurn_Milliseconds, [this] { Turn(); }) : 0;
}

void CBreakScreen::Turn() {
    CAS_QuickTimeVideo& movie = *i_overlay->Movie();
    const bool seenB = i_ports.ShowsBackdrop();
    movie.SetPaused(!seenB);
    if (!seenB) return;
    const Rect needed = i_ports.LargestBounds();
    movie.SetNeededSize(needed.Width(), needed.Height());
    if (movie.IsEnded()) movie.SeekTo(0);
    if (movie.Show()) i_ports.RefreshBackdrop();
}
