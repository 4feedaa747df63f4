#include "Shell/CSongTableModel.h"

#include <QtCore/QMimeData>
#include <QtTest/QAbstractItemModelTester>
#include <QtTest/QTest>
#include <random>

#include "Core/NumberForms.h"
#include "Library/ListTest.h"
#include "Shell/SongCells.h"
#include "Widgets/QtApp.h"
#include "Widgets/XNumberBox.h"

namespace {

/** What a view makes of the signals alone: it must always stand as the model does. */
class Mirror final : public QObject {
public:
    explicit Mirror(const CSongTableModel& model) : i_model(model), i_rows(model.Rows()) {
        connect(&model, &QAbstractItemModel::rowsInserted, this, [this](const QModelIndex&, int from, int to) {
            const auto begin = i_model.Rows().begin();
            i_rows.insert(i_rows.begin() + from, begin + from, begin + to + 1);
        });
        connect(&model, &QAbstractItemModel::rowsRemoved, this, [this](const QModelIndex&, int from, int to) {
            i_rows.erase(i_rows.begin() + from, i_rows.begin() + to + 1);
        });
        connect(&model, &QAbstractItemModel::layoutChanged, this, [this] { i_rows = i_model.Rows(); });
        connect(&model, &QAbstractItemModel::modelReset, this, [this] {
            ++i_resetsL;
            i_rows = i_model.Rows();
        });
    }
    const CSongTableModel& i_model;
    std::vector<PLItemID> i_rows;
    int i_resetsL = 0;
};

class SongTableModel : public ListTest {
protected:
    SongTableModel() { App(); }
    std::string RandomWord() {
        static constexpr const char* kWords[] = {"amber", "Beyond",  "cé",       "delta",
                                                 "echo",  "Foxtrot", "ångström", "zulu"};
        return kWords[i_random() % std::size(kWords)];
    }
    CSong& RandomSong() { return Song(RandomWord() + " " + RandomWord(), RandomWord()); }
    void SettleAll(CSongTableModel& model) {
        ASSERT_TRUE(RunUntil([&] {
            QApplication::processEvents();
            return !model.IsLooking() && !model.List()->IsSorting();
        }));
        model.Settle();
    }
    std::mt19937 i_random{7};
};

/** Random additions, removals, moves, edits and sorts: the table is the list, row by row, a selected row stays
    selected, and no signal lies. */
TEST_F(SongTableModel, IsTheListWhateverHappensToIt) {
    CPlayList& list = UserList();
    CSongTableModel model(*i_databaseP);
    model.SetList(list.ID());
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    Mirror mirror(model);
    std::vector<SongID> songs;
    for (int round = 0; round < 400; ++round) {
        SCOPED_TRACE(testing::Message() << "round " << round);
        const QPersistentModelIndex kept =
            model.rowCount() > 0 ? model.index(static_cast<int>(i_random() % model.Rows().size()), 0) : QModelIndex();
        const PLItemID keptItem = kept.isValid() ? model.ItemAt(kept.row()) : SDB_kNoItem;
        const std::uint32_t keptStampL = kept.isValid() ? list.Items()->Get(keptItem)->stampL : 0;
        const int resetsL = mirror.i_resetsL;
        const std::vector<PLItemID> rows = list.Items()->UserOrder();
        switch (i_random() % 6) {
            case 0:
            case 1: {
                std::vector<PLNewItem> items;
                for (std::size_t n = i_random() % 9 + 1; n > 0; --n) items.push_back({RandomSong().GetSongID()});
                list.AddItemVec(std::move(items), static_cast<RowIndex>(i_random() % (rows.size() + 2)));
                break;
            }
            case 2: {
                std::vector<PLItemID> gone;
                for (const PLItemID id : rows)
                    if (i_random() % 5 == 0) gone.push_back(id);
                ASSERT_EQ(list.RemoveItems(gone), noErr);
                break;
            }
            case 3:
                if (!rows.empty())
                    list.MoveItems(std::vector{rows[i_random() % rows.size()]},
                                   static_cast<RowIndex>(i_random() % rows.size() + 1));
                break;
            case 4:
                if (!rows.empty()) {
                    i_databaseP->GetSong(list.GetIndPLItem(rows[i_random() % rows.size()])->GetSongID())
                        ->Meta()
                        .SetString("name"_key, RandomWord());
                    i_databaseP->FlushChanges();
                }
                break;
            case 5:
                model.sort(static_cast<int>(i_random() % 2),
                           i_random() % 2 == 0 ? Qt::AscendingOrder : Qt::DescendingOrder);
                if (i_random() % 4 == 0) list.SetSort({{"stIx"_key}});
                break;
        }
        ASSERT_NO_FATAL_FAILURE(SettleAll(model));
        ASSERT_EQ(model.Rows(), list.GetSortedList());
        ASSERT_EQ(mirror.i_rows, model.Rows());
        for (const int row : {0, model.rowCount() / 2, model.rowCount() - 1}) {
            if (row < 0 || row >= model.rowCount()) continue;
            ASSERT_EQ(model.data(model.index(row, 0), Qt::DisplayRole).toString().toStdString(),
                      list.ValueOf(list.GetSortedList()[static_cast<std::size_t>(row)], "name"_key).Text());
        }
        // An index that a view keeps follows its row, unless everything started anew.
        const auto now = keptItem == SDB_kNoItem ? std::nullopt : list.Items()->Get(keptItem);
        if (mirror.i_resetsL == resetsL && now && now->stampL == keptStampL) {
            ASSERT_TRUE(kept.isValid() && model.ItemAt(kept.row()) == keptItem);
        }
    }
    EXPECT_GT(list.Count(), 20U);
}

/** While a list is sorted the old order stands; the new one comes whole. */
TEST_F(SongTableModel, OldOrderStandsWhileItSorts) {
    CPlayList& list = UserList();
    CSongTableModel model(*i_databaseP);
    model.SetList(list.ID());
    for (const char* const nameZ : {"c", "a", "b"}) list.AddItem({Song(nameZ).GetSongID()});
    ASSERT_NO_FATAL_FAILURE(SettleAll(model));
    const std::vector<PLItemID> before = model.Rows();
    model.sort(0, Qt::AscendingOrder);
    model.Settle();
    EXPECT_EQ(model.Rows(), before);
    ASSERT_NO_FATAL_FAILURE(SettleAll(model));
    EXPECT_EQ(model.Rows(), Items({2, 3, 1}));
}

/** A filter, against looking at every row; it holds while rows come, go and change their names. */
TEST_F(SongTableModel, FilterShowsWhatMatchesAndFollowsTheList) {
    CPlayList& list = UserList();
    CSongTableModel model(*i_databaseP);
    model.SetList(list.ID());
    Mirror mirror(model);
    for (int n = 0; n < 3000; ++n) list.AddItem({RandomSong().GetSongID()});   // more than the first piece
    ASSERT_NO_FATAL_FAILURE(SettleAll(model));
    model.sort(0, Qt::AscendingOrder);
    ASSERT_NO_FATAL_FAILURE(SettleAll(model));
    const CTextFilter filter("ECHO cé", true);
    model.SetFilter(filter);
    const auto expected = [&] {
        std::vector<PLItemID> rows;
        for (const PLItemID id : list.GetSortedList())
            if (filter.Matches(list.ValueOf(id, "name"_key).Text(), list.ValueOf(id, "arts"_key).Text()))
                rows.push_back(id);
        return rows;
    };
    ASSERT_NO_FATAL_FAILURE(SettleAll(model));
    ASSERT_EQ(model.Rows(), expected());
    ASSERT_GT(model.rowCount(), 50);
    ASSERT_LT(model.rowCount(), 1000);
    for (int round = 0; round < 10; ++round) {
        ASSERT_EQ(list.RemoveItem(model.ItemAt(model.rowCount() / 2)), noErr);
        list.AddItem({Song("echo", "Cé").GetSongID()}, 1);
        i_databaseP->GetSong(model.SongAt(0))->Meta().SetString("name"_key, round % 2 == 0 ? "gone" : "echo cé");
        i_databaseP->FlushChanges();
        ASSERT_NO_FATAL_FAILURE(SettleAll(model));
        ASSERT_NO_FATAL_FAILURE(SettleAll(model));
        ASSERT_EQ(model.Rows(), expected());
        ASSERT_EQ(mirror.i_rows, model.Rows());
    }
    model.SetFilter({});
    EXPECT_EQ(model.Rows(), list.GetSortedList());
}

TEST_F(SongTableModel, EditsWhatItsKeyAllows) {
    CPlayList& list = UserList();
    CSong& song = Song("old", "artist");
    const PLItemID item = list.AddItem({song.GetSongID()});
    CSongTableModel model(*i_databaseP);
    model.SetColumns({"name"_key, "drtn"_key, "PICH"_key, "Duet"_key, "PLME"_key});
    model.SetList(list.ID());
    EXPECT_TRUE(model.setData(model.index(0, 0), "new", Qt::EditRole));
    EXPECT_EQ(song.Name(), "new");
    EXPECT_FALSE(model.index(0, 1).flags().testFlag(Qt::ItemIsEditable));   // the duration is the file's
    EXPECT_FALSE(model.setData(model.index(0, 1), "1:00", Qt::EditRole));
    EXPECT_TRUE(model.setData(model.index(0, 2), 12, Qt::EditRole));   // the song's, which is what plays
    EXPECT_EQ(song.Meta().GetInteger("PICH"_key), 12);
    LibrarySettings settings;
    settings.tuneRowsB = true;
    i_databaseP->SetSettings(settings);
    EXPECT_TRUE(model.setData(model.index(0, 2), 3, Qt::EditRole));   // of this singer, in this row
    EXPECT_EQ(list.ValueOf(item, "PICH"_key).Integer(), 3);
    EXPECT_EQ(song.Meta().GetInteger("PICH"_key), 12);
    const std::vector<MenuItem> pitches = MenuItemsOf(MetaManager().GetTraits("PICH"_key));
    ASSERT_EQ(pitches.size(), 25U);
    EXPECT_EQ(pitches.front().text, "+12");
    EXPECT_EQ(pitches.back().value, -12);
    EXPECT_TRUE(model.setData(model.index(0, 3), Qt::Checked, Qt::CheckStateRole));
    EXPECT_EQ(song.Meta().GetBool("Duet"_key), BoolValueType::kTrue);
    EXPECT_EQ(model.data(model.index(0, 3), Qt::CheckStateRole).toInt(), Qt::Checked);

    // A tempo in the user's form, in a row and in the song: shown, and taken again as it is shown.
    SetDecimalMark(",");
    model.SetColumns({"TMPO"_key});
    for (const PlaylistID where : {list.ID(), kPlaylistID_Library}) {
        i_databaseP->AddSongsToLibrary(std::vector{song.GetSongID()});
        model.SetList(where);
        ASSERT_NO_FATAL_FAILURE(SettleAll(model));
        for (const char* const typedZ : {"1,1", "1.1", " 1,10 "}) {
            (void)model.setData(model.index(0, 0), "1,00", Qt::EditRole);
            EXPECT_TRUE(model.setData(model.index(0, 0), typedZ, Qt::EditRole)) << typedZ;
            EXPECT_EQ(model.data(model.index(0, 0), Qt::EditRole).toString(), "1,10") << typedZ;
        }
        EXPECT_FALSE(model.setData(model.index(0, 0), "fast", Qt::EditRole));
        EXPECT_EQ(model.data(model.index(0, 0), Qt::DisplayRole).toString(), "1,10");
    }
    EXPECT_NEAR(song.Meta().GetFloat("TMPO"_key), 1.1, 1e-9);
    SetDecimalMark(".");
}

TEST(XNumberBox, TakesAPointAndAComma) {
    (void)App();
    for (const QLocale::Language language : {QLocale::German, QLocale::English})
        for (const char* const typedZ : {"2,5", "2.5"}) {
            XNumberBox box;
            box.setLocale(QLocale(language));
            box.setDecimals(2);
            box.setValue(1);
            box.selectAll();
            QTest::keyClicks(&box, typedZ);
            QTest::keyClick(&box, Qt::Key_Return);
            EXPECT_EQ(box.value(), 2.5) << typedZ << language;
        }
}

/** Rows are dragged by id: to another list a copy, within their own order a move, into the library nowhere. */
TEST_F(SongTableModel, DraggedRowsGoWhereTheyMay) {
    CPlayList& list = UserList();
    std::vector<SongID> songs;
    for (const char* const nameZ : {"a", "b", "c", "d"}) songs.push_back(Song(nameZ).GetSongID());
    i_databaseP->AddSongsToLibrary(songs);
    CSongTableModel library(*i_databaseP), table(*i_databaseP);
    table.SetList(list.ID());
    ASSERT_NO_FATAL_FAILURE(SettleAll(library));
    const std::unique_ptr<QMimeData> fromLibrary(
        library.mimeData({library.index(1, 0), library.index(1, 1), library.index(3, 0)}));
    EXPECT_TRUE(table.dropMimeData(fromLibrary.get(), Qt::CopyAction, 0, 0, {}));
    EXPECT_TRUE(table.dropMimeData(fromLibrary.get(), Qt::CopyAction, -1, -1, {}));
    ASSERT_NO_FATAL_FAILURE(SettleAll(table));
    const auto number = [&](std::size_t n) { return Number(songs[n]); };
    EXPECT_EQ(Songs(list), (std::vector{number(1), number(3), number(1), number(3)}));
    EXPECT_FALSE(library.canDropMimeData(fromLibrary.get(), Qt::MoveAction, 0, 0, {}));
    const std::unique_ptr<QMimeData> own(table.mimeData({table.index(3, 0)}));
    EXPECT_TRUE(table.dropMimeData(own.get(), Qt::MoveAction, 0, 0, {}));
    EXPECT_EQ(Songs(list), (std::vector{number(3), number(1), number(3), number(1)}));
    list.SetSort({{"name"_key}}, CPlayList::SortWait::kYes);
    EXPECT_FALSE(table.canDropMimeData(own.get(), Qt::MoveAction, 0, 0, {}));   // between rows in another order
    for (const QByteArray& broken :
         {QByteArray(), QByteArray("\0\0\0", 3), QByteArray("\0\0\0\x63\0\0\0\x63\0", 9), QByteArray(8, '\xff')}) {
        QMimeData data;
        data.setData(CSongTableModel::kRowsMimeZ, broken);
        EXPECT_FALSE(CSongTableModel::DropRows(*i_databaseP, data, list.ID(), 1));
    }
}

}   // namespace
