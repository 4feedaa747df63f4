#pragma once
#include <filesystem>

#include "Meta/CMetaSongFile.h"

/** To whom a song's file belongs, by its path alone. Any thread; a value. */
class CSongStatus {
public:
    using Path = std::filesystem::path;

    /** The folders of the preferences; an empty one holds nothing. */
    CSongStatus(Path musicFolder, Path cacheFolder)
        : i_music(std::move(musicFolder)), i_cache(std::move(cacheFolder)) {}
    [[nodiscard]] SDB_SongFileStatus Of(SDB_SongFile type, const Path& path) const;

private:
    Path i_music, i_cache;
};
