#include "Play/CPlayPlace.h"
#include "Play/PlayTest.h"

namespace {

/** Asks what can be asked, twice; nothing moves by it. */
struct Seen {
    explicit Seen(const CPlayOrder& order)
        : item(order.Item()), next(order.Next()), previous(order.Previous()), lastB(order.IsLast()) {
        EXPECT_EQ(order.Next(), next);
        EXPECT_EQ(order.Previous(), previous);
        EXPECT_EQ(order.Item(), item);
    }
    PLItemID item, next, previous;
    bool lastB;
};

class CPlayPlaceTest : public PlayTest {
protected:
    CPlayPlaceTest() {
        for (int n = 0; n < 5; ++n) Add(i_folder / ("song " + std::to_string(n) + ".wav"));
        i_rows = i_listP->GetSortedList();
        i_place.emplace(*i_databaseP, i_listP->ID());
    }
    /** The rows go as they do in a show: told first, then removed. */
    void Remove(std::vector<std::size_t> rows) {
        std::vector<PLItemID> items;
        for (const std::size_t row : rows) items.push_back(i_rows[row]);
        std::ranges::sort(items);
        i_place->RowsLeave(i_listP->ID(), items);
        ASSERT_EQ(i_databaseP->RemoveFromList(i_listP->ID(), items), noErr);
    }

    std::vector<PLItemID> i_rows;
    std::optional<CPlayPlace> i_place;
};

TEST_F(CPlayPlaceTest, ThePlaceOutlivesItsRow) {
    static constexpr int kNone = -1;
    static const struct {
        const char* nameZ;
        std::size_t at;
        std::vector<std::vector<std::size_t>> removed;
        int next, previous;
        bool lastB;
    } kCases[] = {
        {"in the middle", 2, {}, 3, 1, false},
        {"the first goes back round the end", 0, {}, 1, 4, false},
        {"the last goes on round the end", 4, {}, 0, 3, true},
        {"its row left", 2, {{2}}, 3, 1, false},
        {"with the one before it", 2, {{1, 2}}, 3, 0, false},
        {"and then the one before it", 2, {{2}, {1}}, 3, 0, false},
        {"with the one behind it", 2, {{2, 3}}, 4, 1, false},
        {"another row left", 2, {{3}}, 4, 1, false},
        {"the first left", 0, {{0}}, 1, 4, false},
        {"the last left", 4, {{4}}, 0, 3, true},
        {"all left", 2, {{0, 1, 2, 3, 4}}, kNone, kNone, true},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.nameZ);
        i_listP = &i_databaseP->AddPlaylist(kSourceDB_PLAYLIST, c.nameZ);
        for (int n = 0; n < 5; ++n) Add(i_folder / (std::to_string(n) + ".wav"));
        i_rows = i_listP->GetSortedList();
        i_place.emplace(*i_databaseP, i_listP->ID());
        i_place->GoTo(i_rows[c.at]);
        for (const auto& rows : c.removed) Remove(rows);
        const auto row = [this](int n) { return n == kNone ? SDB_kNoItem : i_rows[static_cast<std::size_t>(n)]; };
        const Seen seen(*i_place);
        EXPECT_EQ(seen.next, row(c.next));
        EXPECT_EQ(seen.previous, row(c.previous));
        EXPECT_EQ(seen.lastB, c.lastB);
    }
}

TEST_F(CPlayPlaceTest, AheadIsWhatFollowsAndNotRoundTheEnd) {
    i_place->GoTo(i_rows[1]);
    EXPECT_EQ(i_place->Ahead(2), std::vector(i_rows.begin() + 2, i_rows.begin() + 4));
    EXPECT_EQ(i_place->Ahead(99), std::vector(i_rows.begin() + 2, i_rows.end()));
    Remove({1, 2});
    EXPECT_EQ(i_place->Ahead(99), std::vector(i_rows.begin() + 3, i_rows.end()));
}

TEST_F(CPlayPlaceTest, ACopyStandsWhereItWasMade) {
    i_place->GoTo(i_rows[1]);
    const auto copy = i_place->Clone();
    i_place->GoTo(i_rows[3]);
    EXPECT_EQ(copy->Item(), i_rows[1]);
    EXPECT_EQ(copy->Next(), i_rows[2]);
}

TEST_F(CPlayPlaceTest, ThereIsNothingInAListThatWasDeleted) {
    i_place->GoTo(i_rows[1]);
    ASSERT_EQ(i_databaseP->DeletePlaylist(i_listP->ID()), noErr);
    const Seen seen(*i_place);
    EXPECT_FALSE(i_place->IsThere());
    EXPECT_EQ(seen.next, SDB_kNoItem);
    EXPECT_EQ(seen.previous, SDB_kNoItem);
    EXPECT_TRUE(i_place->Ahead(9).empty());
    EXPECT_FALSE(CPlayPlace(*i_databaseP, PlaylistID{SDB_kUninitializedID}).IsThere());
}

/** A list that is gone through as its host says: it ends, and there is no way back. */
class OneWay final : public CPlayOrder {
public:
    explicit OneWay(std::unique_ptr<CPlayOrder> below) : i_below(std::move(below)) {}
    std::unique_ptr<CPlayOrder> Clone() const override { return std::make_unique<OneWay>(i_below->Clone()); }
    PlaylistID ListID() const override { return i_below->ListID(); }
    bool IsThere() const override { return i_below->IsThere(); }
    PLItemID Item() const override { return i_below->Item(); }
    PLItemID Next() const override { return i_below->Next(); }
    PLItemID Previous() const override { return SDB_kNoItem; }
    std::vector<PLItemID> Ahead(std::size_t mostL) const override { return i_below->Ahead(mostL); }
    bool IsLast() const override { return i_below->IsLast(); }
    bool StopsAtEnd() const override { return true; }
    bool RewindsFirst() const override { return false; }
    std::string_view WhyNotBack() const override { return "The room has moved on"; }
    void GoTo(PLItemID item) override { i_below->GoTo(item); }
    void RowsLeave(PlaylistID list, std::span<const PLItemID> items) override { i_below->RowsLeave(list, items); }

private:
    std::unique_ptr<CPlayOrder> i_below;
};

class OneWayTest : public PlayTest {
protected:
    std::unique_ptr<CPlayOrder> OrderOf(PlaylistID list) override {
        return std::make_unique<OneWay>(PlayTest::OrderOf(list));
    }
};

TEST_F(OneWayTest, TheShowFollowsTheOrderOfItsHost) {
    for (const char* const nameZ : {"a", "b"}) Add(Sound(std::string(nameZ) + ".wav", 2));
    i_preferences.SetBool("Stop at playlist end", false);
    i_preferences.SetBool("Pause between tracks", false);
    i_preferences.SetBool("Stop between tracks", false);
    ASSERT_TRUE(Starts(0));
    (void)i_controlP->PlayPrevious();
    EXPECT_EQ(i_controlP->CurrentItem(), Row(0));
    ASSERT_FALSE(i_messages.empty());
    EXPECT_EQ(i_messages.back(), "The room has moved on");
    ASSERT_TRUE(RunUntilIdle());
    EXPECT_EQ(i_sung, (Words{"a", "b"}));   // and not round the end
}

}   // namespace
