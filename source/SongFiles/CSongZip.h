#pragma once
#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Files/CTempItem.h"
#include "Library/CRowValues.h"
#include "Library/CSongFiles.h"
#include "SongFiles/CBusySongs.h"
#include "SongFiles/CSong_ZipCompletion.h"
#include "SongFiles/CSongFileKeeper.h"
#include "SongFiles/VerifyFiles.h"
#include "Threads/CHandle.h"
#include "Threads/CThreadHost.h"
#include "Zip/CZipWriter.h"

/** What those who work on files of songs share with the database. */
struct SongFileWorld {
    CHandle<CSongDatabase> databaseRef;
    std::shared_ptr<CMutex_SongMap> songsRef;
    std::shared_ptr<const LibrarySettings> settingsRef;
    std::shared_ptr<CBusySongs> busyRef;
    std::shared_ptr<CSongFileKeeper> keeperRef;
};
/** A zip that the song has already is put in its place, or refused. */
enum class OldZip : bool { kRefuse, kReplace };

/** Packs the sound and the graphics of one song into a zip, which then takes their place. Until the zip was read back
    and lies where it belongs the originals are not touched; whatever fails, or is aborted, leaves them and removes the
    temporary folder. A referenced original stays on its disc. A movie is whole by itself and is not packed, nor is a file
    that another song names (alreadyReportedErr).
    Threads  Run on a worker; Abort any.
    Owner    CSongZipper. */
class CSongZip {
public:
    CSongZip(SongFileWorld world, SongID song, OldZip oldZip);
    OSErr Run();
    void Abort() noexcept;

private:
    OSErr Prepare();
    OSErr Pack();
    /** The zip takes the place of the old one, or goes to the music folder. */
    OSErr PlaceZip();
    void UndoPlace();
    /** The originals, now that the zip has their place. */
    void PutAway();
    OSErr Tell(std::vector<CSong_ZipCompletion::Place> places = {});
    [[nodiscard]] std::string BaseName() const;

    const SongFileWorld i_world;
    const SongID i_song;
    const OldZip i_oldZip;
    std::atomic<bool> i_abortB{false};
    CZipWriter i_writer;
    std::optional<CSongFiles> i_files;
    std::vector<PackedFile> i_packed;
    CTempItem i_enclosure;
    CFileRef i_zip;          // in the enclosure, then in its place
    CFileRef i_oldZipFile;   // empty: there is none
    std::string i_base;
    std::string i_artist, i_album;
    bool i_exchangedB = false;   // with the old zip, which lies in the enclosure now
    std::unique_ptr<CTaskView> i_viewP;
};
