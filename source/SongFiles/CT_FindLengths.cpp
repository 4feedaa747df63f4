#include "SongFiles/CT_FindLengths.h"

#include <algorithm>
#include <limits>
#include <span>

#include "Core/CLog.h"
#include "Core/Localize.h"
#include "Platform/CClock.h"
#include "SongFiles/FindSongLength.h"

namespace {

constexpr MetaKey kLength_Key = "drtn"_key;
constexpr double kStep_FirstT = 0.5, kStep_MostT = 30;
constexpr std::size_t kTell_Most = 2000;      // songs that wait to be told
constexpr std::size_t kLengths_Block = 200;   // songs in one call to the main thread

bool HasLength(const CSong& song) { return song.Meta().Stored(kLength_Key).Integer() > 0; }

}   // namespace

OSErr CT_FindLengths::Start(CSongDatabase& database, std::vector<SongID> songs, Done done) {
    std::unique_ptr<CT_Preemptive> taskP(new CT_FindLengths(database, std::move(songs), std::move(done)));
    return CT_Preemptive::Start(std::move(taskP)) == 0 ? abortErr : noErr;
}

CT_FindLengths::CT_FindLengths(CSongDatabase& database, std::vector<SongID> songs, Done done)
    : CT_OnSongs(N_("find lengths"), database, std::move(songs), std::move(done)),
      i_tellAtT(CClock::Get().SteadyT() + kStep_FirstT),
      i_stepT(kStep_FirstT) {}

bool CT_FindLengths::Wants(const CSong& song) const { return !HasLength(song); }

OSErr CT_FindLengths::OnSong(CSongFiles& files) {
    ++i_lookedL;
    std::uint32_t length300 = 0;
    if (!Failed(FindSongLength(files, length300)) && length300 <= std::numeric_limits<std::int32_t>::max())
        i_found.push_back({files.Song(), static_cast<std::int32_t>(length300)});
    const double nowT = CClock::Get().SteadyT();
    if (i_found.size() < kTell_Most && nowT < i_tellAtT) return noErr;
    i_stepT = std::min(i_stepT * 2, kStep_MostT);
    i_tellAtT = nowT + i_stepT;
    return Tell();
}

OSErr CT_FindLengths::AtEnd(OSErr err) {
    err = FirstOf(err, Tell());
    if (i_lookedL > 0) LogF("Lengths: looked at %zu songs, found %zu", i_lookedL, i_toldL);
    return err;
}

OSErr CT_FindLengths::Tell() {
    OSErr err = noErr;
    for (std::span<const Found> left(i_found); !left.empty() && !Failed(err);) {
        const auto block = left.first(std::min(kLengths_Block, left.size()));
        left = left.subspan(block.size());
        err = OnMain("song lengths", [block](CSongDatabase& database) {
            for (const Found& found : block)
                if (CSong* const songP = database.GetSong(found.song); songP != nullptr && !HasLength(*songP))
                    songP->Meta().SetInteger(kLength_Key, found.length300);
            return noErr;
        });
    }
    i_toldL += i_found.size();
    i_found.clear();
    return err;
}
