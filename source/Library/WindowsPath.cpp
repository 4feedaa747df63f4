#include "Library/WindowsPath.h"

#include <algorithm>
#include <map>
#include <unordered_map>
#include <vector>

#include "Core/SuperString.h"
#include "Platform/CFileCalls.h"

namespace {

using Path = std::filesystem::path;

constexpr std::size_t kFolders_Most = 16;   // whose names are kept, a thread

bool IsLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

std::string Folded(std::string_view name) { return SuperString(name).Lowercased().UTF8(); }

struct Folder {
    std::int64_t modifiedL = 0;
    std::unordered_map<std::string, std::string> names;   // as they are written, by small letters
};

/** The names of the folder; null when it cannot be read. Good until the next call on this thread. */
const Folder* ReadFolder(const Path& path) {
    thread_local std::map<std::string, Folder> t_folders;
    FileInfo info;
    if (CFileCalls::Get().Look(path, true, info) != 0 || info.kind != FileKind::kFolder) return nullptr;
    const auto it = t_folders.find(path.native());
    if (it != t_folders.end() && it->second.modifiedL == info.modifiedL) return &it->second;
    std::vector<std::string> names;
    if (CFileCalls::Get().List(path, names) != 0) return nullptr;
    if (t_folders.size() >= kFolders_Most) t_folders.clear();
    Folder& folder = t_folders[path.native()];
    folder = {info.modifiedL, {}};
    std::ranges::sort(names);
    for (std::string& name : names) {
        std::string key = Folded(name);
        folder.names.try_emplace(std::move(key), std::move(name));
    }
    return &folder;
}

}   // namespace

bool IsWindowsPath(std::string_view path) {
    if (path.starts_with('\\')) return true;
    return path.size() >= 3 && IsLetter(path[0]) && path[1] == ':' && (path[2] == '\\' || path[2] == '/');
}

std::string WindowsTail(std::string_view path) {
    std::string text(path);
    std::ranges::replace(text, '\\', '/');
    if (text.starts_with("//"))
        text.erase(0, std::min(text.find('/', 2), text.size()));
    else if (IsWindowsPath(path) && !text.starts_with('/'))
        text.erase(0, 2);
    return text.substr(std::min(text.find_first_not_of('/'), text.size()));
}

std::optional<Path> FindIgnoringCase(const Path& root, const Path& tail) {
    FileInfo info;
    const auto isFile = [&](const Path& path) {
        return CFileCalls::Get().Look(path, true, info) == 0 && info.kind == FileKind::kFile;
    };
    if (isFile(root / tail)) return root / tail;
    Path at = root;
    for (const Path& part : tail) {
        if (part == "..") return std::nullopt;
        const Folder* const folderP = ReadFolder(at);
        if (folderP == nullptr) return std::nullopt;
        const bool exactB = CFileCalls::Get().Look(at / part, true, info) == 0;
        const auto it = folderP->names.find(Folded(part.native()));
        if (!exactB && it == folderP->names.end()) return std::nullopt;
        at /= exactB ? part.native() : it->second;
    }
    return isFile(at) ? std::optional(at) : std::nullopt;
}
