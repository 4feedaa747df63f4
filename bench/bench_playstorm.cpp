// bench_playstorm [SEED [ORDERS [ROUNDS [SPEED]]]]: the play control under a storm. In each round 1,000 orders of the
// operator in random order: play, stop, next, previous, seeks, pause, pitch, tempo, volume, vocals, slip, device; rows,
// songs and lists that come and go; preferences; over songs of every kind whose files are deleted, cut and replaced
// meanwhile, by other songs and by garbage, on a device that vanishes and comes back. SPEED times as fast as a show
// (8). The round ends by a good song of each kind, or by an end in the middle of it all. Checked after each order:
// state, row and counts agree; in the end: songs play, no status of an abort was shown, no thread and no file is left.
// Printed: what came to pass, the longest work of the main thread in one order and in one turn of its loop, memory.
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "BenchClock.h"
#include "Cli/CCliHost.h"
#include "Core/AlertHook.h"
#include "Core/CLog.h"
#include "Graphics/CGraphicsPorts.h"
#include "Meta/CMetaManager.h"
#include "Platform/CAudioOutput_Null.h"
#include "Platform/CClock.h"
#include "Platform/CUserInterface_Plain.h"
#include "Platform/Heap.h"
#include "Play/CPlayControl.h"
#include "Play/CPlayHost.h"
#include "Play/CPlayWatcher.h"
#include "SongFiles/CSongFileWork.h"
#include "Values/CCFPrefDictionary.h"

namespace {

namespace fs = std::filesystem;

std::ptrdiff_t CountIn(const char* folderZ) {
    return std::distance(fs::directory_iterator(folderZ), fs::directory_iterator());
}

/** What befalls the one device of the storm. */
struct Device {
    std::atomic<bool> lostB{false}, otherB{true}, newB{false}, failsB{false};
    std::atomic<int> openL{0}, mostOpenL{0};
};

class StormOutput final : public CAudioOutput_Null {
public:
    explicit StormOutput(Device& device) : i_device(device) {}
    OSErr Open(std::string_view, const AudioBlocks& blocks) override {
        if (i_device.failsB) return ioErr;
        i_device.mostOpenL = std::max(i_device.mostOpenL.load(), ++i_device.openL);
        return CAudioOutput_Null::Open("", blocks);
    }
    void Close() override {
        --i_device.openL;
        CAudioOutput_Null::Close();
    }
    bool IsLost() const override { return i_device.lostB; }
    OSErr Recover(std::string& device) override {
        if (!i_device.otherB) return ioErr;
        device = "Other";
        i_device.lostB = false;
        return noErr;
    }
    bool NewDevice() override { return i_device.newB.exchange(false); }

private:
    Device& i_device;
};

/** Texts that were shown, by how often. Workers show some. */
class Alerts {
public:
    Alerts() {
        s_alertsP = this;
        SetAlertHook([](std::string_view message, std::string_view detail) { s_alertsP->Add(message, detail); });
    }
    ~Alerts() { SetAlertHook(nullptr); }
    void Add(std::string_view message, std::string_view detail) {
        const std::scoped_lock guard(i_lock);
        std::string text = std::string(message) + " / " + std::string(detail);
        for (char& c : text)
            if (c >= '0' && c <= '9' && text.find("(-") == std::string::npos) c = '#';
        ++i_texts[text];
        i_abortB = i_abortB || detail.find(ErrorText(abortErr)) != std::string_view::npos ||
                   message.find(ErrorText(abortErr)) != std::string_view::npos;
    }
    [[nodiscard]] bool HasAbort() const { return i_abortB; }
    void Print() const {
        for (const auto& [text, countL] : i_texts) std::printf("    %4d x %s\n", countL, text.c_str());
    }

private:
    static inline Alerts* s_alertsP = nullptr;
    std::mutex i_lock;
    std::map<std::string, int> i_texts;
    std::atomic<bool> i_abortB{false};
};

/** The files of a song; empty for none. */
struct SongFiles {
    std::string audio, video, zip;
};

constexpr std::array<const char*, 12> kFiles = {"p1.mp3",   "p1.cdg",     "p2.mp3",    "p2.cdg",
                                                "both.zip", "stored.zip", "movie.mp4", "silent.mp4",
                                                "lone.mp3", "lone.wav",   "naked.cdg", "lone.ogg"};

std::vector<SongFiles> Songs() {
    return {{"p1.mp3", "p1.cdg", ""}, {"", "", "both.zip"},     {"", "movie.mp4", ""},  {"lone.mp3", "", ""},
            {"", "naked.cdg", ""},    {"p2.mp3", "p2.cdg", ""}, {"", "silent.mp4", ""}, {"", "", "stored.zip"},
            {"lone.wav", "", ""},     {"lone.ogg", "", ""}};
}

class Storm final : private CSongDatabaseHost, private CPlayHost, private CPlayWatcher {
public:
    Storm(fs::path folder, unsigned seed) : i_folder(std::move(folder)), i_random(seed) {
        for (const char* const nameZ : kFiles) Restore(nameZ);
        i_preferences.SetBool("Require Audio (no naked CDG files)", false);
        i_databaseP = std::make_unique<CSongDatabase>(static_cast<CSongDatabaseHost&>(*this));
        i_filesP = std::make_unique<CSongFileWork>(*i_databaseP);
        i_controlP = std::make_unique<CPlayControl>(static_cast<CPlayHost&>(*this));
        i_controlP->AddWatcher(*this);
        NewList();
    }
    ~Storm() override { i_controlP.reset(); }

