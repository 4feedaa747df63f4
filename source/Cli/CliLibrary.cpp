#include "Cli/CliLibrary.h"

#include <algorithm>

#include "Cli/CCliLibrary.h"
#include "Cli/CliCommand.h"
#include "Cli/CliSong.h"
#include "Core/FaultText.h"
#include "Files/FSrObjects.h"
#include "SongFiles/AddFilesToLibrary.h"
#include "SongFiles/MakeSongOfFiles.h"
#include "Storage/CLibraryBackup.h"
#include "Storage/CLibraryCheck.h"
#include "Threads/WaitMode.h"
#include "Values/JSONWriter.h"

namespace {

CSong* FindSong(CCliLibrary& library, const std::string& word) {
    const auto id = ReadNumber<std::int32_t>(word);
    return id && *id > 0 ? library.Database().GetSong(SongID{*id}) : nullptr;
}

void Print(const CliContext& context, CSong& song) {
    if (context.jsonB)
        context.out << SongJSON(song) << "\n";
    else
        context.out << SongWords(song);
}

void PrintCopies(const CliContext& context, const std::vector<CFileRef>& copies) {
    for (const CFileRef& copy : copies) {
        FileInfo info;
        if (CFileCalls::Get().Look(copy.GetPath(), true, info) != 0) continue;
        if (context.jsonB)
            context.out << "{\"copy\":" << JSONString(copy.GetName()) << ",\"bytes\":" << info.bytesL << "}\n";
        else
            context.out << copy.GetName() << "\t" << info.bytesL << " bytes\n";
    }
    if (copies.empty() && !context.jsonB) context.out << "no copies yet\n";
}

}   // namespace

int ListSongs(const CliCall& call) {
    CSongDatabase& database = call.libraryP->Database();
    std::vector<SongID> ids = database.Songs()->Ids();
    std::ranges::sort(ids);
    call.libraryP->MarkMissing(ids);
    for (const SongID id : ids) {
        CSong& song = *database.GetSong(id);
        call.context.out << (call.context.jsonB ? SongJSON(song) : SongLine(song)) << "\n";
    }
    return call.libraryP->TellUnread();
}

int ShowSong(const CliCall& call) {
    const std::string& word = call.words.arguments[0];
    CSong* const songP = FindSong(*call.libraryP, word);
    if (songP == nullptr) return CliFail(call.context, fnfErr, "no song " + word);
    const SongID id = songP->GetSongID();
    call.libraryP->MarkMissing(std::span(&id, 1));
    Print(call.context, *songP);
    return 0;
}

int SetSong(const CliCall& call) {
    const std::vector<std::string>& words = call.words.arguments;
    CSong* const songP = FindSong(*call.libraryP, words[0]);
    if (songP == nullptr) return CliFail(call.context, fnfErr, "no song " + words[0]);
    std::string fault;
    if (const OSErr err = SetSongValue(*songP, call.libraryP->Places(), words[1], words[2], fault); Failed(err))
        return CliFail(call.context, err, fault);
    const SongID id = songP->GetSongID();
    call.libraryP->MarkMissing(std::span(&id, 1));
    if (const OSErr err = call.libraryP->Save(); Failed(err))
        return CliFailStep(call.context, err, "saving the library");
    Print(call.context, *songP);
    return 0;
}

int CheckLibrary(const CliCall& call) {
    const CliContext& context = call.context;
    const LibraryPlaces places = CliLibraryPlaces(context);
    if (!HoldsLibrary(places.root.GetPath()))
        return CliFail(context, fnfErr, "no library in " + places.root.GetPath().string());
    using enum CLibraryCheck::SongFiles;
    const LibraryFindings found = CLibraryCheck(places, call.words.Has("--no-files") ? kLeaveOut : kLookFor).Run();
    if (Failed(found.err))
        return CliFail(context, found.err, FaultText(found.err, FaultOf::kFolder, places.root.GetPath().string()));
    if (context.jsonB) {
        context.out << "{\"songs\":" << found.songsL << ",\"playlists\":" << found.playlistsL
                    << ",\"singers\":" << found.singersL << ",\"problems\":[";
        for (std::size_t n = 0; n < found.problems.size(); ++n)
            context.out << (n == 0 ? "" : ",") << JSONString(found.problems[n]);
        context.out << "]}\n";
    } else {
        for (const std::string& problem : found.problems) context.out << problem << "\n";
        context.out << found.songsL << " songs, " << found.playlistsL << " lists, " << found.singersL << " singers, "
                    << found.problems.size() << " problems\n";
    }
    return 0;
}

int RebuildLibrary(const CliCall& call) {
    const CliContext& context = call.context;
    CCliLibrary library(context);
    if (const int status = library.TakeToMend(); status != 0) return status;
    CSongDatabase& database = library.Database();
    std::vector<std::filesystem::path> folders{library.Places().musicFolder};
    for (const SuperString& folder : database.Facts().searchPaths) folders.emplace_back(folder.UTF8());
    std::erase_if(folders, [](const auto& folder) {
        std::error_code problem;
        return !std::filesystem::is_directory(folder, problem);
    });
    // Without a library the load itself has looked through the folders.
    const std::size_t beforeL = library.IsEmpty() ? 0 : database.Songs()->Count();
    std::vector<RefusedFile> refused;
    static_cast<void>(AddFilesToLibrary(database, folders, &refused, [&database](const SongFileSet& set) {
        return MakeSongOfFiles(database, set, DateAdded::kFile);   // they were there already
    }));
    const std::size_t songsL = database.Songs()->Count();
    library.Files().Lengths().FindAll();
    while (library.Files().Lengths().IsBusy()) WaitOneTurn();
    if (const OSErr err = library.Save(SaveForce::kAll); Failed(err))
        return CliFailStep(context, err, "saving the library");
    if (context.jsonB)
        context.out << "{\"songs\":" << songsL << ",\"new\":" << songsL - beforeL << ",\"refused\":" << refused.size()
                    << "}\n";
    else
        context.out << songsL << " songs, " << songsL - beforeL << " of them new; " << refused.size()
                    << " files were refused\n";
    return 0;
}

int RestoreLibrary(const CliCall& call) {
    const CliContext& context = call.context;
    const std::vector<std::string>& words = call.words.arguments;
    const LibraryPlaces places = CliLibraryPlaces(context);
    bool thereB = false;
    if (Failed(FSrObjectExists(places.root, thereB)) || !thereB)
        return CliFail(context, fnfErr, "no library in " + places.root.GetPath().string());
    CLibraryBackup backup(places.root);
    std::vector<CFileRef> copies;
    if (const OSErr err = backup.List(copies); Failed(err)) return CliFailStep(context, err, "reading the kept copies");
    if (words.empty()) return PrintCopies(context, copies), 0;
    const auto it = std::ranges::find(copies, words[0], &CFileRef::GetName);
    if (it == copies.end()) return CliFail(context, fnfErr, "no copy " + words[0]);
    CLibraryLock lock;
    if (const OSErr err = lock.Take(places.root); Failed(err)) return CliInUse(context, err);
    if (const OSErr err = backup.Restore(*it); Failed(err))
        return CliFailStep(context, err, "restoring " + words[0] + "; the library is as it was");
    if (context.jsonB)
        context.out << "{\"restored\":" << JSONString(words[0]) << "}\n";
    else
        context.out << "restored " << words[0] << "\n";
    return 0;
}
