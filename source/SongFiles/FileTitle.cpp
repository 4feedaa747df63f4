#include "SongFiles/FileTitle.h"

#include <algorithm>
#include <charconv>

#include "Meta/TitleText.h"

namespace {

constexpr std::string_view kSeparator = " - ";

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsCapital(char c) { return c >= 'A' && c <= 'Z'; }

/** "SC8123-05": a disc as the makers number them, and a track of two digits. Anything else is an artist. */
bool TakeDisc(std::string_view part, FileTitle& title) {
    const std::size_t hyphen = part.rfind('-');
    if (hyphen == std::string_view::npos || hyphen == 0) return false;
    const std::string_view disc = part.substr(0, hyphen), track = part.substr(hyphen + 1);
    constexpr std::size_t kTrack_Digits = 2;
    if (track.size() != kTrack_Digits || !std::ranges::all_of(track, IsDigit)) return false;
    if (!std::ranges::all_of(disc, [](char c) { return IsDigit(c) || IsCapital(c) || c == '-'; })) return false;
    if (std::ranges::none_of(disc, IsDigit)) return false;
    title.album = disc;
    std::from_chars(track.data(), track.data() + track.size(), title.trackL);
    return true;
}

}   // namespace

FileTitle FileTitle::Of(std::string_view base) {
    FileTitle title;
    const std::string whole = NormalizedTitle(base);
    std::string_view left = whole;
    const auto takePart = [&left] {
        const std::size_t at = left.find(kSeparator);
        if (at == std::string_view::npos) return std::string_view();
        const std::string_view part = left.substr(0, at);
        left.remove_prefix(at + kSeparator.size());
        return part;
    };
    std::string_view part = takePart();
    if (!part.empty() && TakeDisc(part, title)) part = takePart();
    title.artist = part;
    title.title = left.empty() ? whole : left;
    return title;
}
