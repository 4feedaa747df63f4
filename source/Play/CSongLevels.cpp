#include "Play/CSongLevels.h"

#include <algorithm>

#include "Core/CLog.h"
#include "Library/CSongDatabase.h"
#include "Platform/CClock.h"
#include "Play/CT_MeasureLevel.h"
#include "Play/SongPlaySpec.h"

namespace {
constexpr double kRest = 3;               // times as long as it worked
constexpr std::size_t kAgain_Songs = 2;   // what comes next, and what plays
constexpr double kAgain_T = 60;
}   // namespace

CSongLevels::CSongLevels(CSongDatabase& database)
    : i_database(database), i_stopRef(std::make_shared<std::atomic<bool>>(false)) {}

CSongLevels::~CSongLevels() {
    i_self.Empty();
    i_stopRef->store(true);
}

void CSongLevels::Want(std::vector<SongID> songs) {
    // Once is enough for most; what comes next and what plays may have got another file meanwhile.
    const double nowT = CClock::Get().SteadyT();
    i_wanted.clear();
    for (std::size_t n = 0; n < songs.size(); ++n) {
        const auto looked = i_lookedT.find(songs[n]);
        if (looked == i_lookedT.end() || (n < kAgain_Songs && nowT - looked->second > kAgain_T))
            i_wanted.push_back(songs[n]);
    }
    std::ranges::reverse(i_wanted);
}

void CSongLevels::Idle(bool playingB) {
    if (i_busyB || i_wanted.empty()) return;
    if (playingB && CClock::Get().SteadyT() - i_endedT < kRest * i_tookT) return;
    const SongID song = i_wanted.back();
    i_wanted.pop_back();
    CSong* const songP = i_database.GetSong(song);
    const auto [looked, newB] = i_lookedT.try_emplace(song, CClock::Get().SteadyT());
    if (songP == nullptr || (!newB && CClock::Get().SteadyT() - looked->second <= kAgain_T)) return;   // two rows of it
    looked->second = CClock::Get().SteadyT();
    i_busyB = true;
    auto taskP = std::make_unique<CT_MeasureLevel>(i_self.Handle(), song, CSongFiles(*songP, i_database.Settings()),
                                                   LevelOf(*songP), i_stopRef);
    if (CT_Preemptive::Start(std::move(taskP)) == 0) i_busyB = false;
}

void CSongLevels::Measured(SongID song, const std::optional<SongLevel>& level, double tookT) {
    i_busyB = false;
    i_endedT = CClock::Get().SteadyT();
    i_tookT = tookT;
    CSong* const songP = i_database.GetSong(song);
    if (!level || songP == nullptr) return;
    LogF("Loudness of %s: %.2f LUFS, peak %.2f dB", songP->Name().UTF8().c_str(), level->loudness.lufs,
         level->loudness.peakDB);
    KeepLevel(*songP, *level);
}
