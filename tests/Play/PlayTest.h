#pragma once
#include <chrono>
#include <cstdlib>
#include <mutex>

#include "Core/AlertHook.h"
#include "Graphics/CGraphicsPorts.h"
#include "Library/CSongDatabase.h"
#include "Meta/CMetaManager.h"
#include "Platform/CAudioOutput_Null.h"
#include "Platform/CUserInterface_Scripted.h"
#include "Platform/Feeder.h"
#include "Play/CPlayControl.h"
#include "Play/CPlayHost.h"
#include "Play/CPlayWatcher.h"
#include "SongFiles/CSongFileWork.h"
#include "Threads/ThreadTest.h"
#include "Values/CCFPrefDictionary.h"

/** The clock of a show: `speed` times the machine's, but only while the test turns its loop, and in steps that whoever feeds
    the device has followed. A machine that is slow, or busy, makes a test longer and nothing else. */
class FastClock final : public CClock {
public:
    explicit FastClock(double speed) : i_speed(speed) { Install(this); }
    ~FastClock() override { Install(nullptr); }
    double AbsoluteT() const override { return SteadyT(); }
    double SteadyT() const override { return i_nowT; }

    void Skip(double seconds) { i_nowT = i_nowT + seconds; }
    /** Main thread. At most so far: a device holds a fifth of a second. */
    void Step(double most) {
        const auto now = std::chrono::steady_clock::now();
        Skip(std::min(most, i_speed * std::chrono::duration<double>(now - i_last).count()));
        i_last = now;
    }

private:
    const double i_speed;
    std::atomic<double> i_nowT{1000};
    std::chrono::steady_clock::time_point i_last = std::chrono::steady_clock::now();
};

/** A flag that a thread can wait for. */
class Gate {
public:
    Gate& operator=(bool shutB) {
        i_shutB = shutB;
        i_shutB.notify_all();
        return *this;
    }
    operator bool() const { return i_shutB; }
    void WaitUntilOpen() const { i_shutB.wait(true); }

private:
    std::atomic<bool> i_shutB{false};
};

/** What befalls the device of a test. */
struct ScriptedDevice {
    Gate shutB;   // opening, and coming back, waits
    std::atomic<OSErr> openErr{noErr};
    std::atomic<bool> lostB{false}, otherB{true}, newB{false};   // it was pulled out; another one is there; one came
    std::atomic<bool> namedB{true};                              // the device that was chosen by its name is there
    std::atomic<int> openedL{0}, looksL{0};
    CMutexT<std::string> plays;       // the name of what was opened; empty for none
    std::atomic<bool> keepB{false};   // what is heard

    /** The samples of each song, from its opening of the device. */
    std::vector<std::vector<std::int16_t>> Songs() const {
        const std::scoped_lock guard(lock);
        return songs;
    }
    mutable std::mutex lock;
    std::vector<std::vector<std::int16_t>> songs;

    Feeder feeder;
    CAudioOutput* fedP = nullptr;   // guarded by lock: whom to wake when the clock has moved

    void WaitAtGate() {
        feeder.Forget();   // also when it is the feeder who waits
        shutB.WaitUntilOpen();
    }
    void Wake() {
        const std::scoped_lock guard(lock);
        if (fedP != nullptr) fedP->Wake();
    }
};

