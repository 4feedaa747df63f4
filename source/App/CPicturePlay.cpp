#include "App/CPicturePlay.h"

#include "App/CAppWindows.h"
#include "App/CT_DriftFree_Graphics.h"
#include "Core/CApp.h"
#include "Core/CLog.h"
#include "Core/CPreferences.h"
#include "Graphics/CDGConstants.h"
#include "Graphics/CGraphics.h"
#include "Graphics/CHq4x.h"

namespace {

/** Empty when the picture is shown as it is. */
GraphicsUpscaler MakeUpscaler(bool hq4xB) {
    if (!hq4xB) return {};
    return [filter = std::make_shared<CHq4x>()](const CPixels& source, CPixels& dest) {
        return filter->Scale(source, dest);
    };
}

}   // namespace

CPicturePlay::CPicturePlay(CApp& app) : i_app(app) {}

CPicturePlay::~CPicturePlay() {
    Stop();
    i_app.ClearCurrentSong(*this);
}

OSErr CPicturePlay::Load(const std::filesystem::path& file) {
    if (const OSErr err = i_stream.LoadFile(file); Failed(err)) return LogStep(err, "reading graphics", file);
    if (i_stream.LengthUnits() == 0) return LogStep(eofErr, "graphics without a packet", file);

    const bool hq4xB = i_app.Prefs().GetBool("Use hq4x upscaling (fast computers only)");
    OSErr err = noErr;
    i_graphics = CGraphics::Make(ChannelMask(), MakeUpscaler(hq4xB), err);
    if (i_graphics == nullptr) return LogStep(err, "making graphics", file);
    i_file = file;
    i_graphics->SetSong(*this);
    return noErr;
}

OSErr CPicturePlay::Begin() {
    if (i_graphics == nullptr) return paramErr;
    i_clock.Start(0);
    i_playingB = true;
    i_pace = std::make_shared<GraphicsPace>(i_clock);
    auto thread = std::make_unique<CT_DriftFree_Graphics>(i_pace);
    i_threadP = thread.get();
    if (CT_Preemptive::Start(std::move(thread)) == 0) {
        i_threadP = nullptr;
        Stop();
        return LogStep(memFullErr, "starting the clock of the graphics", i_file);
    }
    i_app.SetCurrentSong(this);
    if (const OSErr err = i_app.Windows().Ports().WireUp(nullptr, i_graphics->Overlay()); Failed(err)) return err;
    i_app.SetStatus(i_file.filename().string());
    i_app.Windows().Show(PREF_Wind_VIDEO);
    LogF("playing graphics <%s>: %zu units", i_file.c_str(), i_stream.LengthUnits());
    return noErr;
}

OSErr CPicturePlay::Seek(long time300) {
    if (i_graphics == nullptr || time300 < 0) return paramErr;
    // By what the stream has given: with a slip the picture is not where the time is.
    const auto readL = static_cast<long>(i_stream.Position() / kSubCodePacket_Units);
    if (time300 + i_clock.StartSync() + SyncSlip300() < readL)
        if (const OSErr err = i_stream.Rewind(); Failed(err)) return err;
    i_clock.Seek(time300);
    return noErr;
}

void CPicturePlay::VideoIdle(bool forcedB) {
    if (i_graphics != nullptr) i_graphics->Tick(forcedB);
}

void CPicturePlay::Stop() {
    i_playingB = false;
    if (i_pace == nullptr) return;
    {
        const std::scoped_lock guard(i_pace->lock);
        i_pace->clockP = nullptr;
    }
    if (i_threadP != nullptr) i_threadP->Stop();   // its fork deletes it, on this thread, so it lives here
    i_threadP = nullptr;
    i_pace.reset();
}

long CPicturePlay::SyncSlip300() const { return i_app.Prefs().GetLong("Global Song Sync Slip (300ths)", 0); }

bool CPicturePlay::IsQuitting() const { return i_app.IsShutdown(); }

void CPicturePlay::PostPlayNext() {
    Log("end of the graphics");
    Stop();
}

void CPicturePlay::StopAfter(OSErr err) {
    LogF("graphics stopped: %d", Number(err));
    Stop();
}

void CPicturePlay::NoteDrawn(double /*absoluteT*/) { i_app.NoteGraphicsDrawn(); }
