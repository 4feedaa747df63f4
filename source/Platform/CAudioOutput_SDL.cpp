#include "Platform/CAudioOutput_SDL.h"

#include <SDL.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <mutex>
#include <utility>

#include "Platform/CClock.h"
#include "Platform/SoundFade.h"

namespace {

/** SDL's own bookkeeping of devices and subsystems is not safe between threads. */
std::mutex& SDLLock() {
    static std::mutex s_lock;
    return s_lock;
}

/** Under SDLLock. Each success wants its SDL_QuitSubSystem. */
bool StartAudio() {
    SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");   // the program watches its signals itself
    SDL_SetHint(SDL_HINT_AUDIO_DEVICE_APP_NAME, "Vopla");
    SDL_SetHint(SDL_HINT_AUDIO_DEVICE_STREAM_NAME, "Song");
    return SDL_InitSubSystem(SDL_INIT_AUDIO) == 0;
}

/** Under SDLLock. */
std::vector<std::string> NamesNow() {
    std::vector<std::string> names{std::string(kAudioOutput_Default)};
    const int countL = SDL_GetNumAudioDevices(0);
    for (int n = 0; n < countL; ++n)
        if (const char* nameZ = SDL_GetAudioDeviceName(n, 0); nameZ != nullptr) names.emplace_back(nameZ);
    return names;
}

/** The name that a device has now. One that comes back while SDL still knows the old one is "Name (2)" there. Empty: it is
    not there. Under SDLLock. */
std::string NameNow(const std::string& device) {
    const std::vector<std::string> names = NamesNow();
    if (std::ranges::find(names, device) != names.end()) return device;
    const auto again = std::ranges::find_if(names, [&](std::string_view name) {
        if (!name.starts_with(device + " (") || !name.ends_with(')')) return false;
        name = name.substr(device.size() + 2);
        return name.size() > 1 && name.find_first_not_of("0123456789") == name.size() - 1;
    });
    return again == names.end() ? std::string() : *again;
}

constexpr std::size_t kSample_Bytes = sizeof(std::int16_t) * kAudioOutput_Channels;

constexpr double kFade_MostT = 0.2;   // a device that takes nothing for so long is not waited for

/** All of `stereo`, or as much of it as a fade takes: it follows or comes before silence. */
void Fade(std::span<std::int16_t> stereo, bool inB) noexcept {
    const std::size_t countL = stereo.size() / kAudioOutput_Channels;
    for (std::size_t n = 0; n < stereo.size(); ++n) {
        const std::size_t frame = n / kAudioOutput_Channels;
        stereo[n] = Faded(stereo[n], inB ? FadeIn(frame, std::min(countL, kFadeIn_Frames)) : FadeOut(frame, countL));
    }
}

/** The callback takes half a block at a time or less, so that a block becomes free in two steps, not two at once. */
std::uint16_t CallbackFrames(std::size_t blockFramesL) {
    std::size_t framesL = 64;
    while (framesL * 4 <= blockFramesL && framesL < 4096) framesL *= 2;
    return static_cast<std::uint16_t>(framesL);
}

}   // namespace