/** An output on that device. */
class GatedOutput final : public CAudioOutput_Null {
public:
    explicit GatedOutput(ScriptedDevice& device) : i_device(device) {}
    OSErr Open(std::string_view, const AudioBlocks& blocks) override {
        i_device.WaitAtGate();
        if (Failed(i_device.openErr.load())) return i_device.openErr;
        EXPECT_EQ(++i_device.openedL, 1) << "two songs in one output";
        Note(this);
        const std::scoped_lock guard(i_device.lock);
        i_device.songs.emplace_back();
        return CAudioOutput_Null::Open("", blocks);
    }
    OSErr Deliver(std::span<const std::int16_t> stereo) override {
        const std::scoped_lock guard(i_device.lock);
        if (i_device.keepB) i_device.songs.back().insert(i_device.songs.back().end(), stereo.begin(), stereo.end());
        return noErr;
    }
    void Close() override {
        Note(nullptr);
        --i_device.openedL;
        CAudioOutput_Null::Close();
    }
    void WaitForRoom(std::size_t frames, double seconds) override {
        i_device.feeder.NoteDone();
        CAudioOutput_Null::WaitForRoom(frames, seconds);
    }
    void Rest(double seconds) override {
        i_device.feeder.NoteDone();
        CAudioOutput_Null::Rest(seconds);
    }
    [[nodiscard]] bool IsLost() const override { return i_device.lostB; }
    OSErr OpenAny(std::string_view device, const AudioBlocks& blocks, std::string& got) override {
        i_wanted = device;
        if (const OSErr err = Open(device, blocks); Failed(err)) return err;
        got = Found();
        i_device.lostB = got.empty();
        return noErr;
    }
    void LookAgain() override { i_device.newB = true, Wake(); }
    OSErr Recover(std::string& device) override {
        ++i_device.looksL;
        i_device.WaitAtGate();
        if (!i_wanted.empty()) {
            if (!i_device.lostB && !i_device.namedB) return ioErr;
            device = Found();
            i_device.lostB = device.empty();
            return device.empty() ? ioErr : noErr;
        }
        if (!i_device.otherB) return ioErr;
        device = "Other";
        i_device.lostB = false;
        return noErr;
    }
    [[nodiscard]] bool NewDevice() override { return i_device.newB.exchange(false); }

private:
    [[nodiscard]] std::string Found() const {
        const bool namedB = i_device.namedB && i_wanted != kAudioOutput_Default;
        const std::string found(namedB ? i_wanted : i_device.otherB ? std::string(kAudioOutput_Default) : "");
        i_device.plays.Set(found);
        return found;
    }
    void Note(CAudioOutput* outputP) {
        const std::scoped_lock guard(i_device.lock);
        i_device.fedP = outputP;
    }

    ScriptedDevice& i_device;
    std::string i_wanted;   // where any device will do
};

using Words = std::vector<std::string>;

/** Songs, a list, and a control that plays them on an output without sound; the clock runs 20 times as fast. */
class PlayTest : public testing::Test, protected CSongDatabaseHost, protected CPlayHost, protected CPlayWatcher {
protected:
    explicit PlayTest(double speed = 20) : i_clock(speed) {
        std::string pattern = (std::filesystem::temp_directory_path() / "play-XXXXXX").string();
        i_folder = ::mkdtemp(pattern.data());
        CLog::Get().SetFile(i_folder / "log.txt");
        CLog::Get().SetLive(true);
        Alerts().clear();
        Details().clear();
        SetAlertHook([](std::string_view message, std::string_view detail) {
            const std::scoped_lock guard(AlertLock());
            Alerts().push_back(std::string(message));
            Details().push_back(std::string(detail));
        });
        i_managerP = std::make_unique<CThreadManager>();
        i_databaseP = std::make_unique<CSongDatabase>(static_cast<CSongDatabaseHost&>(*this));
        i_filesP = std::make_unique<CSongFileWork>(*i_databaseP);
        i_listP = &i_databaseP->AddPlaylist(kSourceDB_PLAYLIST, "evening");
        i_controlP = std::make_unique<CPlayControl>(static_cast<CPlayHost&>(*this));
        i_controlP->AddWatcher(*this);
        i_host.i_mayPumpB = false;   // a show
    }
    ~PlayTest() override {
        EXPECT_FALSE(Logged("the show waits"));
        i_host.i_mayPumpB = true;   // a quit
        i_device.shutB = false;
        i_controlP.reset();
        i_managerP.reset();   // waits for the songs that are on their way out
        EXPECT_EQ(i_device.openedL, 0);
        i_filesP.reset();
        i_databaseP.reset();
        SetAlertHook(nullptr);
        CLog::Get().SetLive(false);
        CLog::Get().SetFile({});
        std::filesystem::remove_all(i_folder);
    }

