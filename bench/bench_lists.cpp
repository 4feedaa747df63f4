// A list of a million made songs: blocks that come and go, and a sort by artist, then name, on a worker.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "BenchHost.h"
#include "Library/CSongDatabase.h"
#include "Meta/CCollation.h"
#include "Meta/CMetaManager.h"
#include "Threads/CThreadHost.h"
#include "Threads/CThreadManager.h"
#include "Threads/ThreadInfo.h"

namespace {

constexpr std::size_t kSongs = 1'000'000, kBlock = 10'000;

std::string MadeText(std::mt19937& random, std::size_t wordsL) {
    static const char* const kSyllables[] = {"lo", "ve", "ni", "ght",  "da", "nce", "hea", "rt",
                                             "mo", "on", "ri", "ver",  "ba", "by",  "so",  "ul",
                                             "fi", "re", "su", "mmer", "é",  "ö",   "wo",  "man"};
    std::string text;
    for (std::size_t word = 0; word < wordsL; ++word) {
        if (word != 0) text += ' ';
        for (std::size_t n = 0, countL = 2 + random() % 3; n < countL; ++n)
            text += kSyllables[random() % std::size(kSyllables)];
    }
    text[0] = static_cast<char>(text[0] >= 'a' && text[0] <= 'z' ? text[0] - 32 : text[0]);
    return text;
}

/** Songs with 40,000 artists; as many names as told, the rest are other recordings of the same. */
void Measure(BenchHost& host, std::size_t namesL) {
    CSongDatabaseHost above;
    CSongDatabase database(above);
    database.SetLoading(true);
    std::mt19937 random(7);
    std::vector<std::string> artists(40'000), names(namesL);
    for (std::string& artist : artists) artist = MadeText(random, 1 + random() % 3);
    for (std::string& name : names) name = MadeText(random, 2 + random() % 4);
    std::vector<SongID> songs;
    for (std::size_t n = 0; n < kSongs; ++n) {
        CSong& song = *database.CreateSong();
        song.Meta().SetString("arts"_key, artists[random() % artists.size()]);
        song.Meta().SetString("name"_key, names[namesL == kSongs ? n : random() % namesL]);
        songs.push_back(song.GetSongID());
    }
    CPlayList& list = database.AddPlaylist(kSourceDB_PLAYLIST, "Million");
    const auto block = [&](std::size_t countL) {
        std::vector<PLNewItem> items;
        items.reserve(countL);
        for (std::size_t n = 0; n < countL; ++n) items.push_back({songs[random() % kSongs]});
        return items;
    };
    std::vector<PLNewItem> all;
    for (const SongID id : songs) all.push_back({id});
    std::printf("%zu songs, %zu different names; a row takes %zu bytes\n", kSongs, namesL, sizeof(CPlayListItem));
    std::printf("  all rows added               %8.1f ms\n", Milliseconds([&] { list.AddItemVec(std::move(all)); }));
    std::printf("  durations summed up          %8.1f ms\n", Milliseconds([&] { list.CalculateDuration(); }));
    std::printf("  a block of 10,000 at the end %8.1f ms\n", Milliseconds([&] { list.AddItemVec(block(kBlock)); }));
    std::printf("  a block of 10,000 at row 5   %8.1f ms\n", Milliseconds([&] { list.AddItemVec(block(kBlock), 5); }));

    // What the sort itself would cost somebody who had the keys of all texts ready.
    std::vector<PLRow> rows;
    rows = list.Items()->RowsBefore(list.Items()->NextStamp());
    const CRowValues values(list.Items(), database.Songs(), nullptr, list.ID(), false);
    std::vector<std::pair<std::string, std::string>> keys;
    keys.reserve(rows.size());
    const double preparedT = Milliseconds([&] {
        const auto artist = values.Column(rows, "arts"_key), name = values.Column(rows, "name"_key);
        for (std::size_t n = 0; n < rows.size(); ++n)
            keys.emplace_back(CCollation::User().SortKey(artist[n].Text()), CCollation::User().SortKey(name[n].Text()));
    });
    std::vector<std::uint32_t> order(rows.size());
    for (std::uint32_t n = 0; n < order.size(); ++n) order[n] = n;
    const double plainT = Milliseconds([&] {
        std::ranges::sort(
            order, [&](std::uint32_t a, std::uint32_t b) { return keys[a] != keys[b] ? keys[a] < keys[b] : a < b; });
    });

    const SortSpec spec{{"arts"_key}, {"name"_key}};
    long turnsL = 0;
    double longestT = 0;
    const double sortT = Milliseconds([&] {
        list.SetSort(spec);
        while (list.IsSorting()) {   // the main thread lives on: reads, and a few changes
            longestT = std::max(longestT, Milliseconds([&] {
                                    host.RunLoopPass();
                                    (void)list.Items()->Page(1 + static_cast<RowIndex>(random() % kSongs), 50);
                                    if (turnsL % 64 == 0 && turnsL < 640) list.AddItem({songs[random() % kSongs]});
                                }));
            ++turnsL;
        }
    });
    std::vector<PLItemID> wanted;
    for (const std::uint32_t n : order) wanted.push_back(rows[n].id);
    PLItemSet late;   // rows that came during the sort
    for (const PLRow& row : list.Items()->RowsBefore(list.Items()->NextStamp()))
        if (row.stampL > rows.size()) late.Add(row.id);
    SDB_Selection shown = list.GetAsSelection_FromViewer();
    shown.BatchErase(late);
    std::printf("  sort by artist, name         %8.1f ms, %s; the longest turn of the main thread meanwhile %.1f ms\n",
                sortT, shown.Items() == wanted ? "right" : "WRONG", longestT);
    std::printf(
        "  keys of all texts one by one %8.1f ms, then std::sort over them %8.1f ms: ours, with the keys, takes %.2f "
        "of the sort and %.2f of both\n",
        preparedT, plainT, sortT / plainT, sortT / (plainT + preparedT));

    // Now with the order by artist beside the user's.
    std::vector<PLItemID> gone;
    for (std::size_t n = 0; n < kBlock; ++n) gone.push_back(shown.Items()[n * 100]);
    std::printf("  10,000 removed here and there%8.1f ms, two orders kept\n",
                Milliseconds([&] { (void)list.RemoveItems(gone); }));
    std::printf("  a block of 10,000 added      %8.1f ms, until it is shown\n",
                Milliseconds([&] { list.AddItemVec(block(kBlock)); }));
    std::printf("  and sorted in after          %8.1f ms\n", Milliseconds([&] {
                    while (list.IsSorting()) host.RunLoopPass();
                }));
    std::printf("  one row added to that order  %8.2f ms\n", Milliseconds([&] { list.AddItem({songs[5]}); }));
    std::printf("  one row removed from it      %8.2f ms\n",
                Milliseconds([&] { (void)list.RemoveItem(shown.Items()[50'001]); }));
}

}   // namespace

int main() {
    BenchHost host;
    TagThread(0, false);
    CMetaManager meta;
    {
        CThreadManager threads;
        Measure(host, 250'000);
        Measure(host, kSongs);
    }
    return 0;
}
