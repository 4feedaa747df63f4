#include "Library/SongName.h"

#include <charconv>

#include "Library/FileSystemName.h"
#include "Library/SongFileTypes.h"
#include "Meta/CMeta.h"

namespace {

std::string TextOf(const CMeta& song, MetaKey key) { return std::string(song.Stored(key).Text()); }

/** "05": the digits that a template wants to find again. */
std::string TrackText(const CMeta& song) {
    const std::int32_t trackL = song.Stored("trak"_key).Integer();
    if (trackL <= 0) return {};
    return (trackL < 10 ? "0" : "") + std::to_string(trackL);
}

}   // namespace

std::optional<BuiltName> ConformedName(const CMeta& song, std::string_view nameTemplate, SongNameUse use) {
    NameValues values;
    const auto put = [&](NameToken token, std::string text) {
        if (use == SongNameUse::kFile && !text.empty()) text = FileSystemName(text);
        values[static_cast<std::size_t>(token)] = std::move(text);
    };
    put(NameToken::kLabel, TextOf(song, "albm"_key));
    put(NameToken::kTrack, TrackText(song));
    put(NameToken::kSong, TextOf(song, "name"_key));
    put(NameToken::kArtist, TextOf(song, "arts"_key));
    put(NameToken::kVersion, TextOf(song, "rdtn"_key));
    return BuildName(nameTemplate, values);
}

std::string CacheFileName(SongID song, const SuperString& name, SDB_SongFile type) {
    const std::string number = std::to_string(Number(song)) + " ";
    const std::string_view extension = SongFileExtension(type);
    const std::string base = FileSystemName(name);
    return number + std::string(FrontOf(base, kFileName_MaxBytes - number.size() - extension.size())) +
           std::string(extension);
}

SongID SongOfCacheFile(std::string_view name) {
    std::int32_t id = 0;
    const auto end = std::from_chars(name.data(), name.data() + name.size(), id);
    const bool oursB = end.ec == std::errc() && end.ptr != name.data() + name.size() && *end.ptr == ' ' && id > 0;
    return SongID{oursB ? id : 0};
}
