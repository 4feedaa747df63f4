#include "Storage/CLostSongs.h"

#include <array>

#include "Library/CSongDatabase.h"
#include "SongFiles/FileTitle.h"
#include "Storage/CSongStore.h"

namespace {

constexpr SongText kPaths[] = {SongText::kAudioPath, SongText::kVideoPath, SongText::kZipPath};

/** Without what people write in different ways. */
std::string Folded(std::string_view text) { return SuperString(text).Lowercased().UTF8(); }

std::string FileName(std::string_view path) { return Folded(path.substr(path.find_last_of("/\\") + 1)); }

std::string TitleKey(std::string_view title, std::string_view artist) { return Folded(title) + '\n' + Folded(artist); }

}   // namespace

CLostSongs::CLostSongs(const CSongDatabase& database, std::shared_ptr<CSongStore> storeRef, const CKeptSongs& kept)
    : i_storeRef(std::move(storeRef)) {
    const auto settingsRef = database.Settings();
    (void)kept.ForEach([&](const SongRecord& record) {   // a copy that breaks now: those before it
        if (database.WithSong(SongID{static_cast<std::int32_t>(record.songID)}, [](CSong&) {})) return;
        std::string bytes;
        if (Failed(record.Encode(bytes))) return;
        const std::size_t at = i_records.size();
        i_records.push_back(std::move(bytes));
        for (const SongText which : kPaths) {
            const std::string_view path = record.Text(which);
            if (path.empty()) continue;
            i_byPath.emplace(settingsRef->Whole(path).lexically_normal().native(), at);
            i_byFileName.emplace(FileName(path), at);
        }
        i_byTitle.emplace(TitleKey(record.Text(SongText::kName), record.Text(SongText::kArtist)), at);
    });
}

/** The only song of the key that is still lost. */
const std::string* CLostSongs::TakeOnly(const Index& index, const std::string& key) {
    const std::string* foundP = nullptr;
    const auto range = index.equal_range(key);
    for (auto it = range.first; it != range.second; ++it) {
        const std::string* const recordP = &i_records[it->second];
        if (recordP->empty() || recordP == foundP) continue;
        if (foundP != nullptr) return nullptr;
        foundP = recordP;
    }
    return foundP;
}

const std::string* CLostSongs::Take(const SongFileSet& set) {
    const std::array<const CFileRef*, 3> files = {&set.zip, &set.audio, &set.video};
    for (const CFileRef* const fileP : files)
        if (const std::string* const recordP = TakeOnly(i_byPath, fileP->GetPath().lexically_normal().native()))
            return recordP;
    for (const CFileRef* const fileP : files)
        if (const std::string* const recordP = TakeOnly(i_byFileName, FileName(fileP->GetPath().native())))
            return recordP;
    const FileTitle title = FileTitle::Of(set.base);
    return TakeOnly(i_byTitle, TitleKey(title.title, title.artist));
}

CSong* CLostSongs::Make(const SongFileSet& set) {
    const std::string* const bytesP = Take(set);
    if (bytesP == nullptr) return nullptr;
    std::string bytes;   // the record's texts lie in it
    bytes.swap(i_records[static_cast<std::size_t>(bytesP - i_records.data())]);
    const auto all = std::as_bytes(std::span<const char>(bytes));
    SongRecord record;
    (void)record.Decode(all.first<SongRecord::kBytes>(), all.subspan(SongRecord::kBytes), SongFileOrder::kBig);
    CSong* const songP = i_storeRef->MakeLost(record);
    if (songP == nullptr) return nullptr;
    for (const auto& [type, fileP] :
         {std::pair{SDB_SongFile_AUDIO, &set.audio}, {SDB_SongFile_VIDEO, &set.video}, {SDB_SongFile_ZIP, &set.zip}})
        if (!fileP->IsEmpty()) (void)songP->SetFile(type, *fileP);
    return songP;
}
