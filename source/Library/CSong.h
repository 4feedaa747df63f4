#pragma once
#include "Library/CSongFiles.h"
#include "Library/LibraryIDs.h"
#include "Library/SongName.h"
#include "Meta/CMeta.h"

class CSongDatabase;

/** All values of a song. A change of one that is not hidden is queued with the database. */
class CSongMeta final : public CMeta {
public:
    CSongMeta(CSongDatabase* databaseP, SongID id);
    ~CSongMeta() override { Retire(); }
    [[nodiscard]] CSongDatabase* Database() const noexcept { return i_databaseP; }

protected:
    void OnChanged(MetaKey key, const CMetaValue& value) override;
    /** "aDur" is the duration as people read it, until somebody types another one. */
    [[nodiscard]] CMetaValue MakeValue(MetaKey key) override;
    [[nodiscard]] bool KeepsMade(MetaKey /*key*/) const override { return false; }
    void CheckSetter(MetaKey key) const override;

private:
    CSongDatabase* const i_databaseP;
    const SongID i_id;
};

/** One song of the library: its id and its metadata.
    Threads  reading its meta on any; all else main.
    Owner    the map of CSongDatabase. */
class CSong {
public:
    /** `id` over 0. A database outlives its songs; without one nobody hears of changes. */
    CSong(CSongDatabase* databaseP, SongID id) : i_id(id), i_meta(databaseP, id) {}
    CSong(const CSong&) = delete;
    CSong& operator=(const CSong&) = delete;

    [[nodiscard]] SongID GetSongID() const noexcept { return i_id; }
    [[nodiscard]] CSongMeta& Meta() noexcept { return i_meta; }
    [[nodiscard]] const CSongMeta& Meta() const noexcept { return i_meta; }
    [[nodiscard]] SuperString Name() const { return SuperString(i_meta.Stored("name"_key).Text()); }
    /** A template with an illegal character gives the plain name. Any thread. */
    [[nodiscard]] SuperString GetSongName(SongNameFormat format, SongNameUse use = SongNameUse::kShown) const;
    /** Its row in the library's list; SDB_kNoItem when it is not there. Main thread. */
    [[nodiscard]] PLItemID LibraryItem() const noexcept { return i_pliP; }
    void SetLibraryItem(PLItemID item) noexcept { i_pliP = item; }

    // ---- Files: what the places say, without a look at the disc (CSongFiles looks). ----
    /** SDB_SongFileStatus_NONE for an empty place. Any thread. */
    [[nodiscard]] SDB_SongFileStatus GetStatus(SDB_SongFile type) const;
    /** Any thread. */
    [[nodiscard]] CFileRef FileRef(SDB_SongFile type) const;
    /** A status of NONE empties the place. A changed sound, graphics or zip makes the library dirty, but for a batch,
        and for the halves of a song that has a zip. */
    void SetFileRef(SDB_SongFile type, SDB_SongFileStatus status, const CFileRef& ref);
    enum class StatusCheck : bool { kSkip, kCheck };
    /** The same with the status that follows from the path. A file on a disc stays there: another place is asserted,
        and refused with paramErr, unless the check is skipped. */
    OSErr SetFile(SDB_SongFile type, const CFileRef& ref, StatusCheck check = StatusCheck::kCheck);
    /** The zip, else the graphics or video, else the sound; SDB_SongFile_NONE for a song without any. */
    [[nodiscard]] SDB_SongFile MainFile() const;
    /** Finds the file of a place on the disc and notes where it was found. Reads the disc: for the main thread only
        where the song is wanted now; a worker asks CSongFiles. */
    OSErr GetFile(SDB_SongFile type, CFileRef& file, CSongFiles::TryCached tryCached = CSongFiles::TryCached::kNo);
    /** "Msng", as a look at the disc found it. No change of the library: the next save has it. */
    void SetMissing(bool missingB);

private:
    const SongID i_id;
    PLItemID i_pliP = SDB_kNoItem;
    CSongMeta i_meta;
};
