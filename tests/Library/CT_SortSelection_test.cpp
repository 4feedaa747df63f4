#include "Library/CT_SortSelection.h"

#include <algorithm>
#include <random>

#include "Library/CRowSorter.h"
#include "Library/ListTest.h"
#include "Library/SongFileFacts.h"

class SortSelection : public ListTest {
protected:
    /** The order that comparing the songs two by two gives; rows of equal songs by slot. */
    std::vector<PLItemID> Slow(const CPlayList& list, const SortSpec& spec) {
        std::vector<PLItemID> ids = list.Items()->FindAll([](const PLTarget&) { return true; });
        std::ranges::stable_sort(ids, [&](PLItemID a, PLItemID b) {
            CMetaSortContext context{spec};
            CSong* const oneP = i_databaseP->GetSong(list.GetIndPLItem(a)->GetSongID());
            CSong* const otherP = i_databaseP->GetSong(list.GetIndPLItem(b)->GetSongID());
            return oneP->Meta().CompareRecursive(otherP->Meta(), context) < 0;
        });
        return ids;
    }
    /** Songs with few different values, some without any, in a list. */
    CPlayList& Mixed(std::size_t countL, unsigned seed) {
        static const char* const kTexts[] = {"",         "abba",   "ABBA", "Ärzte", "aerosmith", "Track 9",
                                             "Track 10", "zz top", "é",    "e",     "-",         "Ａ"};
        i_random.seed(seed);
        CPlayList& list = UserList();
        std::vector<PLNewItem> items;
        for (std::size_t n = 0; n < countL; ++n) {
            CMeta& meta = i_databaseP->CreateSong()->Meta();
            meta.SetString("name"_key, kTexts[i_random() % std::size(kTexts)]);
            meta.SetString("arts"_key, kTexts[i_random() % std::size(kTexts)]);
            meta.SetInteger("cryr"_key, static_cast<int>(i_random() % 5) - 2);
            meta.SetFloat("volm"_key, static_cast<int>(i_random() % 5) - 2);
            meta.SetBool("sgKJ"_key, i_random() % 2 == 0);
            meta.SetBool("PSNT"_key, i_random() % 2 == 0);
            meta.SetBool("Duet"_key, i_random() % 2 == 0);
            if (i_random() % 3 != 0) meta.SetDate("Date"_key, CFDate{static_cast<double>(i_random() % 3)});
            items.push_back({SongID{i_databaseP->PeekNextID() - 1}});
        }
        list.AddItemVec(std::move(items));
        i_databaseP->FlushChanges();
        return list;
    }
    std::mt19937 i_random;
};

TEST_F(SortSelection, AgreesWithSongsComparedTwoByTwo) {
    CPlayList& list = Mixed(400, 3);
    const MetaKey keys[] = {"name"_key, "arts"_key, "cryr"_key, "volm"_key, "sgKJ"_key,
                            "PSNT"_key, "Duet"_key, "Date"_key, "soID"_key, "genr"_key};
    for (int round = 0; round < 40; ++round) {
        SortSpec spec;
        for (std::size_t n = 0, countL = 1 + i_random() % 4; n < countL; ++n)
            spec.push_back({keys[i_random() % std::size(keys)], i_random() % 3 != 0});
        SCOPED_TRACE(testing::Message() << round << " " << MetaKeyText(MainKey(spec)) << " and " << spec.size() - 1);
        list.SetSort(spec, CPlayList::SortWait::kYes);
        ASSERT_EQ(list.GetSortedList(), Slow(list, list.Spec()));
    }
}

TEST_F(SortSelection, WhatHasNoValueComesFirstAndTiesGoBySlot) {
    CPlayList& list = UserList();
    for (const char* artistZ : {"b", "", "a", "", "B"}) list.AddItem({Song("n", artistZ).GetSongID()});
    list.MoveItems(Items({5}), 1);   // the user order is no part of it
    list.SetSort({{"arts"_key}}, CPlayList::SortWait::kYes);
    EXPECT_EQ(list.GetSortedList(), Items({2, 4, 3, 1, 5}));
    list.SetSort({{"arts"_key, false}}, CPlayList::SortWait::kYes);
    EXPECT_EQ(list.GetSortedList(), Items({1, 5, 3, 2, 4}));
    list.SetSort({{CM_Key_SORT_INDEX, false}}, CPlayList::SortWait::kYes);
    EXPECT_EQ(list.GetSortedList(), Items({5, 4, 3, 2, 1}));
    list.SetSort({{"stIx"_key}}, CPlayList::SortWait::kYes);
    EXPECT_EQ(list.GetSortedList(), Items({5, 1, 2, 3, 4}));
    // Sizes of more than 2 GB, whose numbers have no room for a sign; rows one by one, then all.
    int n = 0;
    for (const std::uint64_t size : {3ULL << 30, 5ULL, 1ULL << 40, 1ULL << 31})
        i_databaseP->GetSong(SongID{list.Items()->Get(PLItemID{++n})->target.idL})
            ->Meta()
            .SetInteger("SIZE"_key, StoredSize(size));
    list.SetSort({{"SIZE"_key}}, CPlayList::SortWait::kYes);
    EXPECT_EQ(list.GetSortedList(), Items({5, 2, 4, 1, 3}));
    list.AddItem({SongID{list.Items()->Get(PLItemID{4})->target.idL}});
    EXPECT_EQ(list.GetSortedList(), Items({5, 2, 4, 6, 1, 3}));
}

