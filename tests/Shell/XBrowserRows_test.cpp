// Rows that go from list to list by keys and menus.
#include "Shell/BrowserTest.h"
#include "Shell/RowClipboard.h"
#include "Shell/SongColumns.h"
#include "Shell/XListPicker.h"

namespace {

class RowsTest : public BrowserTest {
protected:
    void Show(PlaylistID list) {
        Turn();
        Find<XSourceList>().Select(list);
        Turn();
    }
    void Do(Command command) { i_windowP->Actions().Get(command).trigger(); }
    QString Status() { return Find<QStatusBar>().currentMessage(); }
    CPlayList* Named(const char* nameZ) const {
        for (CPlayList* const listP : i_databaseP->PlayLists())
            if (listP->Name() == nameZ) return listP;
        return nullptr;
    }
    std::vector<std::int32_t> Numbers(std::initializer_list<std::size_t> places) const {
        std::vector<std::int32_t> numbers;
        for (const std::size_t n : places) numbers.push_back(Number(i_songs[n]));
        return numbers;
    }
};

TEST_F(RowsTest, AListIsChosenByItsName) {
    CPlayList& list = UserList();
    auto& table = Find<XSongTable>();
    const auto pick = [&](const char* typedZ) {
        Do(Command::kAddToList);
        auto* const pickerP = i_windowP->findChild<XListPicker*>();
        ASSERT_NE(pickerP, nullptr);
        EXPECT_FALSE(pickerP->isModal());   // the show goes on beside it
        auto* const fieldP = pickerP->findChild<QLineEdit*>();
        QTest::keyClicks(fieldP, typedZ);
        QTest::keyClick(fieldP, Qt::Key_Return);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    };
    table.selectRow(1);
    ASSERT_NO_FATAL_FAILURE(pick("li"));
    EXPECT_EQ(Songs(list), Numbers({1}));
    table.selectAll();
    ASSERT_NO_FATAL_FAILURE(pick("Friday"));
    CPlayList* const madeP = Named("Friday");
    ASSERT_NE(madeP, nullptr);
    EXPECT_EQ(Songs(*madeP), Numbers({0, 1, 2}));
    EXPECT_EQ(Status(), "3 songs are on “Friday” now.");
}

TEST_F(RowsTest, RowsAreCopiedAsSongsTextAndFiles) {
    (void)i_databaseP->GetSong(i_songs[0])
        ->SetFile(SDB_SongFile_ZIP, CFileRef(i_folder / "a b.zip"), CSong::StatusCheck::kSkip);
    CPlayList& list = UserList();
    list.AddItem({i_songs[2]});
    list.AddItem({i_songs[2]});
    auto& table = Find<XSongTable>();
    table.setFocus();
    table.selectRow(0);
    table.selectionModel()->select(table.model()->index(1, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    QTest::keyClick(&table, Qt::Key_C, Qt::ControlModifier);
    const QMimeData& copy = *QApplication::clipboard()->mimeData();
    EXPECT_EQ(copy.text(), "Alpha\tSomebody\t\t\t\nBeta\tSomebody\t\t\t");
    EXPECT_EQ(copy.urls(), QList{QUrl::fromLocalFile(QString::fromStdString((i_folder / "a b.zip").string()))});
    Do(Command::kPaste);   // into the library
    EXPECT_EQ(i_databaseP->Library().Count(), 3U);
    EXPECT_TRUE(Status().startsWith("The library has these songs")) << Status().toStdString();
    Show(list.ID());
    table.selectRow(0);
    QTest::keyClick(&table, Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(Songs(list), Numbers({2, 0, 1, 2}));   // behind the row that is selected
    // What another process copied, or what is cut short, means nothing here.
    const QByteArray bytes = copy.data("application/x-vopla-songs");
    QByteArray foreign = bytes, shorter = bytes;
    foreign[7] = static_cast<char>(foreign[7] ^ 1);
    shorter.chop(1);
    for (const QByteArray& wrong : {foreign, shorter}) {
        QMimeData other;
        other.setData("application/x-vopla-songs", wrong);
        EXPECT_FALSE(CopiedSongs(*i_databaseP, other).has_value());
    }
}

TEST_F(RowsTest, ADragInASortedListSaysWhyNothingMoves) {
    CPlayList& list = UserList();
    for (const std::size_t n : {2U, 0U, 1U}) list.AddItem({i_songs[n]});
    list.SetSort({{"name"_key}}, CPlayList::SortWait::kYes);
    Show(list.ID());
    auto& table = Find<XSongTable>();
    const std::unique_ptr<QMimeData> rows(table.model()->mimeData({table.model()->index(2, 0)}));
    const QPoint at = table.visualRect(table.model()->index(0, 0)).center();
    QDragEnterEvent enter(at, Qt::MoveAction, rows.get(), Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(table.viewport(), &enter);
    QDragMoveEvent move(at, Qt::MoveAction, rows.get(), Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(table.viewport(), &move);
    EXPECT_TRUE(move.isAccepted());   // or no drop would come
    QDropEvent drop(at, Qt::MoveAction, rows.get(), Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(table.viewport(), &drop);
    EXPECT_FALSE(drop.isAccepted());
    EXPECT_EQ(Songs(list), Numbers({2, 0, 1}));
    auto* const menuP = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menuP, nullptr);
    EXPECT_TRUE(menuP->actions().front()->text().contains("sorted by “Song Name”"));
    menuP->actions().back()->trigger();
    menuP->close();
    EXPECT_EQ(MainKey(list.Spec()), "stIx"_key);
}

TEST_F(RowsTest, NothingPlaysNextWhileNothingPlays) {
    Find<XSongTable>().selectRow(1);
    Do(Command::kPlayNext);
    EXPECT_TRUE(Status().startsWith("Nothing plays: Return")) << Status().toStdString();
    EXPECT_EQ(i_databaseP->GetPlayList(kSourceDB_PLAYLIST), nullptr);
}

TEST_F(RowsTest, TwoListsOfOneNameAreAsked) {
    CPlayList& first = UserList();
    Do(Command::kNewList);
    Do(Command::kNewList);
    EXPECT_NE(Named("Playlist"), nullptr);
    ASSERT_NE(Named("Playlist 2"), nullptr);
    i_ui.answers = {{1, false}, {0, false}};   // no, then yes
    const PlaylistID last = Named("Playlist 2")->ID();
    EXPECT_EQ(i_commandsP->RenamePlaylist(last, "LIST"), userCanceledErr);
    EXPECT_EQ(i_databaseP->GetPlayList(last)->Name(), "Playlist 2");
    EXPECT_EQ(i_commandsP->RenamePlaylist(last, first.Name()), noErr);
    EXPECT_EQ(i_databaseP->GetPlayList(last)->Name(), first.Name());
    EXPECT_EQ(i_commandsP->RenamePlaylist(last, "Another"), noErr);
    EXPECT_EQ(i_ui.questions.size(), 2U);
    EXPECT_EQ(i_ui.questions[0].safeIndex, 1U);
}

/** A click beside the names, or with Control, takes no mark away: Del means the list that is marked. */
TEST_F(RowsTest, TheListOfTheKeysIsAlwaysMarked) {
    auto& sources = Find<XSourceList>();
    Show(UserList().ID());
    const QPoint at = sources.visualItemRect(sources.currentItem()).center();
    QTest::mouseClick(sources.viewport(), Qt::LeftButton, Qt::ControlModifier, at);
    EXPECT_EQ(sources.selectedItems(), QList{sources.currentItem()});
    QTest::mouseClick(sources.viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(20, sources.viewport()->height() - 4));
    EXPECT_EQ(sources.selectedItems(), QList{sources.currentItem()});
}

TEST_F(RowsTest, BeforeAListGetsEmptyItIsAsked) {
    CPlayList& list = UserList();
    for (const SongID song : i_songs) list.AddItem({song});
    SDB_Selection rows(&list);
    rows.SetItems(list.Items()->UserOrder());
    i_ui.answers = {{1, false}};
    EXPECT_EQ(i_commandsP->DeleteTracks(rows, CLibraryCommands::WarnLast::kYes), userCanceledErr);
    EXPECT_EQ(list.Count(), 3U);
    EXPECT_NE(i_ui.questions.back().text.find("“List”"), std::string::npos);
    i_prefs.SetBool("warn about deleting last song", false);
    Show(list.ID());
    Turn();
    Find<XSongTable>().selectAll();
    Do(Command::kRemoveFromList);
    EXPECT_EQ(list.Count(), 0U);
    EXPECT_EQ(i_ui.questions.size(), 1U);
}

/** Preferences of this window, each by what it does. */
TEST_F(RowsTest, ThePreferencesOfTheWindowHold) {
    auto& table = Find<XSongTable>();
    CPlayList& list = UserList();
    Show(list.ID());
    const auto editableB = [&] { return table.model()->index(0, 0).flags().testFlag(Qt::ItemIsEditable); };
    list.AddItem({i_songs[0]});
    Turn();
    EXPECT_TRUE(editableB());
    i_prefs.SetBool("Allow Name Editing", false);
    i_windowP->FollowPreferences();
    Turn();
    EXPECT_FALSE(editableB());
    EXPECT_FALSE(Find<XSourceList>().currentItem()->flags().testFlag(Qt::ItemIsEditable));
    EXPECT_FALSE(i_windowP->Actions().Get(Command::kRenameList).isEnabled());
    EXPECT_TRUE(table.model()->index(0, 1).flags().testFlag(Qt::ItemIsEditable));

    auto* const previewP = i_windowP->findChild<QWidget*>("preview");
    ASSERT_NE(previewP, nullptr);
    EXPECT_FALSE(previewP->isVisible());
    i_prefs.SetLong("Artwork Panel height", 200);
    Do(Command::kShowPreview);
    Turn();
    EXPECT_TRUE(i_prefs.GetBool("Show Artwork Panel"));
    EXPECT_TRUE(previewP->isVisible());
    EXPECT_EQ(previewP->height(), 200);

    const auto times = i_windowP->findChildren<QLabel*>("time");
    ASSERT_EQ(times.size(), 2);
    const auto chosen = [&](int n) { return times[n]->property("chosen").toBool(); };
    const int left = times[0]->accessibleName().startsWith("Remaining") ? 0 : 1;
    EXPECT_FALSE(chosen(left));
    QTest::mouseClick(times[left], Qt::LeftButton);
    EXPECT_TRUE(chosen(left));
    EXPECT_FALSE(chosen(1 - left));
    EXPECT_EQ(i_prefs.GetLong("Time display: (0=elapsed, 1=remain)"), 1);
}

/** A second click on a row edits when the time is over, unless it was the first half of a double click. */
TEST_F(RowsTest, ASlowClickEditsAndADoubleClickNever) {
    auto& table = Find<XSongTable>();
    table.setFocus();
    table.selectRow(0);
    table.SetEditWait(0);   // as soon as no second click can come
    const QPoint at = table.visualRect(table.model()->index(0, 0)).center();
    const auto editor = [&] { return table.findChild<QLineEdit*>() != nullptr; };
    QTest::mouseClick(table.viewport(), Qt::LeftButton, Qt::NoModifier, at);
    EXPECT_FALSE(editor());
    ASSERT_TRUE(RunUntil([&] {
        QApplication::processEvents();
        return editor();
    }));
    QTest::keyClick(table.findChild<QLineEdit*>(), Qt::Key_Escape);
    Turn();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    ASSERT_FALSE(editor());
    int playedL = 0;
    QObject::connect(&table, &XSongTable::PlayAsked, [&] { ++playedL; });
    table.SetEditWait(0.75);
    QTest::mouseClick(table.viewport(), Qt::LeftButton, Qt::NoModifier, at);
    QTest::mouseDClick(table.viewport(), Qt::LeftButton, Qt::NoModifier, at);
    EXPECT_EQ(playedL, 1);
    EXPECT_FALSE(table.IsEditComing());
    QTest::mouseClick(table.viewport(), Qt::LeftButton, Qt::NoModifier, at);   // a third click
    EXPECT_FALSE(table.IsEditComing());
    QTest::lastMouseTimestamp += 3000;   // once the hand is still a click is meant again, unless the row plays
    auto& model = *static_cast<CSongTableModel*>(table.model());
    model.SetPlaying(PlaylistID{0}, SDB_kNoItem, SongID{0});
    QTest::mouseClick(table.viewport(), Qt::LeftButton, Qt::NoModifier, at);
    EXPECT_TRUE(table.IsEditComing());
    model.SetPlaying(PlaylistID{0}, SDB_kNoItem, model.SongAt(0));
    QTest::mouseClick(table.viewport(), Qt::LeftButton, Qt::NoModifier, at);
    EXPECT_FALSE(table.IsEditComing());
    const QPoint other = table.visualRect(table.model()->index(1, 0)).center();
    table.selectRow(1);
    QTest::mouseClick(table.viewport(), Qt::LeftButton, Qt::NoModifier, other);
    EXPECT_TRUE(table.IsEditComing());
    Count(Command::kPlayPause);
    QTest::mouseClick(table.viewport(), Qt::LeftButton, Qt::NoModifier, other);
    QTest::keyClick(&table, Qt::Key_Space);   // a pause right after the click: the next Space must not be typed
    EXPECT_EQ(i_askedL, 1);
    EXPECT_FALSE(table.IsEditComing());
}

/** Each key that is shown to people is offered as a column, or is named here as one that says nothing of a song. */
TEST_F(RowsTest, TheColumnsOfferedTellOfSongs) {
    const std::string others =
        "SNGR nick SNmS SmsN SmsB SmsC SmsR PSNT sgKJ StrN sURL pUSD piIx PLME siID sPLI stor SsID ScID spRL Smpl "
        "stmR ";
    std::set<std::string> offered;
    for (const SongColumnGroup& group : SongColumnGroups())
        for (const MetaKey key : group.keys) {
            EXPECT_TRUE(offered.insert(MetaKeyText(key)).second) << MetaKeyText(key);
            EXPECT_EQ(others.find(MetaKeyText(key) + " "), std::string::npos) << MetaKeyText(key);
        }
    for (const MetaKey key : MetaManager().Keys()) {
        const CDataTraits& traits = MetaManager().GetTraits(key);
        if (traits.Has(kKeyFlag_Hidden) || traits.Title().UTF8().starts_with("* ") || traits.Title().Empty() ||
            traits.Type() == ValType::ValType_NONE || traits.Type() == ValType::ValType_DICT)
            continue;
        EXPECT_NE(offered.contains(MetaKeyText(key)), others.find(MetaKeyText(key) + " ") != std::string::npos)
            << MetaKeyText(key) << " " << traits.Title().UTF8();
    }
}

}   // namespace
