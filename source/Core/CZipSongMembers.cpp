#include "Core/CZipSongMembers.h"

#include <algorithm>
#include <map>
#include <string>
#include <tuple>

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

/** ASCII alone: an ending has nothing else, and base names only have to agree with each other. */
std::string Lower(std::string_view text) {
    std::string lower(text);
    for (char& c : lower)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + ('a' - 'A'));
    return lower;
}

std::string_view LastPart(std::string_view name) { return name.substr(name.find_last_of("/\\") + 1); }

/** What two files of one song share: the name without folder and ending. */
std::string BaseOf(const CZipMember& member) {
    const std::string_view last = LastPart(member.name);
    return Lower(last.substr(0, last.rfind('.')));
}

class CChooser {
public:
    explicit CChooser(std::span<const CZipMember> members) : i_members(members) {
        i_kinds.reserve(members.size());
        for (const CZipMember& member : members) i_kinds.push_back(ZipSongKindsOf(member.name));
    }
    /** The best of a kind; one whose base name is `base` before all others. */
    std::optional<std::size_t> Best(bool ZipSongKinds::*kind, const std::string& base = {}) const {
        std::optional<std::size_t> best;
        for (std::size_t n = 0; n < i_members.size(); ++n)
            if (i_kinds[n].*kind && (!best || Rank(n, base) > Rank(*best, base))) best = n;
        return best;
    }
    /** The graphics for which there is an audio of the same base name, and the best such audio. */
    bool FindPair(CZipSongMembers& chosen) const {
        // One look-up a name: a zip may hold very many members, and all of one name.
        std::map<std::string, std::size_t> audios;
        for (std::size_t n = 0; n < i_members.size(); ++n) {
            if (!i_kinds[n].audioB) continue;
            const auto [at, newB] = audios.try_emplace(BaseOf(i_members[n]), n);
            if (!newB && Rank(n) > Rank(at->second)) at->second = n;
        }
        std::optional<std::tuple<bool, std::uint64_t>> best;
        for (std::size_t n = 0; n < i_members.size(); ++n) {
            if (!i_kinds[n].graphicsB) continue;
            const auto at = audios.find(BaseOf(i_members[n]));
            if (at == audios.end()) continue;
            const CZipMember& audio = i_members[at->second];
            const bool readableB = audio.fault == ZipFault::kNone && i_members[n].fault == ZipFault::kNone;
            const std::tuple rank(readableB, audio.sizeL);
            if (best && rank <= *best) continue;
            best = rank;
            chosen.audio = at->second;
            chosen.graphics = n;
        }
        return best.has_value();
    }

private:
    std::tuple<bool, bool, std::uint64_t> Rank(std::size_t n, const std::string& base = {}) const {
        const CZipMember& member = i_members[n];
        return {!base.empty() && BaseOf(member) == base, member.fault == ZipFault::kNone, member.sizeL};
    }
    std::span<const CZipMember> i_members;
    std::vector<ZipSongKinds> i_kinds;
};

}   // namespace

std::span<const ZipSongEnding> ZipSongEndings() noexcept { return kEndings; }

ZipSongKinds ZipSongKindsOf(std::string_view name) {
    const std::string lower = Lower(name);
    for (std::string_view rest = lower; !rest.empty();) {
        const std::size_t endL = std::min(rest.find_first_of("/\\"), rest.size());
        if (rest.substr(0, endL) == kMacFolder) return {};
        rest.remove_prefix(std::min(endL + 1, rest.size()));
    }
    const std::string_view last = LastPart(lower);
    if (last.empty() || last.front() == '.') return {};
    const auto at = std::ranges::find_if(kEndings, [&](const auto& known) { return last.ends_with(known.ending); });
    return at == std::ranges::end(kEndings) ? ZipSongKinds{} : at->kinds;
}

CZipSongMembers CZipSongMembers::Choose(std::span<const CZipMember> members) {
    const CChooser chooser(members);
    CZipSongMembers chosen;
    if (!chooser.FindPair(chosen)) {
        chosen.graphics = chooser.Best(&ZipSongKinds::graphicsB);
        if (!chosen.graphics) chosen.video = chooser.Best(&ZipSongKinds::videoB);
        if (!chosen.video) chosen.audio = chooser.Best(&ZipSongKinds::audioB);
    }
    const auto leader = chosen.audio ? chosen.audio : chosen.graphics ? chosen.graphics : chosen.video;
    chosen.lyrics = chooser.Best(&ZipSongKinds::lyricsB, leader ? BaseOf(members[*leader]) : std::string{});
    return chosen;
}
