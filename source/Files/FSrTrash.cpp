#include "Files/FSrTrash.h"

#include <unistd.h>
#include <cerrno>
#include <cmath>
#include <ctime>

#include "Core/CLog.h"
#include "Files/CDataFork.h"
#include "Files/FSError.h"
#include "Files/FSrObjects.h"
#include "Platform/CClock.h"
#include "Platform/CFolders.h"

namespace {

using Path = CFileRef::Path;

/** A path as a card holds it: escaped as in an URL, "/" kept. */
std::string Escaped(const Path& path) {
    constexpr std::string_view kPlain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_.~/";
    constexpr std::string_view kHex = "0123456789ABCDEF";
    std::string out;
    for (const char c : path.native()) {
        const auto byte = static_cast<unsigned char>(c);
        if (kPlain.find(c) != std::string_view::npos) {
            out += c;
        } else {
            out += '%';
            out += kHex[byte >> 4U];
            out += kHex[byte & 15U];
        }
    }
    return out;
}

std::string Now() {
    const auto now = static_cast<std::time_t>(std::floor(CClock::Get().AbsoluteT() + kEpoch2001T));
    std::tm local{};
    ::localtime_r(&now, &local);
    char text[32] = "";
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &local);
    return text;
}

/** The top folder of the volume that holds `path`: the last one upwards with the same number. */
OSErr TopOf(const Path& path, Path& top) {
    std::uint64_t volume = 0;
    if (const OSErr err = FSrVolume(path, volume); Failed(err)) return err;
    top = path;
    while (top != top.parent_path()) {
        std::uint64_t above = 0;
        if (const OSErr err = FSrVolume(top.parent_path(), above); Failed(err)) return err;
        if (above != volume) break;
        top = top.parent_path();
    }
    return noErr;
}

/** A trash folder must be a real folder of this user: through a link another could have us write anywhere. */
OSErr MakeTrash(const Path& trash) {
    FileInfo info;
    if (const OSErr err = FSrMakeFolders(trash, 0700); Failed(err)) return err;
    if (const int err = CFileCalls::Get().Look(trash, false, info); err != 0) return FSError(err, "stat", trash);
    if (info.kind != FileKind::kFolder || info.owner != ::geteuid()) return FSError(EACCES, "mkdir", trash);
    if (const OSErr err = FSrMakeFolders(trash / "files", 0700); Failed(err)) return err;
    return FSrMakeFolders(trash / "info", 0700);
}

OSErr TopTrash(const Path& top, Path& trash) {
    const std::string user = std::to_string(::geteuid());
    FileInfo info;
    const bool sharedB = CFileCalls::Get().Look(top / ".Trash", false, info) == 0 && info.kind == FileKind::kFolder &&
                         (info.mode & 01000U) != 0;
    if (sharedB) {
        trash = top / ".Trash" / user;
        if (const OSErr err = MakeTrash(trash); !Failed(err)) return err;
    }
    trash = top / (".Trash-" + user);
    return MakeTrash(trash);
}

/** Where the trash of a file is, and against what its card counts the path. */
struct TrashPlace {
    Path trash, top;   // top empty: the card holds the whole path
};

OSErr FindPlace(const Path& file, TrashPlace& place) {
    std::uint64_t volume = 0, home = 0;
    const Path homeTrash = CFolders::HomeTrash();
    if (const OSErr err = FSrVolume(file.parent_path(), volume); Failed(err)) return err;
    if (!Failed(FSrVolume(homeTrash, home)) && home == volume && !Failed(MakeTrash(homeTrash))) {
        place.trash = homeTrash;
        return noErr;
    }
    if (const OSErr err = TopOf(file.parent_path(), place.top); Failed(err)) return err;
    return TopTrash(place.top, place.trash);
}

std::string CardText(const Path& file, const Path& top) {
    return "[Trash Info]\nPath=" + Escaped(top.empty() ? file : file.lexically_relative(top)) +
           "\nDeletionDate=" + Now() + "\n";
}

