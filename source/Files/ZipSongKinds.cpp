#include "Files/ZipSongKinds.h"

#include <algorithm>

namespace {

constexpr ZipSongEnding kEndings[] = {
    {".mp3", {.audioB = true}},
    {".wav", {.audioB = true}},
    {".aif", {.audioB = true}},
    {".aiff", {.audioB = true}},
    {".aac", {.audioB = true}},
    {".m4a", {.audioB = true}},
    {".ogg", {.audioB = true}},
    {".opus", {.audioB = true}},
    {".flac", {.audioB = true}},
    {".wma", {.audioB = true}},
    {".amr", {.audioB = true}},
    {".mp4", {.audioB = true, .videoB = true}},
    {".mov", {.audioB = true, .videoB = true}},
    {".cdg", {.graphicsB = true}},
    {".mcg", {.graphicsB = true}},
    {".ncg", {.graphicsB = true}},
    {".mkv", {.videoB = true}},
    {".avi", {.videoB = true}},
    {".mpg", {.videoB = true}},
    {".mpeg", {.videoB = true}},
    {".wmv", {.videoB = true}},
    {".webm", {.videoB = true}},
    {".m4v", {.videoB = true}},
    {".flv", {.videoB = true}},
    {".divx", {.videoB = true}},
    {".vlp", {.lyricsB = true}},
    {".lrc", {.lyricsB = true}},
    {".txt", {.lyricsB = true}},
    {".fly", {.lyricsB = true}},
};

constexpr std::string_view kMacFolder = "__macosx";

}   // namespace

std::span<const ZipSongEnding> ZipSongEndings() noexcept { return kEndings; }

ZipSongKinds ZipSongKindsOf(std::string_view name) {
    const std::string lower = LowerASCII(name);
    for (std::string_view rest = lower; !rest.empty();) {
        const std::size_t endL = std::min(rest.find_first_of("/\\"), rest.size());
        if (rest.substr(0, endL) == kMacFolder) return {};
        rest.remove_prefix(std::min(endL + 1, rest.size()));
    }
    const std::string_view last = LastPathPart(lower);
    if (last.empty() || last.front() == '.') return {};
    const auto at = std::ranges::find_if(kEndings, [&](const auto& known) { return last.ends_with(known.ending); });
    return at == std::ranges::end(kEndings) ? ZipSongKinds{} : at->kinds;
}

std::string LowerASCII(std::string_view text) {
    std::string lower(text);
    for (char& c : lower)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + ('a' - 'A'));
    return lower;
}

std::string_view LastPathPart(std::string_view path) { return path.substr(path.find_last_of("/\\") + 1); }
