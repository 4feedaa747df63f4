#include "Zip/CZipSongMembers.h"

#include <algorithm>
#include <map>
#include <string>
#include <tuple>

namespace {

/** What two files of one song share: the name without folder and ending. */
std::string BaseOf(const CZipMember& member) {
    const std::string_view last = LastPathPart(member.name);
    return LowerASCII(last.substr(0, last.rfind('.')));
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