    // ---- Songs ----
    /** A tone of `seconds`, after `silentT` of nothing, in a WAV file that is written here. */
    std::filesystem::path Sound(const std::string& name, double seconds, double silentT = 0) const {
        const auto silentL = static_cast<std::uint32_t>(44100 * silentT);
        return Wav(name, silentT + seconds, [silentL](std::uint32_t n) {
            return static_cast<std::int16_t>(n < silentL ? 0 : n % 100 < 50 ? 0x2000 : -0x2000);
        });
    }
    /** Both channels have the sample that `of` gives for each frame. */
    std::filesystem::path Wav(const std::string& name, double seconds,
                              const std::function<std::int16_t(std::uint32_t)>& of) const {
        const auto framesL = static_cast<std::uint32_t>(44100 * seconds);
        std::ofstream out(i_folder / name, std::ios::binary);
        const auto put = [&out](auto value) { out.write(reinterpret_cast<const char*>(&value), sizeof value); };
        out << "RIFF";
        put(36 + framesL * 4);
        out << "WAVEfmt ";
        for (const std::uint32_t word : {16U, 0x00020001U, 44100U, 176400U, 0x00100004U}) put(word);
        out << "data";
        put(framesL * 4);
        for (std::uint32_t n = 0; n < framesL; ++n) {
            const std::int16_t sample = of(n);
            put(sample);
            put(sample);
        }
        return i_folder / name;
    }
    /** So many packets of graphics: a white colour, and tiles that differ. */
    std::filesystem::path Graphics(const std::string& name, std::size_t packetsL) const {
        std::ofstream out(i_folder / name, std::ios::binary);
        for (std::size_t n = 0; n < packetsL; ++n) {
            std::array<char, 24> packet{};
            packet[0] = 9;
            packet[1] = n == 0 ? 30 : 6;
            packet[5] = 1;
            packet[6] = static_cast<char>(n % 18);
            packet[7] = static_cast<char>(n / 18 % 50);
            for (std::size_t row = 8; row < 20; ++row) packet[row] = static_cast<char>((n + row) % 64);
            if (n == 0) packet[6] = packet[7] = 63;
            out.write(packet.data(), packet.size());
        }
        return i_folder / name;
    }
    CSong& Add(const std::filesystem::path& audio, const std::filesystem::path& video = {}) {
        CSong& song = *i_databaseP->CreateSong();
        const auto set = [&song](MetaKey key, const std::filesystem::path& file) {
            if (!file.empty())
                song.Meta().SetSongFile(key, {.status = SDB_SongFileStatus_REFERENCE, .ref = CFileRef(file)});
        };
        set(audio.extension() == ".zip" ? "Sfs2"_key : "Sfs0"_key, audio);
        set("Sfs1"_key, video);
        song.Meta().SetString("name"_key, (audio.empty() ? video : audio).stem().string());
        i_listP->AddItem({.target = song.GetSongID()});
        return song;
    }
    /** "Remember pitch / tempo in all playlists" is off. */
    void TuneRows() {
        LibrarySettings settings = *i_databaseP->Settings();
        settings.tuneRowsB = true;
        i_databaseP->SetSettings(std::move(settings));
    }
    [[nodiscard]] PLItemID Row(std::size_t n) const { return i_listP->GetSortedList().at(n); }
    OSErr Play(std::size_t row) { return i_controlP->Play(i_listP->ID(), Row(row)); }