TEST_F(SortSelection, TickedBoxesOfTheseTwoColumnsComeFirst) {
    CPlayList& list = UserList();
    for (const bool tickedB : {false, true, false, true}) {
        CSong& song = Song("n");
        song.Meta().SetBool("sgKJ"_key, tickedB);
        song.Meta().SetBool("PSNT"_key, tickedB);
        song.Meta().SetBool("Duet"_key, tickedB);
        list.AddItem({song.GetSongID()});
    }
    const struct {
        MetaKey key;
        std::vector<std::int32_t> order;
    } cases[] = {{"sgKJ"_key, {2, 4, 1, 3}}, {"PSNT"_key, {2, 4, 1, 3}}, {"Duet"_key, {1, 3, 2, 4}}};
    for (const auto& c : cases) {
        list.SetSort({{c.key}}, CPlayList::SortWait::kYes);
        EXPECT_EQ(list.GetSortedList(), Items(c.order)) << MetaKeyText(c.key);
    }
}

TEST_F(SortSelection, OneRowNeverStartsATask) {
    CPlayList& list = UserList();
    list.SetSort({{"name"_key}});
    EXPECT_FALSE(list.IsSorting());
    list.AddItem({Song("A").GetSongID()});
    list.SetSort({{"arts"_key}});
    EXPECT_FALSE(list.IsSorting());
    EXPECT_EQ(MainKey(list.Spec()), "arts"_key);
    list.AddItem({Song("B").GetSongID()});
    list.SetSort({{"name"_key}});
    EXPECT_TRUE(list.IsSorting());
    EXPECT_EQ(MainKey(list.Spec()), "arts"_key);   // until the result is there
    ASSERT_TRUE(RunUntil([&] { return !list.IsSorting(); }));
    EXPECT_EQ(MainKey(list.Spec()), "name"_key);
}

TEST_F(SortSelection, TheListLivesOnWhileItIsSorted) {
    const SortSpec spec{{"arts"_key}, {"name"_key, false}};
    for (unsigned round = 0; round < 12; ++round) {
        SCOPED_TRACE(round);
        CPlayList& list = Mixed(500, round);
        list.SetSort({{"Duet"_key}}, CPlayList::SortWait::kYes);
        std::vector<SongID> late;   // made before, so that nothing but their rows is new
        for (int n = 0; n < 20; ++n) late.push_back(Song("New " + std::to_string(n), "Ab").GetSongID());
        i_databaseP->FlushChanges();
        list.SetSort(spec);
        ASSERT_TRUE(list.IsSorting());
        // Removed, put into the slots that got free, added in a block, changed: all between the copy and the result.
        for (int n = 0; n < 20; ++n) {
            const std::vector<PLItemID> user = list.Items()->UserOrder();
            ASSERT_EQ(list.RemoveItem(user[i_random() % user.size()]), noErr);
            list.AddItem({late[static_cast<std::size_t>(n)]}, 1);
        }
        CSong& changed = *i_databaseP->GetSong(list.GetIndPLItem(list.Items()->UserOrder().back())->GetSongID());
        changed.Meta().SetString("arts"_key, "zzz");
        i_databaseP->FlushChanges();
        if (round % 2 == 0) {   // too much to be put in one by one: sorted again
            std::vector<PLNewItem> block;
            for (int n = 0; n < 100; ++n) block.push_back({Song("x" + std::to_string(n), "abba").GetSongID()});
            list.AddItemVec(std::move(block));
        }
        if (round % 3 == 0) list.SetSort({{"cryr"_key}});   // waits its turn
        ASSERT_TRUE(RunUntil([&] { return !list.IsSorting(); }));
        EXPECT_EQ(MainKey(list.Spec()), round % 3 == 0 ? "cryr"_key : "arts"_key);
        EXPECT_EQ(list.GetSortedList(), Slow(list, list.Spec()));
        list.SetSort({{"Duet"_key}}, CPlayList::SortWait::kYes);   // the order that was shown meanwhile
        EXPECT_EQ(list.GetSortedList(), Slow(list, list.Spec()));
    }
}

TEST_F(SortSelection, ASortThatIsWaitedForWinsOverTheOneThatRuns) {
    CPlayList& list = Mixed(300, 4);
    list.SetSort({{"name"_key}});
    list.SetSort({{"cryr"_key}});
    list.SetSort({{"arts"_key}}, CPlayList::SortWait::kYes);
    EXPECT_EQ(list.GetSortedList(), Slow(list, {{"arts"_key}}));
    ASSERT_TRUE(RunUntil([&] { return !list.IsSorting(); }));
    EXPECT_EQ(MainKey(list.Spec()), "arts"_key);
    EXPECT_EQ(list.Items()->Order({{"name"_key}}), Slow(list, {{"name"_key}}));
}

