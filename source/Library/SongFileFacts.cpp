#include "Library/SongFileFacts.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>

#include "Core/SmallExtension.h"
#include "Files/CFileRef.h"
#include "Meta/CMeta.h"

namespace {

constexpr std::size_t kFormat_Most = 4;   // characters, as the songs' file has them

CFDate DateOf(std::int64_t nanosecondsL) {
    constexpr double kEpoch2001 = 978307200, kNanoseconds = 1e9;
    return CFDate{std::floor(static_cast<double>(nanosecondsL) / kNanoseconds) - kEpoch2001};
}

}   // namespace

SongFileFacts SongFileFacts::Of(std::initializer_list<const CFileRef*> files) {
    SongFileFacts facts;
    for (const CFileRef* const fileP : files) {
        FileInfo info;
        if (fileP->IsEmpty() || CFileCalls::Get().Look(fileP->GetPath(), true, info) != 0) continue;
        facts.bytesL += info.bytesL;
        facts.modifiedL = std::max(facts.modifiedL, info.modifiedL);
        if (facts.format.empty()) facts.format = SmallExtension(fileP->GetPath()).substr(0, kFormat_Most);
    }
    std::ranges::transform(facts.format, facts.format.begin(),
                           [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - ('a' - 'A')) : c; });
    return facts;
}

void SetSongFacts(CMeta& song, const SongFileFacts& facts, DateAdded date) {
    song.SetInteger("SIZE"_key, StoredSize(facts.bytesL));
    song.SetString("Frmt"_key, facts.format);
    const std::int64_t nowL =
        std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::system_clock::now().time_since_epoch())
            .count();
    const bool fileB = date == DateAdded::kFile && facts.modifiedL != 0;
    song.SetDate("DAdd"_key, DateOf(fileB ? facts.modifiedL : nowL));
}

std::int32_t StoredSize(std::uint64_t bytesL) noexcept {
    constexpr std::uint64_t kMost = std::numeric_limits<std::uint32_t>::max();
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(std::min(bytesL, kMost)));
}