struct CAudioOutput_SDL::Calls {
    /** SDL's audio thread. */
    static void SDLCALL Fill(void* dataP, Uint8* streamP, int bytesL) {
        auto& self = *static_cast<CAudioOutput_SDL*>(dataP);
        const auto wantedL = static_cast<std::size_t>(bytesL) / kSample_Bytes;
        const std::uint64_t playedL = self.i_playedL.load(std::memory_order_relaxed);
        const std::uint64_t queuedL = self.i_queuedL.load(std::memory_order_acquire);
        const Leaving leaving = self.i_leaving.load(std::memory_order_acquire);
        const std::uint64_t mayL = leaving == Leaving::kNo      ? wantedL
                                   : leaving == Leaving::kAsked ? std::min(wantedL, kFadeOut_Frames)
                                                                : 0;
        const auto takenL = static_cast<std::size_t>(std::min<std::uint64_t>(mayL, queuedL - playedL));
        for (std::size_t doneL = 0; doneL < takenL;) {
            const auto at = static_cast<std::size_t>((playedL + doneL) % self.i_roomL);
            const std::size_t partL = std::min(takenL - doneL, self.i_roomL - at);
            std::memcpy(streamP + doneL * kSample_Bytes, &self.i_ring[at * kAudioOutput_Channels],
                        partL * kSample_Bytes);
            doneL += partL;
        }
        if (leaving == Leaving::kAsked) {
            Fade({reinterpret_cast<std::int16_t*>(streamP), takenL * kAudioOutput_Channels}, false);
            self.i_leaving.store(Leaving::kDone, std::memory_order_release);
            self.i_wake.Signal();
        }
        std::memset(streamP + takenL * kSample_Bytes, 0, static_cast<std::size_t>(bytesL) - takenL * kSample_Bytes);
        if (queuedL > 0 && takenL < wantedL) self.i_lateL.fetch_add(wantedL - takenL, std::memory_order_relaxed);
        self.i_playedL.store(playedL + takenL, std::memory_order_release);
        if (takenL > 0) self.i_wake.Signal();
    }
    /** Any thread: SDL's audio threads raise these the moment they see them. */
    static int SDLCALL Watch(void* dataP, SDL_Event* eventP) {
        auto& self = *static_cast<CAudioOutput_SDL*>(dataP);
        if (eventP->adevice.iscapture != 0) return 0;
        if (eventP->type == SDL_AUDIODEVICEADDED) self.LookAgain();
        if (eventP->type == SDL_AUDIODEVICEREMOVED) {
            const std::uint32_t id = self.i_watchedID.load(std::memory_order_acquire);
            if (id != 0 && eventP->adevice.which == id) self.i_lostB.store(true, std::memory_order_release);
            self.i_wake.Signal();
        }
        return 0;
    }
};

namespace {
/** Frees what SDL keeps of a thread that it did not make, the text of a failure above all: a song opens its output on a
    worker of its own. */
struct ThreadsShare {
    ThreadsShare() = default;
    ThreadsShare(const ThreadsShare&) = delete;
    ThreadsShare& operator=(const ThreadsShare&) = delete;
    ~ThreadsShare() { SDL_TLSCleanup(); }
};
}   // namespace

CAudioOutput_SDL::~CAudioOutput_SDL() { CAudioOutput_SDL::Close(); }

std::vector<std::string> CAudioOutput_SDL::DeviceNames() {
    const ThreadsShare share;
    const std::lock_guard guard(SDLLock());
    if (!StartAudio()) return {std::string(kAudioOutput_Default)};
    std::vector<std::string> names = NamesNow();
    SDL_QuitSubSystem(SDL_INIT_AUDIO);
    return names;
}

bool CAudioOutput_SDL::BeginSubsystem() {
    i_subsystemB = StartAudio();
    if (i_subsystemB) SDL_AddEventWatch(&Calls::Watch, this);
    return i_subsystemB;
}

OSErr CAudioOutput_SDL::Prepare(std::string_view device, const AudioBlocks& blocks) {
    if (blocks.framesL == 0 || blocks.countL == 0) return paramErr;
    i_device = device.empty() ? kAudioOutput_Default : device;
    i_blockFramesL = blocks.framesL;
    i_roomL = blocks.framesL * blocks.countL;
    i_ring.assign(i_roomL * kAudioOutput_Channels, 0);
    i_queuedL = 0;
    i_playedL = 0;
    i_lateL = 0;
    i_lostB = false;
    i_newDeviceB = false;
    i_paceF = 0;
    i_pacedT = 0;
    i_openB = true;
    return noErr;
}

OSErr CAudioOutput_SDL::Open(std::string_view device, const AudioBlocks& blocks) {
    Close();
    const ThreadsShare share;
    const std::lock_guard guard(SDLLock());
    if (const OSErr err = Prepare(device, blocks); Failed(err)) return err;
    std::uint32_t id = 0;
    const OSErr err = BeginSubsystem() ? OpenDevice(i_device, id) : fnfErr;
    if (Failed(err))
        CloseDevice();
    else
        Start(id);
    return err;
}

