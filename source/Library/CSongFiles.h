#pragma once
#include <array>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Library/LibraryIDs.h"
#include "Library/LibrarySettings.h"
#include "Meta/CMetaSongFile.h"

class CSong;
class CSongDatabase;

/** The files of a song as its places stood at one moment, and the looking for them on the disc: where they are said to
    lie, where they lie in a library that was moved, or beside another file of the song. The song may go meanwhile; what
    was found is told to it afterwards (Store).
    Threads  one at a time, a worker wherever the disc may be away; holds no lock. A value. */
class CSongFiles {
public:
    enum class TryCached : bool { kNo, kYes };

    /** Copies the places. Any thread on which the song is held. */
    CSongFiles(const CSong& song, std::shared_ptr<const LibrarySettings> settingsRef);
    /** One file that is in no library. */
    CSongFiles(SDB_SongFile type, const CFileRef& file);
    /** Nothing when there is no such song. Any thread. */
    [[nodiscard]] static std::optional<CSongFiles> Of(const CSongDatabase& database, SongID song);

    [[nodiscard]] SongID Song() const noexcept { return i_song; }
    [[nodiscard]] const std::string& Name() const noexcept { return i_name; }
    [[nodiscard]] const LibrarySettings& Settings() const noexcept { return *i_settingsRef; }
    [[nodiscard]] SDB_SongFileStatus Status(SDB_SongFile type) const { return At(type).status; }
    /** As the place says, whole; not looked for. Empty for none. */
    [[nodiscard]] const CFileRef& Ref(SDB_SongFile type) const { return At(type).ref; }

    /** Finds the file of a place; kYes lets cached graphics stand for the graphics. fnfErr when it is nowhere. */
    OSErr GetFile(SDB_SongFile type, CFileRef& file, TryCached tryCached = TryCached::kNo);
    /** A movie that turned out to have no sound has it beside itself, under its own name. The song's place stays empty:
        the file may be another song. */
    OSErr FindSoundOfSilentMovie(CFileRef& file) const;
    /** The zip is there, or all that the song has of sound and graphics. */
    [[nodiscard]] bool IsReachable();
    /** Puts into the song's places what was found elsewhere than they say; a place that says something else by now is
        left alone. Main thread. */
    void Store(CSong& song) const;
    /** The song was marked as missing. */
    [[nodiscard]] bool WasMissing() const noexcept { return i_wasMissingB; }
    [[nodiscard]] bool FoundElsewhere() const noexcept { return !i_found.empty(); }

private:
    [[nodiscard]] const CMetaSongFile& At(SDB_SongFile type) const {
        return i_files[static_cast<std::size_t>(type) % i_files.size()];
    }
    /** The file of the place itself, moved or not. */
    OSErr GetOwnFile(SDB_SongFile type, CFileRef& file);
    /** A movie in a song without another sound: what lies beside it by its name is none of the song's. */
    [[nodiscard]] bool IsWholeMovie() const;
    OSErr Search(SDB_SongFile type, CFileRef& file);
    void Found(SDB_SongFile type, const CFileRef& file);

    SongID i_song;
    std::string i_name;
    bool i_wasMissingB;
    std::shared_ptr<const LibrarySettings> i_settingsRef;
    std::array<CMetaSongFile, static_cast<std::size_t>(SDB_SongFile_numtypes)> i_files;
    struct FoundFile {
        SDB_SongFile type;
        CFileRef::Path before;   // what its place said, whole
        CFileRef file;
    };
    std::vector<FoundFile> i_found;
};

/** What a player says of a song whose files are nowhere. */
[[nodiscard]] std::string MissingSongText(const std::string& name);
