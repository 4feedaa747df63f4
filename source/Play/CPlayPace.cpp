#include "Play/CPlayPace.h"

#include <algorithm>
#include <cmath>

#include "Graphics/CDGConstants.h"
#include "Graphics/CGraphicsClock.h"

namespace {
constexpr double kSector_300ths = kPacketsPerCDSector;
constexpr double kMoved_300ths = 0.01;   // less is no movement
constexpr long kStops_QuietTicks = 75;   // a block that was on its way to the output at the pause has come by then
}   // namespace

long SectorMicroseconds(double tempo) { return static_cast<long>(1'000'000.0 / (std::clamp(tempo, 0.1, 10.0) * 75.0)); }

void CPlayPace::SetSound(std::shared_ptr<const CHeardSound> soundP) {
    const std::scoped_lock guard(i_lock);
    i_soundP = std::move(soundP);
}

void CPlayPace::SetWake(std::function<void()> wake) {
    const std::scoped_lock guard(i_lock);
    i_wake = std::move(wake);
}

void CPlayPace::Wait() {
    if (i_wake) i_wake();
    i_mode = i_soundP ? Mode::kWaits : Mode::kRuns;
    if (!i_soundP) return;
    i_fromL = i_soundP->FramesGiven();
    i_placeB = false;
    if (i_soughtB || i_fromL == 0) return;   // it is known with the first new frame
    i_place300 = i_soundP->PlaceOf(i_fromL);
    i_placeB = true;
}

void CPlayPace::Run() {
    const std::scoped_lock guard(i_lock);
    i_runsB = true;
    if (!i_seekingB) Wait();
}

void CPlayPace::Pause() {
    const std::scoped_lock guard(i_lock);
    i_runsB = false;
    i_quietL = 0;
    if (i_mode == Mode::kRuns || i_mode == Mode::kWaits) i_mode = i_soundP && !i_soughtB ? Mode::kStops : Mode::kStands;
}

void CPlayPace::BeginSeek(long target300) {
    const std::scoped_lock guard(i_lock);
    i_seekingB = i_soughtB = true;
    i_mode = Mode::kStands;
    if (i_clockP != nullptr) i_clockP->Seek(target300);
}

void CPlayPace::EndSeek() {
    const std::scoped_lock guard(i_lock);
    i_seekingB = false;
    if (i_runsB) Wait();
}

void CPlayPace::Detach() {
    const std::scoped_lock guard(i_lock);
    i_clockP = nullptr;
    i_soundP.reset();
    i_wake = nullptr;
}

bool CPlayPace::IsRunning() const {
    const std::scoped_lock guard(i_lock);
    return i_mode == Mode::kRuns;
}

long CPlayPace::Period() const {
    const std::scoped_lock guard(i_lock);
    return SectorMicroseconds(i_tempo);
}

double CPlayPace::Tempo() const {
    const std::scoped_lock guard(i_lock);
    return i_tempo;
}

void CPlayPace::SetTempo(double tempo) {
    const std::scoped_lock guard(i_lock);
    i_nextTempo = tempo;
    i_tempoFromL = i_soundP ? i_soundP->FramesGiven() : 0;
    if (!i_soundP || i_mode != Mode::kRuns) i_tempo = tempo;
}

void CPlayPace::MoveTo(double target300) {
    i_clockP->AddPending(static_cast<std::int64_t>(std::floor(target300)) - i_clockP->Now());
}

bool CPlayPace::Tick() {
    const std::scoped_lock guard(i_lock);
    if (i_clockP == nullptr) return false;
    if (i_tempo != i_nextTempo && (!i_soundP || i_soundP->FramesPlayed() >= i_tempoFromL)) i_tempo = i_nextTempo;
    switch (i_mode) {
        case Mode::kStands:
            return false;
        case Mode::kRuns:
            i_clockP->AddPending(kPacketsPerCDSector);
            return true;
        case Mode::kStops:
            return TickStopping();
        case Mode::kWaits:
            TickWaiting();
            return true;
    }
    return true;
}

/** What was given is still heard. */
bool CPlayPace::TickStopping() {
    const double left300 = i_soundP->PlaceOf(i_soundP->FramesGiven()) - static_cast<double>(i_clockP->Now());
    const auto step = static_cast<std::int64_t>(std::clamp(left300, 0.0, kSector_300ths));
    i_clockP->AddPending(step);
    i_quietL = step == 0 ? i_quietL + 1 : 0;
    return i_quietL < kStops_QuietTicks;
}

void CPlayPace::TickWaiting() {
    const std::uint64_t playedL = i_soundP->FramesPlayed();
    if (i_soundP->IsOver()) {
        i_mode = Mode::kRuns;   // silence to the end of the graphics
        return;
    }
    if (playedL < i_fromL) {
        if (!i_placeB) return;
        const double left300 = i_place300 - static_cast<double>(i_clockP->Now());
        i_clockP->AddPending(static_cast<std::int64_t>(std::clamp(left300, 0.0, kSector_300ths)));
        return;
    }
    // Of a frame that was not given yet nothing is known, or the place before the seek.
    if (!i_placeB && i_soundP->FramesGiven() <= i_fromL) return;
    const double now300 = i_soundP->PlaceOf(playedL);
    if (!i_placeB) {
        i_place300 = i_soundP->PlaceOf(i_fromL);
        i_placeB = true;
    }
    i_soughtB = false;
    if (now300 > i_place300 + kMoved_300ths) {
        // An output that takes whole blocks has only just begun with this one.
        MoveTo(i_place300 + std::min(now300 - i_place300, kSector_300ths));
        i_mode = Mode::kRuns;
    } else {
        MoveTo(i_place300);
    }
}
