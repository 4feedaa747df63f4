#include "SongFiles/SongFolders.h"

#include "Core/CLog.h"
#include "Files/FSrObjects.h"
#include "Library/FileSystemName.h"

namespace {

/** The folder of one step, "artist" or "album". */
OSErr FindOrCreate(const CFileRef& parent, std::string_view name, const std::string& step, CFileRef& folder) {
    const CFileRef wanted(parent, FileSystemName(name));
    bool existsB = false, folderB = false;
    OSErr err = FSrObjectExists(wanted, existsB);
    if (!Failed(err) && existsB) err = FSrFolderExists(wanted, folderB);
    if (!Failed(err) && existsB && !folderB) err = dupFNErr;   // a file has its name
    if (Failed(err)) return LogStep(err, "finding existing " + step + " folder");
    if (existsB) {
        folder = wanted;
        return noErr;
    }
    return LogStep(FSrFindOrCreateFolder(parent, FileSystemName(name), folder), "creating " + step + " folder");
}

}   // namespace

CFileRef::Path DefaultMusicFolder(const CFileRef::Path& root) {
    constexpr const char* kMusic_Name = "Vopla Music";
    const auto isFolder = [](const CFileRef::Path& path) {
        bool thereB = false;
        return !Failed(FSrFolderExists(CFileRef(path), thereB)) && thereB;
    };
    const CFileRef::Path inside = root / kMusic_Name, beside = root.parent_path() / kMusic_Name;
    return !isFolder(inside) && isFolder(beside) ? beside : inside;
}

OSErr GetSongRoot(const LibrarySettings& settings, SongRoot root, CFileRef& folder) {
    const auto make = [&](const LibrarySettings::Path& path, const char* stepZ) {
        const OSErr err = path.empty() ? fnfErr : FSrMakeFolders(path);
        if (!Failed(err)) folder = CFileRef(path);
        return LogStep(err, stepZ);
    };
    switch (root) {
        case SongRoot::kCache:
            return make(settings.cacheFolder, "getting song cache folder");
        case SongRoot::kPocket:
            return make(settings.musicFolder.empty() ? LibrarySettings::Path()
                                                     : settings.musicFolder.parent_path() / "Vopla Song Pocket",
                        "getting song pocket folder");
        default:
            return make(settings.musicFolder, "getting music folder");
    }
}

OSErr GetFolderForSong(const LibrarySettings& settings, SongRoot root, std::string_view artist, std::string_view album,
                       CFileRef& folder) {
    CFileRef top, artists;
    if (const OSErr err = GetSongRoot(settings, root, top); Failed(err)) return err;
    const OSErr err = FindOrCreate(top, artist.empty() ? "Unknown Artist" : artist, "artist", artists);
    if (Failed(err)) return err;
    if (album.empty()) {
        folder = artists;
        return noErr;
    }
    return FindOrCreate(artists, album, "album", folder);
}
