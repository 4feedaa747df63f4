#include <unistd.h>

#include <unistd.h>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "Meta/CCollation.h"
#include "Meta/CMeta.h"
#include "Meta/CMetaManager.h"

// A library's worth of songs: what they weigh, how long they take to fill, to read and to sort.
// bench_meta [songs]; 1,000,000 without a number.

namespace {

using Clock = std::chrono::steady_clock;
double Since(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

std::size_t ResidentBytes() {
    std::ifstream file("/proc/self/statm");
    std::size_t allL = 0, residentL = 0;
    file >> allL >> residentL;
    return residentL * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

/** Songs as a karaoke library has them: names of their own, artists and albums that come back, a few genres. */
class SongMaker {
public:
    void Next(long number, std::vector<MetaEntry>& entries) {
        static CMetaManager& s_manager = MetaManager();
        const auto artist =
            static_cast<unsigned>(static_cast<double>(kArtists) * std::pow(Roll01(), 2));   // few are many
        const unsigned album = artist * 5 + Roll(5);
        const std::string artistText = Words(artist, 2), albumText = Words(album + 7'000'000, 3);
        const std::string nameText = Words(static_cast<unsigned>(number) * 2654435761U, 2 + Roll(3));
        const std::string base =
            "/home/kj/Music/Vopla/Vopla Music/" + artistText + "/" + albumText + "/" + artistText + " - " + nameText;
        const auto text = [&](MetaKey key, std::string_view what) {
            entries.push_back({key, s_manager.GetTraits(key).TextValue(what)});
        };
        const auto whole = [&](MetaKey key, unsigned what) {
            entries.push_back({key, CMetaValue(static_cast<std::int32_t>(what))});
        };
        entries.clear();
        whole("soID"_key, static_cast<unsigned>(number));
        whole("trak"_key, 1 + Roll(15));
        whole("drtn"_key, 300 * (120 + Roll(200)));
        whole("SIZE"_key, 2'000'000 + Roll(6'000'000));
        text("name"_key, nameText);
        text("arts"_key, artistText);
        text("albm"_key, albumText);
        whole("cryr"_key, 1950 + Roll(76));
        text("genr"_key, "Genre " + std::to_string(Roll(30)));
        entries.push_back({"Date"_key, CMetaValue(CFDate{7e8 + Roll(100'000'000)})});
        entries.push_back({"DAdd"_key, CMetaValue(CFDate{7e8 + Roll(100'000'000)})});
        if (Roll(4) == 0) {
            entries.push_back({"Sfs2"_key, CMetaValue::File(SDB_SongFileStatus_MUSIC, base + ".zip")});
        } else {
            entries.push_back({"Sfs0"_key, CMetaValue::File(SDB_SongFileStatus_MUSIC, base + ".mp3")});
            entries.push_back({"Sfs1"_key, CMetaValue::File(SDB_SongFileStatus_MUSIC, base + ".cdg")});
        }
    }

private:
    static constexpr unsigned kArtists = 60'000;
    unsigned Roll(unsigned below) { return static_cast<unsigned>(i_random() % below); }
    double Roll01() { return static_cast<double>(i_random() % 1'000'000) / 1e6; }
    static std::string Words(unsigned seed, unsigned countL) {
        static constexpr const char* kWords[] = {
            "Love", "Night",  "Blue", "River", "Dance", "Heart", "Summer", "Road",  "Light", "Home",  "Rain",
            "Fire", "Little", "Girl", "Time",  "Moon",  "Sweet", "Wild",   "Angel", "Dream", "Crazy", "Golden"};
        std::string words;
        for (unsigned n = 0; n < countL; ++n, seed /= 22)
            words.append(words.empty() ? "" : " ").append(kWords[seed % 22]);
        return words.append(" ").append(std::to_string(seed % 1000));
    }
    std::mt19937 i_random{1};
};

}   // namespace

int main(int countL, char** argsP) {
    const long songsL = countL > 1 ? std::atol(argsP[1]) : 1'000'000;
    CMetaManager manager;
    std::vector<MetaEntry> entries;

    SongMaker rehearsal;   // what the making of the values costs by itself
    auto start = Clock::now();
    for (long n = 1; n <= songsL; ++n) rehearsal.Next(n, entries);
    const double makingT = Since(start);
    entries.clear();

    std::vector<std::unique_ptr<CMeta>> songs;
    songs.reserve(static_cast<std::size_t>(songsL));
    const std::size_t beforeL = ResidentBytes();
    SongMaker maker;
    std::size_t valuesL = 0;
    start = Clock::now();
    for (long n = 1; n <= songsL; ++n) {
        maker.Next(n, entries);
        songs.push_back(std::make_unique<CMeta>());
        valuesL += entries.size();
        songs.back()->Load(entries);
    }
    const double fillT = Since(start);
    const std::size_t bytesL = ResidentBytes() - beforeL;
    const auto perSong = [&](double seconds) { return seconds / static_cast<double>(songsL) * 1e9; };
    std::printf("songs %ld, values %zu, shared texts %zu\n", songsL, valuesL, CMetaText::InternedCount());
    std::printf("resident        %7.1f MB, %.0f bytes a song\n", static_cast<double>(bytesL) / 1e6,
                static_cast<double>(bytesL) / static_cast<double>(songsL));
    std::printf("fill            %7.3f s, of which making the values %.3f s\n", fillT, makingT);

    start = Clock::now();
    std::size_t sumL = 0;
    for (const auto& song : songs) sumL += song->Stored("name"_key).Text().size();
    std::printf("read names      %7.3f s, %.0f ns a song (%zu bytes)\n", Since(start), perSong(Since(start)), sumL);
    start = Clock::now();
    long durationL = 0;
    for (const auto& song : songs) durationL += song->GetInteger("drtn"_key);
    std::printf("read durations  %7.3f s, %.0f ns a song (%ld)\n", Since(start), perSong(Since(start)), durationL);

    start = Clock::now();
    std::size_t keysL = 0;
    for (const auto& song : songs) keysL += CCollation::User().SortKey(song->Stored("name"_key).Text()).size();
    std::printf("sort keys       %7.3f s, %.0f ns a song (%zu bytes)\n", Since(start), perSong(Since(start)), keysL);

    start = Clock::now();
    long changesL = 0;
    for (const auto& song : songs) changesL += song->SetInteger("tsng"_key, 1) ? 1 : 0;
    std::printf("set one number  %7.3f s, %.0f ns a song (%ld)\n", Since(start), perSong(Since(start)), changesL);
    start = Clock::now();
    long heldL = 0;
    for (const auto& song : songs) heldL += song->GetRetainedValue("name"_key)->RetainCount();
    std::printf("retain, release %7.3f s, %.0f ns a song (%ld)\n", Since(start), perSong(Since(start)), heldL);
    start = Clock::now();
    songs.clear();
    std::printf("let go          %7.3f s\n", Since(start));
}
