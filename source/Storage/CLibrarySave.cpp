#include "Storage/CLibrarySave.h"

#include "Core/CLog.h"
#include "Files/FSrObjects.h"
#include "Storage/LibraryFileName.h"
#include "Storage/LibraryImage.h"
#include "Storage/PropertyListStream.h"

void CLibrarySave::Note(OSErr err, const CFileRef& file) {
    if (!Failed(err)) return;
    static_cast<void>(LogStep(err, "saving the library", file.GetPath()));
    if (Failed(i_err)) return;
    i_err = err;
    i_failed = file;
}

bool CLibrarySave::NeedsNames() const {
    const auto isNew = [](const ListSave& list) { return list.file.IsEmpty(); };
    return std::ranges::any_of(lists, isNew) || std::ranges::any_of(singers, [&](const SingerSave& singer) {
               return singer.folder.IsEmpty() || std::ranges::any_of(singer.lists, isNew);
           });
}

void CLibrarySave::RunSongs() {
    const CFileRef songs(i_root, "Songs.vlb");
    OSErr err = checkRoot ? checkRoot() : noErr;
    if (!Failed(err)) err = i_songs->Prepare();
    if (!Failed(err) && songsB) {
        err = i_songs->Save();
        i_songsWrittenB = !Failed(err);
    }
    Note(err, songs);
}

void CLibrarySave::RunLists() {
    if (Failed(i_err)) return;
    for (ListSave& list : lists) WriteList(list);
    for (SingerSave& singer : singers) WriteSinger(singer);
    if (index) {
        const CFileRef file(i_root, kStr_LIBRARY_DOT_XML);
        const OSErr err = Write(file, [&] {
            return WriteLibraryIndex(file, index->index, [&](CCFXmlWriter& writer) { index->library.Write(writer); });
        });
        index->writtenB = !Failed(err);
        Note(err, file);
    }
    if (Failed(i_err)) return;   // what is no more goes when all that is stands on the disc
    for (const CFileRef& file : gone)
        if (const OSErr err = FSrDelete(file); err != fnfErr) Note(err, file);
    i_failedToDeleteB = Failed(i_err);
}

OSErr CLibrarySave::Write(const CFileRef& file, const std::function<OSErr()>& write) {
    if (damaged.contains(file.GetPath())) {
        CFileRef aside = file;
        if (const OSErr err = SetAsideDamaged(aside); Failed(err) && err != fnfErr) return err;
        damaged.erase(file.GetPath());
    }
    return write();
}

OSErr CLibrarySave::NewName(const CFileRef& folder, const std::string& title, std::string_view extension,
                            CFileRef& file) {
    const std::string base = LibraryFileName(title);
    for (int number = 1;; ++number) {
        std::string name = base + (number == 1 ? "" : " " + std::to_string(number)) + std::string(extension);
        file = CFileRef(folder, name);
        bool thereB = taken.contains(LibraryFileKey(file.GetPath()));
        if (!thereB)
            if (const OSErr err = FSrObjectExists(file, thereB); Failed(err)) return err;
        if (thereB) continue;
        taken.insert(LibraryFileKey(file.GetPath()));
        return noErr;
    }
}

void CLibrarySave::WriteList(ListSave& list) {
    OSErr err = FSrMakeFolders(list.file.IsEmpty() ? list.folder.GetPath() : list.file.GetPath().parent_path());
    if (!Failed(err) && list.file.IsEmpty()) err = NewName(list.folder, list.name, ".xml", list.file);
    if (!Failed(err))
        err = Write(list.file, [&] {
            return WritePropertyListStream(list.file, [&](CCFXmlWriter& writer) { list.list.Write(writer); });
        });
    list.writtenB = !Failed(err);
    Note(err, list.file.IsEmpty() ? list.folder : list.file);
}

OSErr CLibrarySave::MakeSingerFolder(SingerSave& singer) {
    if (!singer.folder.IsEmpty()) return FSrMakeFolders(singer.folder.GetPath());
    if (const OSErr err = FSrMakeFolders(singer.venue.GetPath()); Failed(err)) return err;
    if (const OSErr err = NewName(singer.venue, singer.name, "", singer.folder); Failed(err)) return err;
    return FSrMakeFolders(singer.folder.GetPath());
}

void CLibrarySave::WriteSinger(SingerSave& singer) {
    LogF("Saving Singer %s\n", singer.name.c_str());
    if (const OSErr err = MakeSingerFolder(singer); Failed(err)) return Note(err, singer.venue);
    for (ListSave& list : singer.lists) {
        list.folder = singer.folder;
        WriteList(list);
    }
    if (!singer.recordB) return;
    const CFileRef file(singer.folder, kStr_SINGER_DOT_XML);
    const OSErr err = Write(file, [&] { return WriteSingerFile(file, singer.record); });
    singer.writtenB = !Failed(err);
    Note(err, file);
}
