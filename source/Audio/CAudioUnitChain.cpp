#include "Audio/CAudioUnitChain.h"

#include <algorithm>
#include <utility>

#include "Audio/CT_AudioRender.h"
#include "Core/AlertHook.h"
#include "Core/CLog.h"
#include "Core/FaultText.h"

namespace {
constexpr double kRender_LookT = 0.005;   // how often a ring that was late is looked at
}

CAudioUnitChain::~CAudioUnitChain() {
    StopRendering();
    Close();
}

CAudioUnit& CAudioUnitChain::AddUnit(const char* nameZ, OSType type, OSType subtype) {
    return *i_units.emplace_back(std::make_unique<CAudioUnit>(nameZ, type, subtype));
}

OSErr CAudioUnitChain::Open(const std::string& device, const AudioBlocks& blocks) {
    const OSErr err = LogStep(i_output.Open(device, blocks), "opening the audio output " + device);
    if (err == fnfErr)
        ShowAlert("There was a problem initializing audio output, you may want to quit and re-run",
                  FaultText(err, FaultOf::kSoundOutput, device));
    else if (Failed(err))
        ShowAlert(
            "There was a problem initializing audio output, check your audio output device. Are your speakers plugged "
            "in?",
            FaultText(err, FaultOf::kSoundOutput, device));
    if (Failed(err)) return err;
    i_openB = true;
    i_device = device;
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
        if (i_output.IsLost()) TendDevice();
        if (i_output.Room() < i_blockFramesL)
            i_output.WaitForRoom(i_blockFramesL, i_sleepT);
        else if (const double restT = RestT(); restT > 0)
            i_output.Rest(restT);
        else
            err = RenderOne();
    }
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

void CAudioUnitChain::TendDevice() {
    if (i_goneB && !i_output.NewDevice()) return;
    std::string device;
    const bool movedB = !Failed(i_output.Recover(device));
    if (movedB) LogF("audio output: from \"%s\" to \"%s\"", i_device.c_str(), device.c_str());
    if (!i_goneB)
        ShowAlert("The audio output “" + i_device + "” has gone.",
                  movedB ? "The song goes on with “" + device + "”."
                         : "The song goes on without sound until an output is plugged in.");
    i_goneB = !movedB;
    if (movedB) i_device = device;
}