OSErr WriteCard(CDataFork& fork, const std::string& text) {
    if (const OSErr err = fork.Write(std::as_bytes(std::span{text})); Failed(err)) return err;
    return fork.Close();
}

/** Makes the name unique in the trash and takes it: who creates the card has the name. */
OSErr ClaimName(const TrashPlace& place, const Path& file, std::string& name, CFileRef& card) {
    constexpr int kTries = 100;   // each lost one to another program that threw away at the same time
    const std::string wanted = file.filename().string();
    const CFileRef files(place.trash / "files"), info(place.trash / "info");
    std::string stem = wanted;
    for (int tries = 0; tries < kTries; ++tries) {
        if (const OSErr err = FSrMakeUniqueName(files, stem, name); Failed(err))
            return LogStep(err, "making name unique for trashing", file);
        CFileRef made(info, name + ".trashinfo");
        CDataFork fork;
        const OSErr err = fork.Open(made, FileAccess::kCreateNew);
        if (err == dupFNErr) {   // a card without its file: that name is left alone
            stem = std::to_string(tries + 2) + " " + wanted;
            continue;
        }
        if (Failed(LogStep(err, "making name unique for trashing (2)", file))) return err;
        card = made;
        return LogStep(WriteCard(fork, CardText(file, place.top)), "making name unique for trashing (2)", file);
    }
    return LogStep(dupFNErr, "making name unique for trashing", file);
}

}   // namespace

OSErr FSrFindTrash(const CFileRef& file, CFileRef& trash) {
    TrashPlace place;
    if (const OSErr err = FindPlace(file.GetPath(), place); Failed(err)) return err;
    trash.SetPath(place.trash);
    return noErr;
}

OSErr FSrMoveToTrash(const CFileRef& file, TrashedFile* trashedP) {
    std::uint64_t volume = 0;
    FileInfo info;
    Path path, parent;
    OSErr err = FSrCheckName(file.GetName());
    if (Failed(LogStep(err, "getting file name for trashing", file.GetPath()))) return err;
    const Path given = file.GetPath();
    if (const int looked = CFileCalls::Get().Look(given, false, info); looked != 0)
        return LogStep(FSError(looked, "stat", given), "getting vRefNum for trashing", given);
    if (err = LogStep(FSrVolume(given.parent_path(), volume), "getting vRefNum for trashing", given); Failed(err))
        return err;
    // The card needs the whole path; the last name stays, so that a link goes and not what it points to.
    const Path folder = given.has_parent_path() ? given.parent_path() : Path{"."};
    err = FSError(CFileCalls::Get().RealPath(folder, parent), "realpath", folder);
    if (Failed(LogStep(err, "getting parent folder for trashing", given))) return err;
    path = parent / given.filename();
    TrashPlace place;
    if (err = LogStep(FindPlace(path, place), "finding trash folder", path); Failed(err)) return err;
    std::string name;
    CFileRef card;
    if (err = ClaimName(place, path, name, card); !Failed(err)) {
        const Path to = place.trash / "files" / name;
        err = LogStep(FSError(CFileCalls::Get().RenameNew(path, to), "rename", path),
                      name == path.filename() ? "moving file to trash" : "renaming for trashing", path);
        if (!Failed(err)) {
            if (trashedP != nullptr) *trashedP = {CFileRef(to), card};
            return noErr;
        }
    }
    if (!card.IsEmpty() && CFileCalls::Get().Unlink(card.GetPath()) != 0)
        LogF("### Error removing the card of a trashing: <%s>", card.GetPath().c_str());
    return err;
}

OSErr FSrDeleteTrashed(const TrashedFile& trashed) {
    if (const OSErr err = FSrDelete(trashed.file); Failed(err)) return err;
    return FSrDelete(
        trashed.card);   // last: a card without a file harms nobody, a file without a card cannot be restored
}

OSErr FSrRestoreTrashed(const TrashedFile& trashed, const CFileRef& place) {
    const int err = CFileCalls::Get().RenameNew(trashed.file.GetPath(), place.GetPath());
    if (err != 0) return FSError(err, "rename", place.GetPath());
    return FSrDelete(trashed.card);
}
