#include "Audio/CAudioUnitChain.h"

#include <algorithm>
#include <utility>

#include "Audio/CT_AudioRender.h"
#include "Core/AlertHook.h"
#include "Core/CLog.h"
#include "Core/FaultText.h"
#include "Core/Localize.h"
#include "Platform/CClock.h"

namespace {
constexpr double kRender_LookT = 0.005;   // how often a ring that was late is looked at
constexpr double kDevice_LookT = 1;       // how often a device is looked for while there is none
}   // namespace

CAudioUnitChain::~CAudioUnitChain() {
    StopRendering();
    Close();
}

CAudioUnit& CAudioUnitChain::AddUnit(const char* nameZ, OSType type, OSType subtype) {
    return *i_units.emplace_back(std::make_unique<CAudioUnit>(nameZ, type, subtype));
}

OSErr CAudioUnitChain::Open(const std::string& device, const AudioBlocks& blocks) {
    i_wanted = i_device = device;
    const OSErr err = LogStep(i_anyB ? i_output.OpenAny(device, blocks, i_device) : i_output.Open(device, blocks),
                              "opening the audio output " + device);
    if (err == fnfErr)
        ShowAlert(Localize("There was a problem initializing audio output, you may want to quit and re-run"),
                  FaultText(err, FaultOf::kSoundOutput, device));
    else if (Failed(err))
        ShowAlert(
            Localize("There was a problem initializing audio output, check your audio output device. Are your speakers "
                     "plugged in?"),
            FaultText(err, FaultOf::kSoundOutput, device));
    if (Failed(err)) return err;
    if (IsElsewhere()) {
        LogF("audio output: \"%s\" is not there, \"%s\" plays", device.c_str(), i_device.c_str());
        i_news.Missing(device, i_device);
    } else {
        i_news.Plays(device);
    }
    i_openB = true;
    i_lookT = CClock::Get().SteadyT() + kDevice_LookT;
    i_blockFramesL = blocks.framesL;
    i_roomL = blocks.framesL * blocks.countL;
    i_block.resize(blocks.framesL * kAudioOutput_Channels);
    return noErr;
}

OSErr CAudioUnitChain::StartRendering(CAudioRenderer& renderer, double sleepT) {
    i_rendererP = &renderer;
    i_sleepT = sleepT;
    i_stopB.store(false);
    i_begunB = false;
    i_renderingB = CT_Preemptive::Start(std::make_unique<CT_AudioRender>(*this)) != 0;
    if (!i_renderingB) return memFullErr;   // reported by the thread layer
    Log("Play has started");
    return noErr;
}

void CAudioUnitChain::StopRendering() {
    i_stopB.store(true);
    if (!std::exchange(i_renderingB, false)) return;
    Wake();
    if (Failed(i_stopped.Wait(WaitMode::kMain_TimersPaint))) return;
}

void CAudioUnitChain::Close() {
    if (std::exchange(i_openB, false)) i_output.Close();
}

void CAudioUnitChain::RenderLoop() noexcept {
    OSErr err = noErr;
    while (!Failed(err) && !i_stopB.load()) {
        if (i_output.IsLost() || IsElsewhere()) TendDevice();
        if (i_output.Room() < i_blockFramesL)
            i_output.WaitForRoom(i_blockFramesL, i_sleepT);
        else if (const double restT = RestT(); restT > 0)
            i_output.Rest(restT);
        else
            err = RenderOne();
    }
    RenderRest();
    i_result.store(err);
    i_stopped.Signal();   // last: the chain may be gone after it
}

double CAudioUnitChain::RestT() const noexcept {
    const BlockOutlook outlook = i_rendererP->Outlook();
    const bool holdsB = !i_begunB || i_roomL - std::min(i_roomL, i_output.Room()) > i_blockFramesL / 2;
    if (outlook == BlockOutlook::kWhole || !holdsB) return 0;
    return outlook == BlockOutlook::kShort ? kRender_LookT : i_sleepT;
}

OSErr CAudioUnitChain::RenderOne() noexcept {
    i_begunB = true;
    if (const OSErr err = i_rendererP->RenderBlock(i_block); Failed(err)) return err;
    return i_output.Queue(i_block);
}

/** Where the output holds enough it fades that out by itself, at its end. */
void CAudioUnitChain::RenderRest() noexcept {
    const std::size_t frames = i_rendererP->RenderRest(i_block);
    if (frames > 0 && frames <= i_output.Room())
        (void)Failed(i_output.Queue(std::span(i_block).first(frames * kAudioOutput_Channels)));   // the end it is
}

void CAudioUnitChain::TendDevice() {
    const bool goneB = i_output.IsLost() && !i_device.empty();   // just now
    const bool dueB = i_output.IsLost() && CClock::Get().SteadyT() >= i_lookT;
    if (!i_output.NewDevice() && !goneB && !dueB) return;
    std::string device;
    const bool movedB = !Failed(i_output.Recover(device));
    i_lookT = CClock::Get().SteadyT() + kDevice_LookT;
    if (!movedB && !goneB) return i_news.Missing(i_wanted, i_device);   // as it was; who has asked again hears so
    const std::string before = std::exchange(i_device, device);
    LogF("audio output: from \"%s\" to \"%s\"", before.c_str(), device.c_str());
    if (goneB) i_news.Gone(before, i_wanted, device);
    if (!IsElsewhere()) i_news.Plays(i_wanted);
}