OSErr CAudioOutput_SDL::OpenAny(std::string_view device, const AudioBlocks& blocks, std::string& got) {
    Close();
    const ThreadsShare share;
    const std::lock_guard guard(SDLLock());
    if (const OSErr err = Prepare(device, blocks); Failed(err)) return err;
    got.clear();
    if (BeginSubsystem() && StartAnyOf({i_device, std::string(kAudioOutput_Default)}, got)) return noErr;
    i_lostB.store(true, std::memory_order_release);   // the writer keeps the pace
    return noErr;
}

OSErr CAudioOutput_SDL::OpenDevice(const std::string& device, std::uint32_t& id) {
    const bool defaultB = device == kAudioOutput_Default;
    const std::string name = defaultB ? std::string() : NameNow(device);
    if (!defaultB && name.empty()) return fnfErr;
    SDL_AudioSpec wanted{}, got{};
    wanted.freq = static_cast<int>(kAudioOutput_Rate);
    wanted.format = AUDIO_S16SYS;
    wanted.channels = kAudioOutput_Channels;
    wanted.samples = CallbackFrames(i_blockFramesL);
    wanted.callback = &Calls::Fill;
    wanted.userdata = this;
    id = SDL_OpenAudioDevice(defaultB ? nullptr : name.c_str(), 0, &wanted, &got, 0);
    return id == 0 ? ioErr : noErr;
}

void CAudioOutput_SDL::Start(std::uint32_t id) {
    // A new device calls nobody back before it is started: the old one is gone by then, and one at a time takes from
    // the ring. Where there is no new one, the old goes on taking, which keeps the pace of the show.
    if (!IsLost()) FadeOut();
    Stop();
    FadeQueuedIn();
    i_deviceID = id;
    i_lostB.store(false, std::memory_order_release);
    i_watchedID.store(id, std::memory_order_release);
    if (SDL_GetAudioDeviceStatus(id) == SDL_AUDIO_STOPPED)
        i_lostB.store(true, std::memory_order_release);   // before the watch
    SDL_PauseAudioDevice(id, 0);
}

void CAudioOutput_SDL::FadeOut() {
    if (i_deviceID == 0) return;
    i_leaving.store(Leaving::kAsked, std::memory_order_release);
    const double untilT = CClock::Get().SteadyT() + kFade_MostT;
    while (i_leaving.load(std::memory_order_acquire) != Leaving::kDone && CClock::Get().SteadyT() < untilT)
        i_wake.Wait(kFade_MostT);
}

void CAudioOutput_SDL::FadeQueuedIn() {
    const std::uint64_t playedL = i_playedL.load(std::memory_order_acquire);
    const std::uint64_t waitingL = i_queuedL.load(std::memory_order_relaxed) - playedL;
    if (playedL == 0) return;   // nothing was heard yet: it begins as it is
    std::array<std::int16_t, kFadeIn_Frames * kAudioOutput_Channels> faded{};
    const auto countL = static_cast<std::size_t>(std::min<std::uint64_t>(waitingL, kFadeIn_Frames));
    const auto at = [&](std::size_t n) {
        return (static_cast<std::size_t>((playedL + n / kAudioOutput_Channels) % i_roomL)) * kAudioOutput_Channels +
               n % kAudioOutput_Channels;
    };
    const std::span<std::int16_t> part = std::span(faded).first(countL * kAudioOutput_Channels);
    for (std::size_t n = 0; n < part.size(); ++n) part[n] = i_ring[at(n)];
    Fade(part, true);
    for (std::size_t n = 0; n < part.size(); ++n) i_ring[at(n)] = part[n];
}

void CAudioOutput_SDL::Stop() {
    i_watchedID.store(0, std::memory_order_release);
    if (i_deviceID != 0) SDL_CloseAudioDevice(i_deviceID);   // waits for the callback
    i_deviceID = 0;
    i_leaving.store(Leaving::kNo, std::memory_order_release);
}

void CAudioOutput_SDL::CloseDevice() {
    if (i_subsystemB) SDL_DelEventWatch(&Calls::Watch, this);   // waits for one that runs
    Stop();
    if (i_subsystemB) SDL_QuitSubSystem(SDL_INIT_AUDIO);
    i_openB = i_subsystemB = false;
}