    // ---- Time ----
    /** The clock alone; the loop stands. */
    void PassTime() {
        if (!i_device.feeder.IsDone()) return;
        i_clock.Step(i_device.feeder.IsThere() ? 0.15 : 1.0);
        i_device.Wake();
    }
    void Pass() {
        PassTime();
        i_host.RunLoopPass();
        i_controlP->VideoIdle(false);
    }
    bool RunUntil(const std::function<bool()>& doneB) {
        for (const auto startT = std::chrono::steady_clock::now(); !doneB(); Pass())
            if (std::chrono::steady_clock::now() - startT > kPatience) return false;
        return true;
    }
    bool RunUntilPlaying() {
        return RunUntil([this] { return i_controlP->State() == PlayState::kPlaying; });
    }
    bool RunUntilIdle() {
        return RunUntil([this] { return i_controlP->State() == PlayState::kIdle; });
    }
    /** The row is played, and its pre-roll is through. */
    bool Starts(std::size_t row, bool pausedB = false) {
        if (Failed(Play(row))) return false;
        i_controlP->SetPaused(pausedB);
        return RunUntilPlaying();
    }
    void RunFor(double seconds) {
        const double untilT = CClock::Get().SteadyT() + seconds;
        while (CClock::Get().SteadyT() < untilT) Pass();
    }
    /** Threads that end songs have ended. */
    bool RunUntilOutputIsFree() {
        return RunUntil([this] { return i_device.openedL == 0; });
    }

    /** The work of a song's own thread, to its end. */
    static OSErr OnWorker(const std::function<OSErr()>& work) {
        OSErr err = abortErr;
        std::jthread([&] {
            TagThread(NextThreadIndex(), true);
            err = work();
        }).join();
        return err;
    }

    // ---- What is told ----
    [[nodiscard]] bool Logged(const std::string& text) const {
        std::stringstream all;
        all << std::ifstream(i_folder / "log.txt").rdbuf();
        return all.str().find(text) != std::string::npos;
    }
    static std::mutex& AlertLock() {
        static std::mutex s_lock;
        return s_lock;
    }
    static Words& Alerts() {
        static Words s_alerts;
        return s_alerts;
    }
    /** What stands below each of them. */
    static Words& Details() {
        static Words s_details;
        return s_details;
    }
    static Words AlertsSoFar() {
        const std::scoped_lock guard(AlertLock());
        return Alerts();
    }

    // What playing asks.
    CSongDatabase& Database() override { return *i_databaseP; }
    CCFPrefDictionary& Preferences() override { return i_preferences; }
    CUserInterface& Ui() override { return i_ui; }
    AudioOutputChoice MakeOutput(const std::string& device) override {
        return {std::make_unique<GatedOutput>(i_device), device};
    }
    CGraphicsPorts& Ports() override { return i_ports; }
    bool PlaysOnAnyDevice() const override { return i_anyDeviceB; }
    bool IsUnpacking(SongID song) override { return song == i_unpacking; }
    void ShowMessage(std::string_view text) override { i_messages.emplace_back(text); }
    void Deselect() override { i_deselectedB = true; }
    void SongFailed(const CSongPlay& play, OSErr) override { i_failed.push_back(play.Spec().name); }
    void SongEnded(const CSongPlay& play) override {
        i_sung.push_back(play.Spec().name);
        i_sungAt300 = play.CurTime300();
    }
    void StopPlayback() override { i_controlP->Stop(); }
    void PlayChanged() override { i_states.push_back(i_controlP->State()); }
    void SettingsChanged() override { ++i_settingsL; }
    void GoBackChanged() override {
        i_offers.push_back(i_controlP->InterruptedSong() ? i_controlP->InterruptedSong()->name : "");
    }

    std::filesystem::path i_folder;
    FastClock i_clock;
    TestHost i_host;
    CMetaManager i_metaManager;
    CCFPrefDictionary i_preferences;
    CUserInterface_Scripted i_ui;
    CGraphicsPorts i_ports;
    ScriptedDevice i_device;
    SongID i_unpacking{SDB_kUninitializedID};
    bool i_deselectedB = false, i_anyDeviceB = false;
    Words i_messages, i_sung, i_failed, i_offers;
    std::vector<PlayState> i_states;
    int i_settingsL = 0;
    long i_sungAt300 = 0;   // where the last one was at its end
    std::unique_ptr<CThreadManager> i_managerP;
    std::unique_ptr<CSongDatabase> i_databaseP;
    std::unique_ptr<CSongFileWork> i_filesP;
    CPlayList* i_listP = nullptr;
    std::unique_ptr<CPlayControl> i_controlP;
};
