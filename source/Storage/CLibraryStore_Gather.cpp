// What a save has to write, and what was written: the revisions of all that stands in files.
#include "Core/CLog.h"
#include "Library/CSinger.h"
#include "Meta/CMetaManager.h"
#include "Storage/CLibraryStore.h"
#include "Storage/LibraryFileName.h"
#include "Storage/LibraryImage.h"

namespace {

/** Lists that have a file: not the library's, which stands in "Library.xml", nor what is made of other things. */
bool HasFile(const CPlayList& list) {
    const SourceType type = list.Type();
    return IsSaveable(type) && type != kSourceDB_LIBRARY && type != kSourceDB_CD && type != kSourceDB_SINGER_PL_FOLDER;
}

template <class Map, class Key>
bool IsCurrent(const Map& revisions, Key key, std::uint32_t revisionL) {
    const auto it = revisions.find(key);
    return it != revisions.end() && it->second == revisionL;
}

}   // namespace

std::shared_ptr<CLibrarySave> CLibraryStore::Gather(SaveForce force) {
    i_database.FlushChanges();   // changes that wait for their turn belong to this save
    auto saveRef = std::make_shared<CLibrarySave>(i_songs, i_places.root);
    CLibrarySave& save = *saveRef;
    save.checkRoot = [this] { return CheckRoot(); };
    save.songsRevisionL = i_database.SongsRevision();
    save.songsB = force == SaveForce::kAll || i_songsRevision != save.songsRevisionL;
    save.damaged = i_damaged;
    GatherLists(save, force);
    GatherSingers(save, force);
    if (save.NeedsNames()) {
        for (const auto& [id, file] : i_files.lists) save.taken.insert(LibraryFileKey(file.GetPath()));
        for (const auto& [id, folder] : i_files.singers) save.taken.insert(LibraryFileKey(folder.GetPath()));
    }
    GatherIndex(save, force);
    save.gone = std::exchange(i_gone, {});
    return saveRef;
}

ListSave CLibraryStore::MakeListSave(const CPlayList& list, const CFileRef& folder) const {
    const auto it = i_files.lists.find(list.ID());
    return {.list = CPlaylistWriter(list),
            .id = list.ID(),
            .name = list.Name().UTF8(),
            .folder = folder,
            .file = it == i_files.lists.end() ? CFileRef() : it->second,
            .revisionL = list.Revision()};
}

void CLibraryStore::GatherLists(CLibrarySave& save, SaveForce force) {
    const CFileRef folder(i_places.root, kStr_PLAYLISTS_FOLDER);
    for (const CPlayList* const listP : i_database.PlayLists()) {
        if (!HasFile(*listP) || i_database.GetSinger(listP->Singer()) != nullptr) continue;
        if (force == SaveForce::kDirty && IsCurrent(i_listRevisions, listP->ID(), listP->Revision())) continue;
        save.lists.push_back(MakeListSave(*listP, folder));
    }
}

CFileRef CLibraryStore::VenueFolder(PlaylistID venue) const {
    if (const auto it = i_files.venues.find(venue); it != i_files.venues.end()) return it->second;
    const CPlayList* const listP = i_database.GetPlayList(venue);
    const std::string name = listP == nullptr ? std::string() : listP->Name().UTF8();
    return CFileRef(CFileRef(i_places.root, kStr_VENUES_FOLDER), LibraryFileName(name));
}

void CLibraryStore::GatherSingers(CLibrarySave& save, SaveForce force) {
    std::map<SingerID, std::vector<const CPlayList*>> listsOf;
    for (const CPlayList* const listP : i_database.PlayLists())
        if (HasFile(*listP) && i_database.GetSinger(listP->Singer()) != nullptr)
            listsOf[listP->Singer()].push_back(listP);
    for (CSinger* const singerP : i_database.Singers()) {
        const SingerID id = singerP->GetSingerID();
        std::vector<const CPlayList*>& lists = listsOf[id];
        if (force == SaveForce::kDirty)
            std::erase_if(lists, [this](const CPlayList* listP) {
                return IsCurrent(i_listRevisions, listP->ID(), listP->Revision());
            });
        const bool recordB = force == SaveForce::kAll || !IsCurrent(i_singerRevisions, id, singerP->Revision());
        if (!recordB && lists.empty()) continue;
        const auto folderIt = i_files.singers.find(id);
        SingerSave& singer = save.singers.emplace_back();
        if (recordB) singer.record = singerP->Record();
        singer.recordB = recordB;
        singer.id = id;
        singer.name = singerP->Name().UTF8();
        singer.venue = VenueFolder(singerP->Venue());
        if (folderIt != i_files.singers.end()) singer.folder = folderIt->second;
        singer.revisionL = singerP->Revision();
        for (const CPlayList* const listP : lists) singer.lists.push_back(MakeListSave(*listP, CFileRef()));
    }
}

void CLibraryStore::GatherIndex(CLibrarySave& save, SaveForce force) {
    LibraryIndex index;
    index.nextID = static_cast<std::uint32_t>(i_database.PeekNextID());
    index.currentVenue = i_database.Facts().currentVenue;
    index.applicationVersion = MetaManager().Software();
    index.searchPaths = i_database.Facts().searchPaths;
    index.otherKeys = i_database.Facts().otherKeys;
    for (const CPlayList* const listP : i_database.PlayLists())
        if (HasFile(*listP)) index.playlists.push_back(CPlaylistWriter::Reference(*listP));
    const std::uint32_t revisionL = i_database.Library().Revision();
    if (force == SaveForce::kDirty && i_libraryRevision == revisionL && i_index == index) return;
    save.index.emplace(IndexSave{std::move(index), CPlaylistWriter(i_database.Library()), revisionL});
}

void CLibraryStore::NoteWritten(const CLibrarySave& save) {
    if (save.SongsWritten()) i_songsRevision = save.songsRevisionL;
    const auto noteList = [this](const ListSave& list) {
        if (!list.writtenB) return;
        i_filesB = true;
        if (i_database.GetPlayList(list.id) == nullptr) return i_gone.push_back(list.file);   // deleted meanwhile
        i_files.lists[list.id] = list.file;
        i_listRevisions[list.id] = list.revisionL;
    };
    for (const ListSave& list : save.lists) noteList(list);
    for (const SingerSave& singer : save.singers) {
        if (!singer.folder.IsEmpty()) {
            i_files.singers[singer.id] = singer.folder;
            if (const CSinger* const singerP = i_database.GetSinger(singer.id); singerP != nullptr)
                i_files.venues.try_emplace(singerP->Venue(), singer.venue);
        }
        if (singer.writtenB) i_singerRevisions[singer.id] = singer.revisionL;
        for (const ListSave& list : singer.lists) noteList(list);
    }
    if (save.index && save.index->writtenB) {
        i_filesB = true;
        i_index = save.index->index;
        i_libraryRevision = save.index->libraryRevisionL;
    }
    i_damaged = save.damaged;
    if (Failed(save.Err())) i_gone.insert(i_gone.end(), save.gone.begin(), save.gone.end());   // another time
}