    void Run(int orders) {
        for (int n = 0; n < orders; ++n) {
            const double workedT = Worked();
            Order();
            i_orderT = std::max(i_orderT, Worked() - workedT);
            Check();
            for (unsigned passes = Any(4) == 0 ? Any(60) : Any(3); passes > 0; --passes) Pass();
        }
    }
    /** All is well again: a song of each kind plays. */
    void EndWell() {
        i_device.failsB = false;
        i_device.otherB = i_device.newB = true;
        i_unpackingB = false;
        for (const char* const nameZ : kFiles) Restore(nameZ);
        for (const BoolPref on : {BoolPref("Stop between tracks"), BoolPref("Auto-cue")})
            i_preferences.SetBool(on, true);
        NewList();
        const std::vector<PLItemID> rows = i_listP->GetSortedList();
        for (const PLItemID row : rows) {
            Must(i_controlP->Play(i_listP->ID(), row) == noErr, "a good song is not played");
            i_controlP->SetPaused(false);
            const double untilT = Now() + 60;
            while (i_controlP->State() != PlayState::kIdle && i_controlP->CurTime300() < 300) {
                Pass();
                Must(Now() < untilT, "a good song does not get on");
            }
            Must(i_controlP->PlayErr() == noErr, "a good song fails");
        }
        i_controlP->Stop();
        const double untilT = Now() + 60;
        while (i_device.openL > 0) {
            Pass();
            Must(Now() < untilT, "the device stays open");
        }
    }
    void Print() const {
        std::printf(
            "  %ld plays, %ld to their end, %ld failed, %ld seeks, %ld files harmed; longest work: order %.1f "
            "ms, turn %.1f ms\n",
            i_startsL, i_endsL, i_failsL, i_seeksL, i_harmsL, i_orderT * 1e3, i_turnT * 1e3);
    }
    [[nodiscard]] bool OneSongAtATime() const { return i_device.mostOpenL <= 1; }

private:
    void Must(bool doneB, const char* whatZ) const {
        if (doneB) return;
        std::fprintf(stderr, "bench_playstorm: %s (last order %u, state %d)\n", whatZ, i_lastOrder,
                     static_cast<int>(i_controlP->State()));
        std::abort();
    }
    unsigned Any(unsigned below) { return below == 0 ? 0 : static_cast<unsigned>(i_random() % below); }
    double AnyPart() { return static_cast<double>(Any(10'001)) / 10'000; }

    // ---- Files ----
    [[nodiscard]] fs::path Good(const std::string& name) const { return i_folder / "good" / name; }
    [[nodiscard]] fs::path Live(const std::string& name) const { return i_folder / "live" / name; }
    /** The file comes back by its name, as a new one. */
    void Restore(const std::string& name) const { PutInPlace(name, name); }
    void PutInPlace(const std::string& name, const std::string& of) const {
        std::error_code err;
        fs::copy_file(Good(of), Live("~new"), fs::copy_options::overwrite_existing, err);
        fs::rename(Live("~new"), Live(name), err);
    }
    void Harm() {
        const std::string name = kFiles[Any(kFiles.size())];
        std::error_code err;
        ++i_harmsL;
        switch (Any(8)) {
            case 0:
                fs::remove(Live(name), err);
                break;
            case 1:
                PutInPlace(name, kFiles[Any(kFiles.size())]);
                break;
            case 2: {   // garbage, where it lies
                std::ofstream out(Live(name), std::ios::binary | std::ios::trunc);
                for (unsigned n = Any(40'000); n > 0; --n) out.put(static_cast<char>(i_random()));
                break;
            }
            case 3:
                fs::resize_file(Live(name), Any(100'000), err);
                break;
            case 4:   // another song, where it lies
                fs::copy_file(Good(kFiles[Any(kFiles.size())]), Live(name), fs::copy_options::overwrite_existing, err);
                break;
            default:
                for (const char* const nameZ : kFiles) Restore(nameZ);
        }
    }

    // ---- Lists ----
    CSong& NewSong(const SongFiles& files) {
        CSong& song = *i_databaseP->CreateSong();
        const auto set = [&](MetaKey key, const std::string& file) {
            if (!file.empty())
                song.Meta().SetSongFile(key, {.status = SDB_SongFileStatus_REFERENCE, .ref = CFileRef(Live(file))});
        };
        set("Sfs0"_key, files.audio);
        set("Sfs1"_key, files.video);
        set("Sfs2"_key, files.zip);
        song.Meta().SetString("name"_key, files.audio + files.video + files.zip);
        return song;
    }
    void NewList() {
        i_listP = &i_databaseP->AddPlaylist(kSourceDB_PLAYLIST, "storm");
        for (const SongFiles& files : Songs()) i_listP->AddItem({.target = NewSong(files).GetSongID()});
    }
    PLItemID AnyRow() {
        const std::vector<PLItemID>& rows = i_listP->GetSortedList();
        return rows.empty() ? SDB_kNoItem : rows[Any(static_cast<unsigned>(rows.size()))];
    }
    PLItemID OwnOrAnyRow() {
        const bool hereB = i_controlP->CurrentList() == i_listP->ID() && i_controlP->CurrentItem() != SDB_kNoItem;
        return hereB && Any(2) == 0 ? i_controlP->CurrentItem() : AnyRow();
    }
    void ChangeList() {
        const PLItemID row = OwnOrAnyRow();
        if (row == SDB_kNoItem) return NewList();
        switch (Any(9)) {
            case 0:
            case 1:
                (void)Failed(i_listP->RemoveItem(row));
                break;
            case 2:
            case 3:
                i_listP->AddItem({.target = NewSong(Songs()[Any(static_cast<unsigned>(Songs().size()))]).GetSongID()});
                break;
            case 4:
                (void)i_listP->MoveItems(std::span(&row, 1),
                                         RowIndex{1} + Any(static_cast<unsigned>(i_listP->Count())));
                break;
            case 5: {   // the song leaves the library, and its rows with it
                const SongID song[] = {i_listP->GetIndPLItem(row)->GetSongID()};
                (void)Failed(i_databaseP->RemoveFromLibrary(song));
                break;
            }
            case 6:
                i_listP->SetSort({{"name"_key, Any(2) == 0}});
                break;
            case 7:
                (void)Failed(i_databaseP->DeletePlaylist(i_listP->ID()));
                NewList();
                break;
            default:
                if (i_listP->Count() < 4) NewList();
        }
    }

    // ---- Orders ----
    void Order() {
        CPlayControl& control = *i_controlP;
        i_lastOrder = Any(24);
        switch (i_lastOrder) {
            case 0:
            case 1:
                if (const PLItemID row = AnyRow(); row != SDB_kNoItem) (void)Failed(control.Play(i_listP->ID(), row));
                break;
            case 2:
                if (Any(3) == 0) control.Stop();
                break;
            case 3:
            case 4:
                ++i_seeksL;
                control.Seek(Any(10) == 0 ? 1.0 : AnyPart());
                break;
            case 5:
                ++i_seeksL;
                control.SeekTo300(control.CurTime300() + (Any(2) == 0 ? 300 : -300));
                break;
            case 6:
                (void)Failed(control.PlayNext());
                if (Any(3) == 0) (void)Failed(control.PlayNext());
                break;
            case 7:
                (void)Failed(control.PlayPrevious());
                break;
            case 8:
            case 9:
                control.TogglePause();
                break;
            case 10:
                (void)Failed(control.SetPitch(static_cast<int>(Any(25)) - 12));
                break;
            case 11:
                (void)Failed(control.SetTempo(0.5 + 1.5 * AnyPart()));
                break;
            case 12:
                control.SetVolume(static_cast<float>(AnyPart()));
                control.SetMute(Any(2) == 0);
                break;
            case 13:
                control.SetVocalMode(static_cast<VocalMode>(Any(4)));
                break;
            case 14:
                (void)control.SlipSong(static_cast<int>(Any(3)) - 1);
                (void)control.SlipGlobal(static_cast<int>(Any(3)) - 1);
                break;
            case 15:
                control.SetPictureDelay(static_cast<long>(Any(400)) - 200);
                break;
            case 16:
                if (Any(3) == 0) (void)Failed(control.SetOutputDevice(Any(2) == 0 ? "one" : "two"));
                break;
            case 17:
                control.Rewind();
                break;
            case 18:
            case 19:
                Harm();
                break;
            case 20:
            case 21:
                ChangeList();
                break;
            case 22:
                ChangeDevice();
                break;
            default:
                ChangePreferences();
        }
    }
    void ChangeDevice() {
        i_device.failsB = Any(8) == 0;
        i_device.otherB = Any(3) != 0;
        i_device.lostB = Any(2) == 0;
        i_device.newB = Any(2) == 0;
    }
    void ChangePreferences() {
        static constexpr BoolPref kSwitches[] = {
            "Auto-cue",
            "pre-cache next song",
            "Stop at playlist end",
            "Pause between tracks",
            "Stop between tracks",
            "Delay start of song playback until unpacked",
            "Remember pitch / tempo in all playlists",
            "Hide on pause",
        };
        i_preferences.SetBool(kSwitches[Any(std::size(kSwitches))], Any(2) == 0);
        i_unpackingB = Any(3) == 0;
    }

    void Pass() {
        const double workedT = Worked();
        i_controlP->VideoIdle(false);
        i_host.MainLoop().Wait(0.002);
        while (i_host.MainLoop().PumpOne(kMessage_All)) {
        }
        i_turnT = std::max(i_turnT, Worked() - workedT);
    }

    void Check() const {
        const CPlayControl& control = *i_controlP;
        Must((control.State() == PlayState::kIdle) == (control.Current() == nullptr),
             "the state is not that of the song");
        Must(!control.IsPlaying() || !control.IsPaused(), "paused and playing");
        Must(control.CurTime300() >= 0, "a time before the song");
        if (control.Current() == nullptr || control.CurrentItem() == SDB_kNoItem) return;
        CPlayList* const listP = i_databaseP->GetPlayList(control.CurrentList());
        const CPlayListItem* const itemP = listP == nullptr ? nullptr : listP->GetIndPLItem(control.CurrentItem());
        Must(listP == nullptr || (itemP != nullptr && itemP->GetSongID() == control.CurrentSong()),
             "the row that plays is another song's");
    }

    // What playing tells.
    void PlayChanged() override {
        const CSongPlay* const nowP = i_controlP->Current();
        if (i_controlP->State() == PlayState::kStarting) {
            ++i_startsL;
            i_endedB = false;
        }
        if (nowP == nullptr && i_controlP->PlayErr() != noErr && i_lastP != nullptr) ++i_failsL;
        i_lastP = nowP;
    }
    void SongEnded(const CSongPlay& play) override {
        Must(!i_endedB && &play == i_controlP->Current(), "a song ended twice");
        i_endedB = true;
        ++i_endsL;
    }

    CSongDatabase& Database() override { return *i_databaseP; }
    CCFPrefDictionary& Preferences() override { return i_preferences; }
    CUserInterface& Ui() override { return i_ui; }
    CGraphicsPorts& Ports() override { return i_ports; }
    bool PlaysOnAnyDevice() const override { return true; }
    bool IsUnpacking(SongID) override { return i_unpackingB; }
    void StopPlayback() override { i_controlP->Stop(); }
    AudioOutputChoice MakeOutput(const std::string& device) override {
        return {std::make_unique<StormOutput>(i_device), device};
    }

    const fs::path i_folder;
    std::mt19937 i_random;
    Device i_device;   // outlives the threads
    CCliHost i_host;
    CCFPrefDictionary i_preferences;
    CUserInterface_Plain i_ui{[](std::string_view) {}};
    CGraphicsPorts i_ports;
    CMetaManager i_metaManager;
    std::unique_ptr<CSongDatabase> i_databaseP;
    std::unique_ptr<CSongFileWork> i_filesP;
    std::unique_ptr<CPlayControl> i_controlP;
    CPlayList* i_listP = nullptr;
    bool i_unpackingB = false, i_endedB = false;
    const CSongPlay* i_lastP = nullptr;
    unsigned i_lastOrder = 0;
    long i_startsL = 0, i_endsL = 0, i_failsL = 0, i_seeksL = 0, i_harmsL = 0;
    double i_orderT = 0, i_turnT = 0;
};

bool MakeFiles(const fs::path& folder) {
    fs::create_directories(folder / "good");
    fs::create_directories(folder / "live");
    const std::string make =
        "cd '" + (folder / "good").string() +
        "' && F='ffmpeg -v error -nostdin -y' && N='-f lavfi -i anoisesrc=c=pink:d=' && V='-f lavfi -i "
        "testsrc=s=320x240:r=25:d=' && "
        "$F ${N}6 -ac 2 -b:a 128k p1.mp3 && $F ${N}20 -ac 2 -b:a 192k p2.mp3 && $F ${N}5 lone.mp3 && $F ${N}4 lone.wav "
        "&& "
        "$F ${N}7 lone.ogg && $F ${V}6 ${N}6 -map 0 -map 1 -c:v libx264 -preset ultrafast -c:a aac movie.mp4 && "
        "$F ${V}4 -c:v mpeg4 silent.mp4 && "
        "head -c 43200 /dev/urandom > p1.cdg && head -c 144000 /dev/urandom > p2.cdg && "
        "head -c 36000 /dev/urandom > naked.cdg && "
        "python3 -c \"import zipfile as z\n"
        "for name, how in (('both.zip', z.ZIP_DEFLATED), ('stored.zip', z.ZIP_STORED)):\n"
        " with z.ZipFile(name, 'w', how) as made: made.write('p1.mp3'); made.write('p1.cdg')\"";
    return std::system(make.c_str()) == 0;
}

}   // namespace

int main(int argc, char** argv) {
    ShareHeaps();   // as the programs do
    const auto number = [&](int n, long otherwise) { return argc > n ? std::atol(argv[n]) : otherwise; };
    const auto seed = static_cast<unsigned>(number(1, 1));
    const int orders = static_cast<int>(number(2, 1000)), rounds = static_cast<int>(number(3, 4));
    std::string pattern = (fs::temp_directory_path() / "bench-playstorm-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr || !MakeFiles(pattern)) {
        std::fprintf(stderr, "bench_playstorm: the songs could not be made\n");
        return 1;
    }
    const fs::path folder = pattern;
    CLog::Get().SetFile(folder / "log.txt");
    CLog::Get().SetLive(true);
    const FastClock clock(static_cast<double>(number(4, 8)));
    Alerts alerts;
    int status = 0;
    std::ptrdiff_t files = 0, threads = 0;
    for (int n = 0; n < rounds; ++n) {
        {
            Storm storm(folder, seed * 1000 + static_cast<unsigned>(n));
            storm.Run(orders);
            if (n % 2 == 0) storm.EndWell();   // else it ends in the middle of it all
            std::printf("seed %u, round %d: %d orders\n", seed, n, orders);
            storm.Print();
            if (!storm.OneSongAtATime()) status = 1;
        }
        const auto filesNow = CountIn("/proc/self/fd"), threadsNow = CountIn("/proc/self/task");
        std::printf("  left: %td files, %td threads; %.1f MB\n", filesNow, threadsNow,
                    static_cast<double>(ResidentKilobytes()) / 1024);
        if (n == 0) files = filesNow, threads = threadsNow;
        if (filesNow > files || threadsNow > threads) status = 1;
    }
    alerts.Print();
    if (alerts.HasAbort()) status = 1;
    std::printf("%s\n", status == 0 ? "as it should be" : "NOT as it should be");
    CLog::Get().SetLive(false);
    if (status == 0) fs::remove_all(folder);
    return status;
}