TEST_F(SortSelection, AnOrderStaysRightAsRowsComeGoAndChange) {
    CPlayList& list = Mixed(200, 8);
    const SortSpec specs[] = {{{"arts"_key}}, {{"name"_key, false}, {"arts"_key}}};
    for (const SortSpec& spec : specs) list.SetSort(spec, CPlayList::SortWait::kYes);
    for (int n = 0; n < 60; ++n) {
        const std::vector<PLItemID> user = list.Items()->UserOrder();
        if (n % 3 == 0) {
            ASSERT_EQ(list.RemoveItems({user[1], user[i_random() % 50 + 2]}), noErr);
        } else if (n % 3 == 1) {
            list.AddItem({Song(n % 2 == 0 ? "abba" : "m", "Track 9b").GetSongID()});
        } else {
            CMeta& meta = i_databaseP->GetSong(list.GetIndPLItem(user[5])->GetSongID())->Meta();
            meta.SetString(n % 2 == 0 ? "name"_key : "arts"_key, "Track " + std::to_string(n));
            i_databaseP->FlushChanges();
        }
        for (const SortSpec& spec : specs) ASSERT_EQ(list.Items()->Order(spec), Slow(list, spec)) << n;
    }
}

TEST_F(SortSelection, AResultForAListOrADatabaseThatHasGone) {
    CPlayList& list = Mixed(300, 1);
    list.SetSort({{"name"_key}});
    EXPECT_EQ(i_databaseP->DeletePlaylist(list.ID()), noErr);
    CPlayList& other = Mixed(300, 2);
    other.SetSort({{"name"_key}});
    i_databaseP.reset();
    for (int n = 0; n < 20; ++n) i_host.RunLoopPass();
}

TEST_F(SortSelection, AnUnexpectedResultIsToldAndChangesNothing) {
    CPlayList& list = Mixed(10, 1);
    const CRowValues values(list.Items(), i_databaseP->Songs(), nullptr, list.ID(), true);
    list.SortCompletion({values, list.Items(), {{"name"_key}}, 0, list.ID(), "List"}, noErr);
    EXPECT_TRUE(Logged("we found that the sort column was not being sorted? (Key count: 1) Please send the log file."));
    EXPECT_EQ(list.GetSortedList().size(), 10U);
}

/** By what people see in the cell: words of a menu by the alphabet, pitches as numbers; none before all. */
TEST_F(SortSelection, MenusStandByTheirWords) {
    CPlayList& list = UserList();
    for (const int n : {0, 1, 2, 3, 4, 5, 6, 7}) {
        CSong& song = Song("song " + std::to_string(n));
        CMeta& meta = song.Meta();
        meta.SetInteger("colr"_key, n);
        meta.SetInteger("vChn"_key, n % 4);
        meta.SetInteger("PICH"_key, n - 4);
        list.AddItem({song.GetSongID()});
    }
    const auto words = [&](MetaKey key) {
        list.SetSort({{key, true}}, CPlayList::SortWait::kYes);
        std::string all;
        for (const PLItemID id : list.GetSortedList())
            all += MetaManager().GetTraits(key).Display(list.ValueOf(id, key)).UTF8() + " ";
        return all;
    };
    EXPECT_EQ(words("colr"_key), " Blue Gray Green Orange Purple Red Yellow ");
    EXPECT_EQ(words("vChn"_key), "  Both Both Left Left Right Right ");
    EXPECT_EQ(words("PICH"_key), " -4 -3 -2 -1 +1 +2 +3 ");
    i_databaseP->GetSong(SongID{list.Items()->Get(PLItemID{1})->target.idL})->Meta().SetInteger("colr"_key, 4);
    i_databaseP->FlushChanges();   // a row that changes finds its place among them
    EXPECT_EQ(words("colr"_key), "Blue Gray Green Green Orange Purple Red Yellow ");
}

TEST_F(SortSelection, TheSortThatAFileRemembers) {
    CPlayList& list = UserList();
    const auto keptAs = [&](MetaKey key) {
        list.SetSavedSort(key, false);
        return MainKey(list.Spec());
    };
    EXPECT_EQ(keptAs("arts"_key), "arts"_key);
    EXPECT_FALSE(list.Spec().front().ascendingB);
    EXPECT_EQ(keptAs("Lang"_key), CM_Key_SORT_INDEX);
    EXPECT_EQ(keptAs("DAdd"_key), CM_Key_SORT_INDEX);
    i_above.i_dateAddedB = true;
    EXPECT_EQ(keptAs("DAdd"_key), "DAdd"_key);
}

TEST_F(SortSelection, TheShownOrderBecomesTheUsers) {
    CPlayList& list = UserList();
    for (const char* nameZ : {"c", "a", "b"}) list.AddItem({Song(nameZ).GetSongID()});
    list.SetSort({{"name"_key}}, CPlayList::SortWait::kYes);
    list.MakeUserOrder();
    EXPECT_EQ(list.Items()->UserOrder(), Items({2, 3, 1}));
    EXPECT_EQ(list.GetPLI_Index(PLItemID{1}), 3U);
    EXPECT_TRUE(Logged("Setting user sort order for List"));
}
