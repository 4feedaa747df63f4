#include "Storage/SDB_ForEach_LoadLibrary.h"

#include <cerrno>

#include "Core/CLog.h"
#include "Files/FSError.h"
#include "Files/FSrObjects.h"
#include "Storage/LibraryFileName.h"

namespace {

bool IsPropertyList(const std::string& name) { return name.ends_with(".xml"); }

/** What the songs' store and the stores' accounts keep in the root. */
bool IsOthersFile(const std::string& name) {
    return name == "Songs.xml" || name == "Songs Meta.xml" || name == "Music Store Purchases.xml";
}

/** Of what lies in the root, which a user may have other things in. */
bool IsOfLibrary(const std::string& name) {
    return name == kStr_LIBRARY_DOT_XML || name == kStr_PLAYLISTS_FOLDER || name == kStr_VENUES_FOLDER;
}

}   // namespace

OSErr SDB_ForEach_LoadLibrary::ForEachIn(const CFileRef& folder, const Work& work) {
    std::vector<std::string> names;
    if (const OSErr err = FSrList(folder, names); Failed(err)) return err;
    for (const std::string& name : names) {
        if (IsPassedOver(name)) continue;
        const CFileRef ref(folder, name);
        FileInfo info;
        const int errnoL = CFileCalls::Get().Look(ref.GetPath(), true, info);
        if (errnoL == 0) {
            const bool folderB = info.kind == FileKind::kFolder;
            if (folderB || info.kind == FileKind::kFile) work(name, ref, folderB);
            continue;
        }
        const bool goneB = errnoL == ENOENT && CFileCalls::Get().Look(ref.GetPath(), false, info) == ENOENT;
        const bool oursB = folder.GetPath() != i_root.GetPath() || IsOfLibrary(name);
        if (!goneB && oursB) Unread(ref, errnoL == ENOENT ? noPathMappingErr : MapErrno(errnoL));
    }
    return noErr;
}

OSErr SDB_ForEach_LoadLibrary::Run(LibraryImage& image) {
    const auto visit = [&](const std::string& name, const CFileRef& ref, bool folderB) {
        if (folderB && name == kStr_PLAYLISTS_FOLDER) LoadLists(ref, image.lists);
        if (folderB && name == kStr_STORES_FOLDER) image.storesB = true;
        if (folderB && name == kStr_VENUES_FOLDER) {
            const OSErr err = ForEachIn(ref, [&](const std::string&, const CFileRef& venue, bool venueB) {
                if (venueB) LoadVenue(venue, image.venues.emplace_back());
            });
            if (Failed(err)) Unread(ref, err);
        }
        if (!folderB && IsPropertyList(name) && !IsOthersFile(name)) LoadPlaylistFile(ref, image);
    };
    const OSErr err = ForEachIn(i_root, visit);
    image.unread = std::move(i_unread);
    return err;
}

/** The library under its own name; another file of the root only when that is not there, or when it is a list. */
void SDB_ForEach_LoadLibrary::LoadPlaylistFile(const CFileRef& file, LibraryImage& image) {
    if (file.GetName() == kStr_LIBRARY_DOT_XML) {
        LibraryIndex index;
        if (const OSErr err = ReadLibraryIndex(file, index); Failed(err))
            Unread(file, err);
        else
            image.index = std::move(index);
        return;
    }
    PlaylistRecord record;
    if (const OSErr err = ReadPlaylistFile(file, record); Failed(err)) return Unread(file, err);
    if (record.keys.Has("Playlist ID")) {
        image.lists.push_back({file, std::move(record)});
        return;
    }
    bool libraryB = false;
    const OSErr err = FSrFileExists(CFileRef(i_root, kStr_LIBRARY_DOT_XML), libraryB);
    if (Failed(err)) return Unread(CFileRef(i_root, kStr_LIBRARY_DOT_XML), err);
    if (libraryB || (!record.keys.Has("Library") && !record.keys.Has("Vopla Library"))) return;
    LibraryIndex index;
    if (const OSErr read = ReadLibraryIndex(file, index); Failed(read)) return Unread(file, read);
    image.index = std::move(index);
}

void SDB_ForEach_LoadLibrary::LoadLists(const CFileRef& folder, std::vector<PlaylistFile>& lists,
                                        std::string_view singerFile) {
    const OSErr err = ForEachIn(folder, [&](const std::string& name, const CFileRef& file, bool folderB) {
        if (folderB || !IsPropertyList(name) || name == singerFile) return;
        PlaylistFile list{file, {}};
        if (const OSErr read = ReadPlaylistFile(file, list.record); Failed(read)) return Unread(file, read);
        lists.push_back(std::move(list));
    });
    if (Failed(err)) Unread(folder, err);
}

void SDB_ForEach_LoadLibrary::LoadVenue(const CFileRef& folder, VenueFolder& venue) {
    venue.folder = folder;
    const OSErr err = ForEachIn(folder, [&](const std::string& fileName, const CFileRef& ref, bool folderB) {
        if (folderB) return LoadSinger(ref, venue.singers.emplace_back());
        if (!IsPropertyList(fileName)) return;
        if (fileName != kStr_SINGERS_DOT_XML) return LogF("### Error no file of a venue: %s", ref.GetPath().c_str());
        if (const OSErr read = ReadSingersFile(ref, venue.together); Failed(read)) Unread(ref, read);
    });
    if (Failed(err)) Unread(folder, err);
}

void SDB_ForEach_LoadLibrary::LoadSinger(const CFileRef& folder, SingerFolder& singer) {
    singer.folder = folder;
    LoadLists(folder, singer.lists, kStr_SINGER_DOT_XML);
    SingerRecord record;
    const CFileRef file(folder, kStr_SINGER_DOT_XML);
    const OSErr err = ReadSingerFile(file, record);
    if (!Failed(err))
        singer.singer = std::move(record);
    else if (err != fnfErr)
        Unread(file, err);
}

void SDB_ForEach_LoadLibrary::Unread(const CFileRef& file, OSErr err) {
    if (err == fnfErr) return;   // gone since its name was read
    static_cast<void>(LogStep(err, "reading a file of the library", file.GetPath()));
    i_unread.push_back({file, err});
}
