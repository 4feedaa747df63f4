#include "Storage/CKeptSongs.h"

#include <algorithm>
#include <array>
#include <ctime>

#include "Core/CLog.h"
#include "Files/FSrFolders.h"
#include "Files/FSrObjects.h"
#include "Storage/CLibraryBackup.h"
#include "Storage/CSongFileReader.h"
#include "Zip/CByteSource_Zip.h"
#include "Zip/CZipArchive.h"

namespace {

constexpr const char* kSongs_Name = "Songs.vlb";
constexpr std::size_t kKept_PieceBytes = std::size_t{256} << 10;

/** To the end of the member, whose checksum must be right. */
OSErr Unpack(const CFileRef& zip, const CZipMember& member, const CFileRef& to) {
    CByteSource_Zip source;
    if (const OSErr err = source.Open(zip, member); Failed(err)) return err;
    CDataFork fork;
    if (const OSErr err = fork.Open(to, FileAccess::kCreateNew); Failed(err)) return err;
    std::vector<std::byte> piece(kKept_PieceBytes);
    for (OSErr read = noErr; read != eofErr;) {
        std::size_t gotL = 0;
        read = source.Read(piece, gotL);
        if (Failed(read) && read != eofErr) return read;
        if (const OSErr err = fork.Write(std::span<const std::byte>(piece).first(gotL)); Failed(err)) return err;
    }
    return fork.Close();
}

/** The number of songs in a file that is whole. */
OSErr CountSongs(const CFileRef& file, std::size_t& countL) {
    CSongFileReader reader;
    if (const OSErr err = reader.Open(file); Failed(err)) return err;
    for (SongRecord record; reader.Next(record);) ++countL;
    return reader.Finish();
}

}   // namespace

OSErr CKeptSongs::Find(const CFileRef& root) {
    std::vector<CFileRef> copies;   // the newest first
    if (const OSErr err = CLibraryBackup(root).List(copies); Failed(err)) return err;
    for (const CFileRef& copy : copies)
        if (!Failed(LogStep(Take(copy), "looking for a whole copy of the library", copy.GetPath()))) return noErr;
    return fnfErr;
}

OSErr CKeptSongs::Take(const CFileRef& copy) {
    CZipArchive archive;
    if (const OSErr err = archive.Open(copy); Failed(err)) return err;
    const auto member = std::ranges::find(archive.Members(), kSongs_Name, &CZipMember::name);
    if (member == archive.Members().end()) return fnfErr;
    auto folderP = std::make_unique<CTempItem>();
    CFileRef temp;
    if (const OSErr err = FSrFindFolder(PlatformFolder::kTemporary, CFileRef(), temp); Failed(err)) return err;
    if (const OSErr err = folderP->Create(FSCreateTemp_FOLDER, temp); Failed(err)) return err;
    const CFileRef songs(folderP->Ref(), kSongs_Name);
    std::size_t countL = 0;
    OSErr err = Unpack(copy, *member, songs);
    if (!Failed(err)) err = CountSongs(songs, countL);
    if (Failed(err)) return err;
    i_copy = copy;
    i_countL = countL;
    i_folderP = std::move(folderP);
    return noErr;
}

std::string CKeptSongs::Date() const {
    FileInfo info;
    if (Failed(FSrCheckFile(i_copy, info))) return i_copy.GetName();
    constexpr std::int64_t kNanoseconds = 1'000'000'000;
    const auto second = static_cast<std::time_t>(info.modifiedL / kNanoseconds);
    std::tm local{};
    ::localtime_r(&second, &local);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M", &local);
    return text.data();
}

OSErr CKeptSongs::ForEach(const std::function<void(const SongRecord& record)>& work) const {
    if (!i_folderP) return fnfErr;
    CSongFileReader reader;
    if (const OSErr err = reader.Open(CFileRef(i_folderP->Ref(), kSongs_Name)); Failed(err)) return err;
    for (SongRecord record; reader.Next(record);) work(record);
    return reader.Finish();
}
