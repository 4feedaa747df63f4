#include "Library/CSongFileSearch.h"

#include <algorithm>
#include <vector>

#include "Core/CLog.h"
#include "Core/SuperString.h"
#include "Files/FSrObjects.h"
#include "Library/SongFileTypes.h"
#include "Library/WindowsPath.h"
#include "Platform/CMountTable.h"

namespace {

bool IsThere(const CFileRef& file) {
    bool thereB = false;
    return !Failed(FSrFileExists(file, thereB)) && thereB;
}

/** `folder`/`base``extension`, in small letters or in capitals. */
bool Try(const CFileRef& folder, const std::string& base, std::string_view extension, CFileRef& found) {
    const std::string name = base + std::string(extension);
    if (Failed(FSrCheckName(name))) return false;   // too long for any file
    for (const std::string& spelt : {name, base + SuperString(extension).Uppercased().UTF8()}) {
        CFileRef file(folder, spelt);
        if (!IsThere(file)) continue;
        found = std::move(file);
        return true;
    }
    return false;
}

/** `text` with the last `from` replaced; empty when it does not end so. */
std::string WithEnd(const std::string& text, std::string_view from, std::string_view to) {
    if (!text.ends_with(from)) return {};
    return text.substr(0, text.size() - from.size()).append(to);
}

bool SameFile(const CFileRef& one, const CFileRef& other) {
    FileInfo a, b;
    if (CFileCalls::Get().Look(one.GetPath(), true, a) != 0 || CFileCalls::Get().Look(other.GetPath(), true, b) != 0)
        return one.GetPath() == other.GetPath();
    return a.inodeL == b.inodeL && a.deviceL == b.deviceL;
}

}   // namespace

OSErr CSongFileSearch::Find(const CFileRef& first, SDB_SongFile wanted, std::string_view secondName,
                            CFileRef& found) const {
    const CFileRef::Path& path = first.GetPath();
    if (!path.has_parent_path()) return LogStep(fnfErr, "relfile: getting parent", path);
    const std::string base = path.stem().string();
    if (base.empty()) return LogStep(fnfErr, "relfile: getting name", path);
    if (SongFileSearchExtensions(wanted).empty()) {
        LogF("Could not find relative file type “%s” for the song “%s”.", std::string(SongFileLogWord(wanted)).c_str(),
             i_songName.c_str());
        return fnfErr;
    }
    if (!Failed(FindNamed(first, wanted, base, found))) return noErr;
    return secondName.empty() ? fnfErr : FindNamed(first, wanted, std::string(secondName), found);
}

OSErr CSongFileSearch::FindNamed(const CFileRef& first, SDB_SongFile wanted, const std::string& base,
                                 CFileRef& found) const {
    const CFileRef folder = first.GetParent();
    const auto take = [&](const CFileRef& where, const std::string& name, std::string_view extension) {
        CFileRef hit;
        if (name.empty() || !Try(where, name, extension, hit)) return false;
        if (SameFile(hit, first)) {
            Log("--> but it was the same as the first file");
            return false;
        }
        found = std::move(hit);
        return true;
    };
    for (const std::string_view extension : SongFileSearchExtensions(wanted)) {
        if (take(folder, base, extension)) return noErr;
        if (wanted == SDB_SongFile_VIDEO && take(folder.GetParent(), base, extension)) return noErr;
        // The sound of a soft mix has its master beside it; its project the other way round.
        if (extension == ".mp3" && take(folder, WithEnd(base, "_Soft", "_Master"), extension)) return noErr;
        if (extension == ".fly" && take(folder, WithEnd(base, "_Master", "_Soft"), extension)) return noErr;
    }
    return fnfErr;
}

CSong_PathModder::CSong_PathModder(CFileRef::Path musicFolder)
    : CFSPathModder({}, musicFolder), i_music(std::move(musicFolder)) {}

bool CSong_PathModder::operator()(CFileRef& ref) const {
    const std::string given = ref.GetPath().string();
    if (i_music.empty() || IsThere(ref)) return false;
    const auto move = [&](const CFileRef::Path& root, const CFileRef::Path& tail) {
        const auto place = FindIgnoringCase(root, tail);
        if (place) ref.SetPath(*place);
        return place.has_value();
    };
    // A library of another system: its separators are ours, unless ours are there too.
    const bool windowsB = IsWindowsPath(given);
    std::string text = given;
    if (windowsB || text.find('/') == std::string::npos) text = "/" + WindowsTail(text);
    // What is relative stands in the music folder by now, perhaps with other separators and capitals.
    if (IsInside(ref.GetPath(), i_music)) {
        const std::string tail = ref.GetPath().lexically_relative(i_music).string();
        if (move(i_music, tail) || move(i_music, WindowsTail(tail))) return true;
    }
    for (const std::string_view old : {"/Vopla/Vopla Music/", "/Vopla Music/"})
        if (const std::size_t at = text.rfind(old);
            at != std::string::npos && move(i_music, text.substr(at + old.size())))
            return true;
    constexpr std::string_view kRoot = "/Vopla/";
    if (const std::size_t at = text.rfind(kRoot); at != std::string::npos) {
        const std::string tail = text.substr(at + kRoot.size());
        if (move(i_music, tail) || move(i_music.parent_path(), tail)) return true;
    }
    return windowsB && MoveByTail(text.substr(1), move);
}

/** The longest end of a path that is there: in the music folder, beside it, or on a volume. Of a name alone only the
    music folder is asked. */
bool CSong_PathModder::MoveByTail(std::string tail, const Move& move) const {
    std::vector<CFileRef::Path> roots = {i_music, i_music.parent_path()};
    for (CFileRef::Path& volume : CMountTable().Volumes()) roots.push_back(std::move(volume));
    for (;;) {
        const std::size_t slash = tail.find('/');
        if (slash == std::string::npos) return move(i_music, tail);
        if (std::ranges::any_of(roots, [&](const CFileRef::Path& root) { return move(root, tail); })) return true;
        tail.erase(0, slash + 1);
    }
}
