#include "Library/CPlayList.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <map>
#include <numeric>
#include <random>
#include <thread>

#include "Library/ListTest.h"
#include "Library/SongFileFacts.h"

namespace {

/** A list as slowly and plainly as can be. */
struct SlowList {
    std::map<int, int> slots;   // id to song
    std::vector<int> order;

    int Add(int song, unsigned where) {
        int id = 1;
        while (slots.contains(id)) ++id;
        slots[id] = song;
        order.push_back(id);
        if (where >= 1 && where < order.size()) Move(id, where);
        return id;
    }
    void Remove(int id) {
        slots.erase(id);
        std::erase(order, id);
    }
    void Move(int id, unsigned to) {
        const auto from = static_cast<unsigned>(std::ranges::find(order, id) - order.begin()) + 1;
        order.erase(order.begin() + from - 1);
        order.insert(order.begin() + (from < to ? to - 2 : to - 1), id);
    }
    void MoveAll(const std::vector<int>& ids, unsigned to) {
        std::vector<int> before, moved, after;
        for (unsigned n = 0; n < order.size(); ++n)
            (std::ranges::find(ids, order[n]) != ids.end() ? moved : n + 1 < to ? before : after).push_back(order[n]);
        order = before;
        order.insert(order.end(), moved.begin(), moved.end());
        order.insert(order.end(), after.begin(), after.end());
    }
};

void ExpectAlike(const CPlayList& list, const SlowList& slow) {
    const auto& items = *list.Items();
    ASSERT_EQ(items.Count(), slow.order.size());
    std::vector<int> order;
    for (const PLItemID id : items.UserOrder()) order.push_back(Number(id));
    ASSERT_EQ(order, slow.order);
    for (unsigned n = 0; n < slow.order.size(); ++n) {
        const auto row = items.Get(PLItemID{slow.order[n]});
        ASSERT_TRUE(row);
        ASSERT_EQ(row->row, n + 1);
        ASSERT_EQ(row->target, PLTarget(SongID{slow.slots.at(slow.order[n])}));
        ASSERT_EQ(items.AtRow(n + 1)->id, row->id);
    }
    std::map<int, std::vector<int>> rowsOf;
    for (const auto& [id, song] : slow.slots) rowsOf[song].push_back(id);
    for (const auto& [song, rows] : rowsOf) {
        ASSERT_EQ(items.RowsOfSongs(std::vector{SongID{song}}), Items(rows));
        ASSERT_EQ(items.Find(SongID{song}), PLItemID{rows.front()});
    }
    ASSERT_EQ(items.Find(SongID{100'000}), SDB_kNoItem);
    int next = 1;
    while (slow.slots.contains(next)) ++next;
    ASSERT_EQ(Number(items.NextSlot()), next);
}

}   // namespace

class PlayList : public ListTest {};

TEST_F(PlayList, AgreesWithAListThatIsPlainAndSlow) {
    std::mt19937 random(11);
    const auto upTo = [&](std::size_t most) { return static_cast<unsigned>(random() % (most + 1)); };
    for (int round = 0; round < 6; ++round) {
        CPlayList& list = UserList();
        SlowList slow;
        for (int step = 0; step < 250; ++step) {
            SCOPED_TRACE(testing::Message() << "round " << round << ", step " << step);
            std::vector<int> some = slow.order;
            std::ranges::shuffle(some, random);
            some.resize(std::min<std::size_t>(some.size(), 1 + upTo(8)));
            switch (random() % 7) {
                case 0:
                case 1: {
                    const unsigned where = upTo(slow.order.size() + 3);
                    ASSERT_EQ(Number(Add(list, step + 1, where)), slow.Add(step + 1, where));
                    break;
                }
                case 2: {   // a block, in front of a row or at the end
                    std::vector<std::int32_t> songs(1 + upTo(12), step + 1);
                    const unsigned where = upTo(slow.order.size() + 2);
                    const bool insideB = where >= 1 && where <= slow.order.size();
                    std::vector<int> ids;
                    for (const int song : songs) ids.push_back(slow.Add(song, 0));
                    if (insideB) slow.MoveAll(ids, where);
                    ASSERT_EQ(list.AddItemVec(NewItems(songs), where), Items(ids));
                    break;
                }
                case 3:
                    if (some.empty()) break;
                    slow.Remove(some[0]);
                    ASSERT_EQ(list.RemoveItem(PLItemID{some[0]}), noErr);
                    break;
                case 4:
                    if (random() % 12 == 0) some = slow.order;   // all of it: ids begin at 1 again
                    for (const int id : some) slow.Remove(id);
                    ASSERT_EQ(list.RemoveItems(Items(some)), noErr);
                    break;
                case 5: {
                    if (some.empty()) break;
                    const unsigned to = 1 + upTo(slow.order.size());
                    slow.Move(some[0], to);
                    const auto row = list.MoveItems(Items({some[0]}), to);
                    ASSERT_EQ(slow.order[row - 1], some[0]);
                    break;
                }
                default: {
                    if (some.empty()) break;
                    const unsigned to = 1 + upTo(slow.order.size());
                    slow.MoveAll(some, to);
                    list.MoveItems(Items(some), to);
                }
            }
            ASSERT_NO_FATAL_FAILURE(ExpectAlike(list, slow));
        }
    }
}

TEST_F(PlayList, IdsAreUsedAgainTheLowestFirst) {
    CPlayList& list = UserList();
    list.AddItemVec(NewItems({1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(list.RemoveItems(Items({5, 3})), noErr);
    EXPECT_EQ(list.Items()->Holes(), 2U);
    EXPECT_EQ(Number(Add(list, 7)), 3);
    EXPECT_EQ(Number(Add(list, 8)), 5);
    EXPECT_EQ(Number(Add(list, 9)), 7);
    EXPECT_EQ(list.RemoveItems(Items({1, 2, 3, 4, 5, 6, 7})), noErr);
    EXPECT_EQ(Number(Add(list, 1)), 1);
    EXPECT_EQ(list.Items()->Holes(), 0U);
}

TEST_F(PlayList, SlotsOfAFileAreKeptAndNoneAreMadeUp) {
    CPlayList& list = UserList();
    std::vector<PLNewItem> items = NewItems({10, 11, 12, 13});
    const std::int32_t wanted[] = {7, 2, 7, 2'000'000'000};   // a slot twice, and one that would be a list of holes
    for (std::size_t n = 0; n < items.size(); ++n) items[n].wanted = PLItemID{wanted[n]};
    EXPECT_EQ(list.AddItemVec(std::move(items)), Items({7, 2, 1, 3}));
    EXPECT_EQ(Songs(list), (std::vector<std::int32_t>{10, 11, 12, 13}));
    EXPECT_EQ(list.Items()->Holes(), 3U);
    for (const int id : {4, 5, 6, 8}) EXPECT_EQ(Number(Add(list, 1)), id);
}

TEST_F(PlayList, WrongIdsAreFaultsOfTheCallerAndChangeNothing) {
    CPlayList& list = UserList();
    list.AddItemVec(NewItems({1, 2, 3}));
    EXPECT_EQ(list.RemoveItem(PLItemID{2}), noErr);
    for (const std::int32_t id : {2, 0, -1, 4, 1'000'000}) EXPECT_EQ(list.RemoveItem(PLItemID{id}), fnfErr) << id;
    EXPECT_EQ(TakeAsserted().size(), 7U);   // one each, and two that say why they are no ids at all
    EXPECT_TRUE(Logged("ASSERT: attempting to remove index 2 from playlist <List>, but it is already removed"));
    EXPECT_TRUE(Logged("ASSERT: attempting to remove index 4 from playlist <List> when size is 4"));
    EXPECT_EQ(list.GetIndPLItem(PLItemID{0}), nullptr);
    EXPECT_EQ(list.GetIndPLItem(SDB_kNoItem), nullptr);
    EXPECT_EQ(TakeAsserted(), (std::vector<std::string>{"indexL != 0", "indexL != (size_t)SDB_Index_END"}));
    EXPECT_EQ(Songs(list), (std::vector<std::int32_t>{1, 3}));
}

TEST_F(PlayList, ASingersListTakesASongOnce) {
    CPlayList& favorites = i_databaseP->AddPlaylist(kSourceDB_SINGER_PL_FAVORITES);
    EXPECT_EQ(Add(favorites, 10), Add(favorites, 10));
    EXPECT_EQ(favorites.AddItemVec(NewItems({11, 10, 12, 11})), Items({2, 1, 3, 2}));
    EXPECT_EQ(favorites.Count(), 3U);
    CPlayList& list = UserList();
    EXPECT_NE(Add(list, 10), Add(list, 10));
}

TEST_F(PlayList, RowsHaveValuesOfTheirOwn) {
    CSong& song = Song("A");
    song.Meta().SetInteger("PICH"_key, 1);
    CPlayList& list = UserList();
    const PLItemID one = list.AddItem({song.GetSongID()}), other = list.AddItem({song.GetSongID()});
    EXPECT_TRUE(list.SetRowValue(one, "PICH"_key, CMetaValue(-2)));
    EXPECT_EQ(list.ValueOf(one, "PICH"_key).Integer(), 1);   // what plays is the song's, so that is what is shown
    EXPECT_FALSE(list.KeepsInRow("PICH"_key));
    EXPECT_TRUE(list.KeepsInRow("PLME"_key));
    LibrarySettings settings;
    settings.tuneRowsB = true;
    i_databaseP->SetSettings(settings);
    EXPECT_TRUE(list.KeepsInRow("PICH"_key));
    EXPECT_FALSE(i_databaseP->Library().KeepsInRow("PICH"_key));
    EXPECT_EQ(list.ValueOf(one, "PICH"_key).Integer(), -2);
    EXPECT_EQ(list.ValueOf(other, "PICH"_key).Integer(), 1);
    for (const double tempo : {0.0, 0.1, 2.6}) EXPECT_FALSE(list.SetRowValue(one, "TMPO"_key, CMetaValue(tempo)));
    EXPECT_TRUE(list.SetRowValue(one, "PICH"_key, CMetaValue(0)));   // not its song's
    EXPECT_EQ(list.ValueOf(one, "PICH"_key).Integer(), 0);
    EXPECT_EQ(list.ValueOf(one, "name"_key).Text(), "A");
    EXPECT_EQ(list.ValueOf(other, "stIx"_key).Integer(), 2);
    EXPECT_EQ(list.GetIndPLItem(other)->Meta(), nullptr);
    EXPECT_EQ(list.RemoveItem(one), noErr);   // its slot's next row has none of it
    EXPECT_EQ(list.AddItem({song.GetSongID()}), one);
    EXPECT_EQ(list.ValueOf(one, "PICH"_key).Integer(), 1);
    EXPECT_FALSE(list.Items()->HasRowValues());
}

TEST_F(PlayList, WhatIsPlayedNext) {
    using enum CPlayList::Step;
    const struct {
        const char* name;
        std::vector<std::int32_t> songs;   // -1 cannot be played; row n has the id n
        std::int32_t from, selected;
        CPlayList::Step step;
        std::int32_t next;
    } cases[] = {
        {"forward", {5, 6, 7}, 1, -1, kForward, 2},
        {"backward", {5, 6, 7}, 3, -1, kBackward, 2},
        {"round the end", {5, 6, 7}, 3, -1, kForward, 1},
        {"round the beginning", {5, 6, 7}, 1, -1, kBackward, 3},
        {"the selected one", {5, 6, 7}, -1, 2, kForward, 3},
        {"none selected", {5, 6, 7}, -1, -1, kForward, 1},
        {"none selected, backward", {5, 6, 7}, -1, -1, kBackward, 3},
        {"empty", {}, -1, -1, kForward, -1},
        {"one row", {5}, 1, -1, kForward, 1},
        {"over what cannot be played", {5, -1, -1, 8}, 1, -1, kForward, 4},
        {"over it, backward, round", {-1, 6, -1}, 2, -1, kBackward, 2},
        {"nothing can be played", {-1, -1}, 1, -1, kForward, -1},
    };
    for (const SourceType type : {kSourceDB_PLAYLIST, kSourceDB_KJ_ROTATION})   // a list knows no rotation
        for (const auto& c : cases) {
            SCOPED_TRACE(c.name);
            CPlayList& list = i_databaseP->AddPlaylist(type);
            list.AddItemVec(NewItems(c.songs));
            list.SetSelectedItem(PLItemID{c.selected});
            for (int n = 0; n < 2; ++n) EXPECT_EQ(Number(list.GetNextID(PLItemID{c.from}, c.step)), c.next);
            EXPECT_EQ(i_above.i_stopsL, 0);
        }
}

TEST_F(PlayList, NamesAndWhatMayBeChanged) {
    CPlayList& list = i_databaseP->AddPlaylist(kSourceDB_PLAYLIST);
    EXPECT_EQ(list.Name(), "Untitled Playlist");
    EXPECT_EQ(list.Rename("  Best \t of "), noErr);
    EXPECT_EQ(list.Name(), "Best of");
    i_above.i_renameErr = dskFulErr;
    EXPECT_EQ(list.Rename("Other"), dskFulErr);
    EXPECT_EQ(list.Name(), "Best of");
    EXPECT_TRUE(Logged("Error renaming <Best of> in the file system!"));
    EXPECT_EQ(i_databaseP->AddPlaylist(kSourceDB_SINGER_PL_TONIGHT).Rename("Later"), noErr);   // no file of its own
    EXPECT_TRUE(i_databaseP->AddPlaylist(kSourceDB_PLAYLIST, "* Songs Not Renamed").IsHidden());
    CPlayList& disc = i_databaseP->AddPlaylist(kSourceDB_CD);
    EXPECT_FALSE(disc.IsModifyable());
    disc.SetDisc(true, false);
    EXPECT_TRUE(disc.IsModifyable());
    disc.SetDisc(true, true);
    EXPECT_FALSE(disc.IsModifyable());
}

TEST_F(PlayList, TheSummary) {
    CPlayList& list = UserList();
    EXPECT_EQ(list.GetSummary(), "0 Songs");
    CSong& song = Song("A");
    song.Meta().SetInteger("drtn"_key, 90 * 300);
    song.Meta().SetInteger("SIZE"_key, 3 * 1024 * 1024);
    list.AddItem({song.GetSongID()});
    list.AddItem({song.GetSongID()});
    EXPECT_EQ(list.GetSummary(), "2 Songs, 3 Minutes, 6 MB");
    song.Meta().SetInteger("SIZE"_key, StoredSize(3ULL << 30));   // more than 31 bits
    EXPECT_EQ(list.GetSummary(), "2 Songs, 3 Minutes, 6 GB");
    EXPECT_EQ(i_databaseP->AddPlaylist(kSourceDB_VENUE, "Bar").GetSummary(), "0 Singers");
}

/** The first row goes to the end for ever: whatever moment a copy is of, each song is followed by the next one. */
TEST_F(PlayList, ACopyInBlocksIsOfOneMoment) {
    constexpr std::int32_t kRows = 20'000;
    CPlayList& list = UserList();
    std::vector<std::int32_t> songs(kRows);
    std::iota(songs.begin(), songs.end(), 1);
    (void)list.AddItemVec(NewItems(songs));
    constexpr int kRounds = 5;
    std::atomic<int> roundsL{0};
    std::jthread copier([&, rowsRef = list.Items()] {
        TagThread(NextThreadIndex(), true);
        for (; roundsL < kRounds; ++roundsL, roundsL.notify_all()) {
            const std::vector<PLRow> rows = rowsRef->RowsInBlocks();
            EXPECT_EQ(rows.size(), static_cast<std::size_t>(kRows));
            for (std::size_t n = 1; n < rows.size(); ++n) {
                EXPECT_EQ(rows[n].row, n + 1);
                if (rows[n].target.idL == rows[n - 1].target.idL % kRows + 1) continue;
                ADD_FAILURE() << "row " << n << " of another moment";
                break;
            }
        }
    });
    for (RowIndex n = 0; roundsL < kRounds; ++n) {
        // In a rush, in which no copy by blocks comes to its end, with rests, in which one may.
        list.MoveItems(std::vector{list.Items()->AtRow(1)->id}, kRows + 1);
        if (const int seen = roundsL; n % 16 == 15 && seen < kRounds) roundsL.wait(seen);
    }
}
