#include "Cli/CliLibrary.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <optional>

#include "Cli/CCliLibrary.h"
#include "Cli/CliSong.h"
#include "Core/FSrObjects.h"
#include "Core/FaultText.h"
#include "Core/JSONWriter.h"
#include "Core/WaitMode.h"
#include "Library/AddFilesToLibrary.h"
#include "Library/CLibraryBackup.h"
#include "Library/CLibraryCheck.h"

namespace {

constexpr std::string_view kLibrary_Usage =
    "usage: library list | library show ID | library set ID KEY VALUE | library check [--no-files] | library rebuild | "
    "library restore [COPY]";

using Words = std::span<const std::string>;

int CannotLoad(const CliContext& context, const CCliLibrary& library, OSErr err) {
    const std::filesystem::path& root = library.Places().root.GetPath();
    if (err == fnfErr) return CliFail(context, err, "no library in " + root.string());
    return CliFail(context, err, root.string() + ": the library cannot be read: " + FaultWords(err, FaultOf::kFolder));
}

int InUse(const CliContext& context, OSErr err) {
    return CliFail(context, err, "the library is in use: quit the program that has it, then try again");
}

std::optional<SongID> ReadSongID(const std::string& word) {
    std::int32_t id = 0;
    const auto result = std::from_chars(word.data(), word.data() + word.size(), id);
    if (result.ec != std::errc() || result.ptr != word.data() + word.size() || id <= 0) return std::nullopt;
    return SongID{id};
}

CSong* FindSong(CCliLibrary& library, const std::string& word) {
    const auto id = ReadSongID(word);
    return id ? library.Database().GetSong(*id) : nullptr;
}

void Print(const CliContext& context, CSong& song) {
    if (context.jsonB)
        context.out << SongJSON(song) << "\n";
    else
        context.out << SongWords(song);
}

int List(const CliContext& context, Words) {
    CCliLibrary library(context);
    if (const OSErr err = library.Load(); Failed(err)) return CannotLoad(context, library, err);
    std::vector<SongID> ids = library.Database().Songs()->Ids();
    std::ranges::sort(ids);
    for (const SongID id : ids) {
        CSong& song = *library.Database().GetSong(id);
        context.out << (context.jsonB ? SongJSON(song) : SongLine(song)) << "\n";
    }
    return 0;
}

int Show(const CliContext& context, Words words) {
    CCliLibrary library(context);
    if (const OSErr err = library.Load(); Failed(err)) return CannotLoad(context, library, err);
    CSong* const songP = FindSong(library, words[0]);
    if (songP == nullptr) return CliFail(context, fnfErr, "no song " + words[0]);
    Print(context, *songP);
    return 0;
}

int Set(const CliContext& context, Words words) {
    CCliLibrary library(context);
    if (const OSErr err = library.IsThere(); Failed(err)) return CannotLoad(context, library, err);
    if (const OSErr err = library.Take(); Failed(err)) return InUse(context, err);
    if (const OSErr err = library.Load(); Failed(err)) return CannotLoad(context, library, err);
    CSong* const songP = FindSong(library, words[0]);
    if (songP == nullptr) return CliFail(context, fnfErr, "no song " + words[0]);
    std::string fault;
    if (const OSErr err = SetSongValue(*songP, library.Places(), words[1], words[2], fault); Failed(err))
        return CliFail(context, err, fault);
    if (const OSErr err = library.Save(); Failed(err)) return CliFailStep(context, err, "saving the library");
    Print(context, *songP);
    return 0;
}

int Check(const CliContext& context, Words words) {
    const LibraryPlaces places = CliLibraryPlaces(context);
    const auto files = words.empty() ? CLibraryCheck::SongFiles::kLookFor : CLibraryCheck::SongFiles::kLeaveOut;
    const LibraryFindings found = CLibraryCheck(places, files).Run();
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

/** What can be read stays, ids and lists too; songs of the folders that it lacks come to it. */
int Rebuild(const CliContext& context, Words) {
    CCliLibrary library(context);
    const CFileRef& root = library.Places().root;
    if (const OSErr err = FSrMakeFolders(root.GetPath()); Failed(err)) return CannotLoad(context, library, err);
    if (const OSErr err = library.Take(); Failed(err)) return InUse(context, err);
    if (const OSErr err = library.Load(); Failed(err) && !library.IsEmpty()) return CannotLoad(context, library, err);
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
    static_cast<void>(AddFilesToLibrary(database, folders, &refused));
    const std::size_t songsL = database.Songs()->Count();
    database.Lengths().FindAll();
    while (database.Lengths().IsBusy()) WaitOneTurn();
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

int Restore(const CliContext& context, Words words) {
    const LibraryPlaces places = CliLibraryPlaces(context);
    CLibraryBackup backup(places.root);
    std::vector<CFileRef> copies;
    if (const OSErr err = backup.List(copies); Failed(err)) return CliFailStep(context, err, "reading the kept copies");
    if (words.empty()) return PrintCopies(context, copies), 0;
    const auto it = std::ranges::find(copies, words[0], &CFileRef::GetName);
    if (it == copies.end()) return CliFail(context, fnfErr, "no copy " + words[0]);
    CLibraryLock lock;
    if (const OSErr err = lock.Take(places.root); Failed(err)) return InUse(context, err);
    if (const OSErr err = backup.Restore(*it); Failed(err))
        return CliFailStep(context, err, "restoring " + words[0] + "; the library is as it was");
    if (context.jsonB)
        context.out << "{\"restored\":" << JSONString(words[0]) << "}\n";
    else
        context.out << "restored " << words[0] << "\n";
    return 0;
}

struct SubRow {
    std::string_view name;
    std::size_t least, most;   // words behind the name
    std::string_view option;   // the only one that it takes
    int (*run)(const CliContext&, Words);
};
constexpr SubRow kSubs[] = {
    {"list", 0, 0, "", &List},       {"show", 1, 1, "", &Show},
    {"set", 3, 3, "", &Set},         {"check", 0, 1, "--no-files", &Check},
    {"rebuild", 0, 0, "", &Rebuild}, {"restore", 0, 1, "", &Restore},
};

}   // namespace

int RunLibrary(const CliContext& context, std::span<const std::string> given) {
    if (given.empty()) return CliUsage(context, kLibrary_Usage);
    const auto row = std::ranges::find(kSubs, given.front(), &SubRow::name);
    if (row == std::end(kSubs)) return CliUsage(context, kLibrary_Usage);
    std::vector<std::string> words;
    bool freeB = false;   // behind "--" a word may begin with "-"
    for (const std::string& word : given.subspan(1)) {
        if (!freeB && word == "--") {
            freeB = true;
            continue;
        }
        const bool optionB = !freeB && word.starts_with("-") && word != "-";
        if (optionB && (row->option.empty() || word != row->option)) return CliUsage(context, kLibrary_Usage);
        if (!optionB && !row->option.empty()) return CliUsage(context, kLibrary_Usage);
        words.push_back(word);
    }
    if (words.size() < row->least || words.size() > row->most) return CliUsage(context, kLibrary_Usage);
    return row->run(context, words);
}
