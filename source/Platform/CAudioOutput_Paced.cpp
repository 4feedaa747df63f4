#include "Platform/CAudioOutput_Paced.h"

#include <algorithm>
#include <cmath>

#include "Platform/CClock.h"

OSErr CAudioOutput_Paced::Open(std::string_view device, const AudioBlocks& blocks) {
    if (!device.empty() && device != kAudioOutput_Default) return fnfErr;
    if (blocks.framesL == 0 || blocks.countL == 0) return paramErr;
    const std::lock_guard guard(i_lock);
    i_account = {0, 0, 0, CClock::Get().SteadyT()};
    i_roomL = blocks.framesL * blocks.countL;
    return noErr;
}

void CAudioOutput_Paced::Close() {
    const std::lock_guard guard(i_lock);
    i_roomL = 0;
}

void CAudioOutput_Paced::CatchUp() const {
    Account& account = i_account;
    if (i_roomL == 0) return;
    if (i_rateF == 0) {
        account.playedL = account.queuedL;
        return;
    }
    const double nowT = CClock::Get().SteadyT();
    const double dueF = std::max(0.0, std::floor((nowT - account.sinceT) * i_rateF));
    const auto waitingF = static_cast<double>(account.queuedL - account.playedL);
    if (dueF >= waitingF) {   // run dry: what is queued next begins now
        if (account.queuedL > 0) account.lateL += static_cast<std::uint64_t>(dueF - waitingF);
        account.playedL = account.queuedL;
        account.sinceT = nowT;
    } else if (dueF > 0) {
        account.playedL += static_cast<std::uint64_t>(dueF);
        account.sinceT += dueF / i_rateF;   // the part of a frame stays due
    }
}

std::size_t CAudioOutput_Paced::RoomNow() const {
    CatchUp();
    return i_roomL == 0 ? 0 : i_roomL - static_cast<std::size_t>(i_account.queuedL - i_account.playedL);
}

OSErr CAudioOutput_Paced::Queue(std::span<const std::int16_t> stereo) {
    const std::size_t framesL = stereo.size() / kAudioOutput_Channels;
    if (stereo.size() % kAudioOutput_Channels != 0 || framesL > Room()) return paramErr;
    if (const OSErr err = Deliver(stereo); Failed(err)) return err;
    const std::lock_guard guard(i_lock);
    CatchUp();
    i_account.queuedL += framesL;
    CatchUp();
    return noErr;
}

std::size_t CAudioOutput_Paced::Room() const {
    const std::lock_guard guard(i_lock);
    return RoomNow();
}

void CAudioOutput_Paced::WaitForRoom(std::size_t frames, double seconds) {
    double waitT = seconds;
    {
        const std::lock_guard guard(i_lock);
        const std::size_t roomL = RoomNow();
        if (roomL >= frames) return;
        if (i_roomL > 0) waitT = std::min(waitT, static_cast<double>(frames - roomL) / i_rateF);
    }
    i_wake.Wait(waitT);
}

std::uint64_t CAudioOutput_Paced::FramesPlayed() const {
    const std::lock_guard guard(i_lock);
    CatchUp();
    return i_account.playedL;
}

std::uint64_t CAudioOutput_Paced::FramesLate() const {
    const std::lock_guard guard(i_lock);
    CatchUp();
    return i_account.lateL;
}