void CAudioOutput_SDL::Close() {
    if (!i_openB) return;
    if (!IsLost() && Room() < i_roomL) FadeOut();
    const std::lock_guard guard(SDLLock());
    CloseDevice();
}

bool CAudioOutput_SDL::StartAnyOf(const std::vector<std::string>& names, std::string& got) {
    for (const std::string& name : names) {
        std::uint32_t id = 0;
        if (Failed(OpenDevice(name, id))) continue;
        Start(id);
        got = name;
        return true;
    }
    return false;
}

OSErr CAudioOutput_SDL::Recover(std::string& device) {
    if (!i_openB) return ioErr;
    const ThreadsShare share;
    const std::lock_guard guard(SDLLock());
    std::vector<std::string> names{i_device};
    if (!IsLost()) {   // it plays elsewhere, and goes on there when this one is not back
        return i_subsystemB && StartAnyOf(names, device) ? noErr : ioErr;
    }
    names.emplace_back(kAudioOutput_Default);
    // The lost device stays until another one is open.
    if (i_subsystemB && StartAnyOf(names, device)) return noErr;
    // Some drivers know one device only, and what has lost its sound server finds nothing any more: all anew.
    CloseDevice();
    i_openB = true;
    return BeginSubsystem() && StartAnyOf(names, device) ? noErr : ioErr;
}

void CAudioOutput_SDL::LookAgain() {
    i_newDeviceB.store(true, std::memory_order_release);
    i_wake.Signal();
}

OSErr CAudioOutput_SDL::Queue(std::span<const std::int16_t> stereo) {
    const std::size_t framesL = stereo.size() / kAudioOutput_Channels;
    if (stereo.size() % kAudioOutput_Channels != 0 || framesL > Room()) return paramErr;
    const std::uint64_t queuedL = i_queuedL.load(std::memory_order_relaxed);
    const auto at = static_cast<std::size_t>(queuedL % i_roomL);
    const std::size_t firstL = std::min(framesL, i_roomL - at) * kAudioOutput_Channels;
    std::ranges::copy(stereo.first(firstL), i_ring.begin() + static_cast<std::ptrdiff_t>(at * kAudioOutput_Channels));
    std::ranges::copy(stereo.subspan(firstL), i_ring.begin());
    i_queuedL.store(queuedL + framesL, std::memory_order_release);
    return noErr;
}

std::size_t CAudioOutput_SDL::Room() const {
    const std::uint64_t playedL = i_playedL.load(std::memory_order_acquire);   // first: it only grows, up to the other
    // Another thread than the writer may see more queued since than a ring holds.
    const std::uint64_t waitingL = i_queuedL.load(std::memory_order_relaxed) - playedL;
    return i_roomL - static_cast<std::size_t>(std::min<std::uint64_t>(i_roomL, waitingL));
}

void CAudioOutput_SDL::WaitForRoom(std::size_t frames, double seconds) {
    if (Room() >= frames) return;
    const bool pacedB = i_deviceID == 0;   // by the writer alone
    Rest(pacedB ? std::min(seconds, static_cast<double>(frames) / kAudioOutput_Rate) : seconds);
}

void CAudioOutput_SDL::Rest(double seconds) {
    if (i_deviceID != 0) {
        i_pacedT = 0;
        i_wake.Wait(seconds);
        return;
    }
    // Nothing is left that takes frames, not even a lost device: the writer keeps the pace of the show, in which the time
    // between two rests counts too.
    if (i_pacedT == 0) i_pacedT = CClock::Get().SteadyT();
    const std::uint64_t playedL = i_playedL.load(std::memory_order_relaxed);
    const std::uint64_t waitingL = i_queuedL.load(std::memory_order_relaxed) - playedL;
    i_wake.Wait(seconds);
    const double sinceT = std::exchange(i_pacedT, CClock::Get().SteadyT());
    i_paceF += (i_pacedT - sinceT) * kAudioOutput_Rate;   // whatever ended the wait
    const std::uint64_t takenL = std::min(static_cast<std::uint64_t>(i_paceF), waitingL);
    i_paceF = std::min(i_paceF - static_cast<double>(takenL), 1.0);   // nothing is owed for what was not queued
    i_playedL.store(playedL + takenL, std::memory_order_release);
}
