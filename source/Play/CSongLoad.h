#pragma once
#include <atomic>
#include <condition_variable>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "Audio/CAS_AudioRing.h"
#include "Core/Ref.h"
#include "Graphics/CSubCodeStream_Memory.h"
#include "Library/CSongFiles.h"
#include "Movies/CAS_QuickTimeVideo.h"
#include "Play/FileStamp.h"
#include "Play/SongPlaySpec.h"
#include "Threads/CS_MainThread_AbortProc.h"

struct CZipMember;

/** What a song turned out to be made of. */
enum class SongKind { kNone, kSoundAndGraphics, kSound, kGraphics, kVideo, kLaunch };

/** What a song is loaded for. */
enum class LoadFor { kPlay, kLater };

/** A song's files, opened: the ring of its sound, filled by a pump from the first block on, and its graphics, which lie
    in memory whole. A song that is to play next is held like this.
    Threads  Load on workers: the second one waits for the first, and takes what it has unless the files are others by
             now, or it broke meanwhile; for later after a play it does nothing. Abort on any; the rest after Load.
    Owner    Ref. Its end, or Abort, ends the pump.
    Errors   fnfErr: there is no file, or not enough of them; else those of files and spools. None is told to the user
             here: whoever plays the song knows its name, and what the show does then. */
class CSongLoad final : public RefCounted {
public:
    explicit CSongLoad(SongPlaySpec spec) : i_spec(std::move(spec)) {}
    ~CSongLoad() override { Abort(); }

    /** `completionP` is told when all of the sound was read, or cannot be; may be null. */
    OSErr Load(std::unique_ptr<CS_MainThread_AbortProc> completionP, LoadFor what = LoadFor::kPlay);
    /** abortErr from now on, for who loads and for who plays. */
    void Abort();

    /** A Load went well, and none is under way. */
    [[nodiscard]] bool IsLoaded() const {
        const std::scoped_lock guard(i_phaseLock);
        return i_phase == Phase::kLoaded;
    }
    /** The file that failed, as far as is known; else the one that its place says. */
    [[nodiscard]] const CFileRef& FailedFile() const noexcept;
    [[nodiscard]] const SongPlaySpec& Spec() const noexcept { return i_spec; }
    [[nodiscard]] SongKind Kind() const noexcept { return i_kind; }
    /** Null for graphics alone. */
    [[nodiscard]] const Ref<CAS_AudioRing>& Audio() const noexcept { return i_ringP; }
    /** Null without. */
    [[nodiscard]] CSubCodeStream_Memory* Graphics() noexcept { return i_graphicsP.get(); }
    /** The picture of kVideo, opened; else null. */
    [[nodiscard]] const Ref<CAS_QuickTimeVideo>& Movie() const noexcept { return i_movieP; }
    /** It should have graphics, and plays without: fnfErr, they are nowhere; eofErr, there are none in their file; else
        why that could not be read. noErr: it has what it should have. */
    OSErr GraphicsErr() const noexcept { return i_graphicsErr; }
    /** The packets of its graphics up to the last that draws; 0 without. */
    [[nodiscard]] long DrawnPackets() const noexcept { return i_drawnL; }
    /** The graphics, or the zip that they are in; empty for a movie, and without. */
    [[nodiscard]] const CFileRef& GraphicsFile() const noexcept { return i_graphicsFile; }
    /** The song's places with what was found elsewhere than they say; null before the first Load. */
    [[nodiscard]] const CSongFiles* Places() const noexcept { return i_places ? &*i_places : nullptr; }
    /** The movie of kVideo, or the file that kLaunch hands on. */
    [[nodiscard]] const CFileRef& MainFile() const noexcept { return i_mainFile; }
    /** What sounds, or the zip that it is in; empty for graphics alone. */
    [[nodiscard]] const CFileRef& SoundFile() const noexcept { return i_soundFile; }
    /** Of it, as it was when it was opened. */
    [[nodiscard]] FileStamp SoundStamp() const { return i_stamps.empty() ? FileStamp() : i_stamps.back().stamp; }

private:
    struct Stamp {
        std::filesystem::path file;
        FileStamp stamp;
        bool operator==(const Stamp&) const = default;
    };
    enum class Phase { kNew, kLoading, kLoaded };

    OSErr LoadNow(std::unique_ptr<CS_MainThread_AbortProc> completionP);
    [[nodiscard]] std::vector<Stamp> Stamps() const;
    [[nodiscard]] bool WereReplaced() const;
    [[nodiscard]] bool HasBroken() const;
    OSErr Choose();
    OSErr ChooseFromZip(const CFileRef& file);
    OSErr ChooseFromFiles();
    OSErr LoadMovie();
    /** A song without them, or with bad ones, plays all the same. abortErr. */
    OSErr LoadGraphics(const CFileRef& file);
    OSErr LoadGraphics(const CFileRef& zip, const CZipMember& member);
    OSErr KeepGraphics(OSErr err);
    OSErr StartSound(std::unique_ptr<CS_MainThread_AbortProc> completionP);
    /** Where the place says, or where it lies by now. Empty for nowhere. */
    [[nodiscard]] CFileRef Find(SDB_SongFile type);

    const SongPlaySpec i_spec;
    std::optional<CSongFiles> i_places;
    SongKind i_kind = SongKind::kNone;
    CFileRef i_mainFile, i_soundFile, i_graphicsFile;
    std::unique_ptr<CSubCodeStream_Memory> i_graphicsP;
    Ref<CSpooler> i_soundP;   // that is pumped into the ring
    Ref<CAS_AudioRing> i_ringP;
    Ref<CAS_QuickTimeVideo> i_movieP;
    std::vector<Stamp> i_stamps;   // of the files, when they were opened
    OSErr i_graphicsErr = noErr;
    long i_drawnL = 0;
    mutable std::mutex i_phaseLock;   // guards i_phase and i_playedB; held for no work
    std::condition_variable i_phaseChanged;
    Phase i_phase = Phase::kNew;
    bool i_playedB = false;   // a play has asked for it: who loads ahead comes too late
    std::atomic<bool> i_abortedB{false};
    CMutexT<Ref<CAS_AudioRing>> i_abortable;   // what Abort ends while Load is under way
    CMutexT<Ref<CAS_QuickTimeVideo>> i_abortableMovie;
};
