#include "Library/CSongStatus.h"

#include "Files/FSrFolders.h"
#include "Library/WindowsPath.h"

SDB_SongFileStatus CSongStatus::Of(SDB_SongFile type, const Path& given) const {
    if (given.empty()) return SDB_SongFileStatus_NONE;
    if (type == SDB_SongFile_AUDIO_CD || type == SDB_SongFile_VIDEO_CD) return SDB_SongFileStatus_CD;
    // What is ours may be deleted: no ".." out of a damaged file may claim that.
    const Path path = given.lexically_normal();
    if (path.is_relative() && *path.begin() == "..") return SDB_SongFileStatus_REFERENCE;
    const bool relativeB = !path.has_root_directory() &&
                           !IsWindowsPath(given.native());   // as the library's files keep a path in the music folder
    if (relativeB || (!i_music.empty() && IsInside(path, i_music))) return SDB_SongFileStatus_MUSIC;
    if (path.native().find("iTunes") != std::string::npos) return SDB_SongFileStatus_ITUNES;
    if (IsInTemp(path)) return SDB_SongFileStatus_TEMP;
    if (!i_cache.empty() && IsInside(path, i_cache)) return SDB_SongFileStatus_CACHE;
    return SDB_SongFileStatus_REFERENCE;
}
