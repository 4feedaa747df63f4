#include "App/CBreakScreen.h"

#include <utility>

#include "App/CAlerts.h"
#include "App/CApp.h"
#include "Core/CLog.h"
#include "Core/FaultText.h"
#include "Core/Localize.h"
#include "Graphics/CGraphicsPorts.h"
#include "Graphics/COffscreen.h"
#include "Movies/CAS_QuickTimeVideo.h"
#include "Movies/CBreakOverlay.h"

namespace {
constexpr std::uint32_t kTurn_Milliseconds = 33;
constexpr int kRetry_Turns = 60;   // a disc that gave nothing is asked again after two seconds
}   // namespace

CBreakScreen::CBreakScreen(CGraphicsPorts& ports, CMainLoop& loop) : i_ports(ports), i_loop(loop) {}

CBreakScreen::~CBreakScreen() {
    i_self.Empty();
    Show(nullptr);
}

void CBreakScreen::Follow(const CCFPrefDictionary& preferences) {
    std::filesystem::path file = preferences.GetString(kPref_BreakPicture).UTF8();
    if (file == i_file) return;
    i_file = std::move(file);
    i_tellB = gApp != nullptr && gApp->IsAppReady();
    if (i_file.empty()) {
        Show(nullptr);
    } else if (CT_Preemptive::Start(std::make_unique<CT_ReadBreakPicture>(i_file, i_self.Handle())) == 0) {
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
        MessageAlert(Localize("The break picture could not be read: %1", {file.filename().string()}),
                     FaultText(err, file));
}

void CBreakScreen::Show(std::unique_ptr<CBreakOverlay> overlay) {
    i_ports.SetBackdrop(overlay.get());
    if (i_overlay != nullptr && i_overlay->Movie() != nullptr) static_cast<void>(i_overlay->Movie()->Close(false));
    i_overlay = std::move(overlay);
    i_decodedL = 0;
    i_waitL = 0;
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
    if (movie.IsEnded()) BeginAgain(movie);
    if (movie.Show()) i_ports.RefreshBackdrop();
}

void CBreakScreen::BeginAgain(CAS_QuickTimeVideo& movie) {
    if (i_waitL > 0 && --i_waitL > 0) return;
    const std::uint64_t decodedL = movie.Counts().decodedL;
    const std::uint64_t newL = decodedL - std::exchange(i_decodedL, decodedL);
    if (newL > 1 || Failed(movie.Result())) movie.SeekTo(0);   // one picture alone stands as it is
    if (newL <= 1) i_waitL = kRetry_Turns;
}
