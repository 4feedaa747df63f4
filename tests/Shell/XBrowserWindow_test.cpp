#include "Shell/XBrowserWindow.h"

#include "Shell/BrowserTest.h"
#include "Shell/CUserInterface_Qt.h"
#include "Shell/XNoticeBar.h"
#include "Shell/XNoticesWindow.h"
#include "Shell/XOutputPanel.h"
#include "Shell/XPreferencesWindow.h"
#include "Shell/XQuestion.h"
#include "Shell/XShortcutSheet.h"
#include "Shell/XTasksWindow.h"

namespace {

TEST_F(BrowserTest, OfSeveralSelectedSongsNoneIsPlayed) {
    auto& table = Find<XSongTable>();
    for (const Command command : {Command::kPlaySelected, Command::kPlayPause}) {
        table.selectAll();
        i_ui.answers = {{0, false}};
        i_windowP->Actions().Get(command).trigger();
        EXPECT_EQ(i_ui.questions.back().buttons.front(), "Deselect");
        EXPECT_TRUE(table.SelectedItems().empty());
        EXPECT_EQ(i_play.State(), PlayState::kIdle);
    }
    EXPECT_EQ(i_ui.questions.size(), 2U);
}

TEST_F(BrowserTest, SpacePlaysButNeverInATextField) {
    Count(Command::kPlayPause);
    auto& table = Find<XSongTable>();
    table.setFocus();
    QTest::keyClick(&table, Qt::Key_Space);
    EXPECT_EQ(i_askedL, 1);
    auto& sources = Find<XSourceList>();
    sources.setFocus();
    QTest::keyClick(&sources, Qt::Key_Space);
    EXPECT_EQ(i_askedL, 2);

    Search().setFocus();
    QTest::keyClicks(&Search(), "a b");
    EXPECT_EQ(Search().text(), "a b");
    EXPECT_EQ(i_askedL, 2);
    Search().clear();
    table.setFocus();
    Turn();

    table.setCurrentIndex(table.model()->index(0, 0));
    table.EditCurrent();   // a cell that is edited is a text field, too
    auto* const editorP = table.findChild<QLineEdit*>();
    ASSERT_NE(editorP, nullptr);
    editorP->selectAll();
    QTest::keyClicks(editorP, "New name");
    EXPECT_EQ(editorP->text(), "New name");
    EXPECT_EQ(i_askedL, 2);
    QTest::keyClick(editorP, Qt::Key_Return);
    Turn();   // the toolkit takes it after the key
    EXPECT_EQ(i_databaseP->GetSong(i_songs[0])->Name(), "New name");
    EXPECT_EQ(i_askedL, 2);
}

TEST_F(BrowserTest, WhateverIsMappedATextFieldKeepsItsPlainKeys) {
    Count(Command::kNext);
    i_prefs.SetBool("Single-key commands", true);
    i_windowP->FollowPreferences();
    XActions& actions = i_windowP->Actions();
    actions.Keys().SetKeys(Command::kNext,
                           {QKeySequence(Qt::Key_X), QKeySequence(Qt::Key_Left), QKeySequence(Qt::Key_Backspace),
                            QKeySequence("Shift+Y"), QKeySequence("Ctrl+J"), QKeySequence(Qt::Key_F7)});
    actions.Keys().SetKeys(Command::kSeekBack, {});
    actions.KeysChanged();
    Search().setFocus();
    QTest::keyClicks(&Search(), "xyz");
    QTest::keyClick(&Search(), Qt::Key_Y, Qt::ShiftModifier);
    QTest::keyClick(&Search(), Qt::Key_Backspace);
    QTest::keyClick(&Search(), Qt::Key_Left);
    EXPECT_EQ(i_askedL, 0);
    EXPECT_EQ(Search().text(), "xyz");
    EXPECT_EQ(Search().cursorPosition(), 2);
    QTest::keyClick(&Search(), Qt::Key_J, Qt::ControlModifier);   // commanding keys work everywhere
    QTest::keyClick(&Search(), Qt::Key_F7);
    EXPECT_EQ(i_askedL, 2);
    auto& table = Find<XSongTable>();
    table.setFocus();
    QTest::keyClick(&table, Qt::Key_X);
    QTest::keyClick(&table, Qt::Key_Left);
    EXPECT_EQ(i_askedL, 4);
}

/** A song's name that is typed in a list is looked for; it must not mute, detune or stop the one that plays. */
TEST_F(BrowserTest, WhatIsTypedInAListIsSearchedUnlessSingleKeysAreCommands) {
    for (const CommandRow& row : CommandTable())
        if (IsOfShow(row)) Count(row.command);
    auto& table = Find<XSongTable>();
    const auto type = [](const char* textZ) {
        for (const char c : std::string_view(textZ)) QTest::keyClick(QApplication::focusWidget(), c);
    };
    const auto press = [](int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(QApplication::focusWidget(), static_cast<Qt::Key>(key), modifiers);
    };
    for (QWidget* const listP : std::initializer_list<QWidget*>{&table, &Find<XSourceList>()}) {
        listP->setFocus();
        type("mama 0 v");
        EXPECT_EQ(Search().text(), "mama 0 v");
        EXPECT_TRUE(Search().hasFocus());
        press(Qt::Key_Down);
        type("9");   // another search
        EXPECT_EQ(Search().text(), "9");
        // Escape takes back one thing after the other, and leaves the room's screen alone.
        press(Qt::Key_Escape);
        EXPECT_EQ(Search().text(), "");
        EXPECT_TRUE(table.hasFocus());
        static_cast<CSongTableModel*>(table.model())->Settle();
        table.selectRow(1);
        press(Qt::Key_Escape);
        EXPECT_TRUE(table.SelectedItems().empty());
        press(Qt::Key_Escape);
    }
    for (const int key : {Qt::Key_Right, Qt::Key_Left, Qt::Key_Plus, Qt::Key_Minus, Qt::Key_Comma}) press(key);
    EXPECT_EQ(i_askedL, 0);
    Search().clear();
    table.setFocus();
    for (const auto& [key, held] : std::initializer_list<std::pair<int, Qt::KeyboardModifiers>>{
             {Qt::Key_Space, {}}, {Qt::Key_F, {}}, {Qt::Key_Right, Qt::AltModifier}, {Qt::Key_M, Qt::ControlModifier}})
        press(key, held);
    EXPECT_EQ(i_askedL, 4);
    i_prefs.SetBool("Single-key commands", true);
    i_windowP->FollowPreferences();
    type("m0");
    press(Qt::Key_Escape);
    EXPECT_EQ(i_askedL, 6);
    EXPECT_EQ(Search().text(), "");
}

TEST_F(BrowserTest, AKeyInConflictWorksForNeither) {
    Count(Command::kNext);
    Count(Command::kStop);
    XActions& actions = i_windowP->Actions();
    actions.Keys().SetKeys(Command::kNext, {QKeySequence("Ctrl+X"), QKeySequence("Ctrl+T")});
    actions.Keys().SetKeys(Command::kStop, {QKeySequence("Ctrl+X")});
    actions.KeysChanged();
    auto& table = Find<XSongTable>();
    table.setFocus();
    QTest::keyClick(&table, Qt::Key_X, Qt::ControlModifier);
    EXPECT_EQ(i_askedL, 0);
    QTest::keyClick(&table, Qt::Key_T, Qt::ControlModifier);   // its other key is its own
    EXPECT_EQ(i_askedL, 1);
}

/** Return is the key of a row, of a list, and of a button that has the focus. */
TEST_F(BrowserTest, ReturnDoesWhatTheFocusIsOn) {
    Count(Command::kPlaySelected);
    Find<XSongTable>().setFocus();
    QTest::keyClick(&Find<XSongTable>(), Qt::Key_Return);
    EXPECT_EQ(i_askedL, 1);
    Find<XSourceList>().setFocus();
    QTest::keyClick(&Find<XSourceList>(), Qt::Key_Return);
    EXPECT_EQ(i_askedL, 1);
    EXPECT_TRUE(Find<XSongTable>().hasFocus());
    Count(Command::kPlayPause);
    auto* const playP = i_windowP->findChild<QToolButton*>("play");
    playP->setFocus();
    QTest::keyClick(playP, Qt::Key_Return);
    EXPECT_EQ(i_askedL, 2);
}

TEST_F(BrowserTest, RemovingFromTheLibraryIsAskedAndFromAListIsNot) {
    CPlayList& list = UserList();
    for (const SongID song : i_songs) list.AddItem({song});
    auto& table = Find<XSongTable>();
    table.selectRow(1);
    table.setFocus();
    i_ui.answers = {{1, false}, {0, false}};   // no, then yes
    Turn();
    QTest::keyClick(&table, Qt::Key_Delete);
    EXPECT_EQ(i_databaseP->Library().Count(), 3U);
    QTest::keyClick(&table, Qt::Key_Delete);
    EXPECT_EQ(i_databaseP->Library().Count(), 2U);
    EXPECT_EQ(Songs(list), (std::vector{Number(i_songs[0]), Number(i_songs[2])}));
    ASSERT_EQ(i_ui.questions.size(), 2U);
    EXPECT_EQ(i_ui.questions[0].safeIndex, 1U);

    Turn();
    Find<XSourceList>().Select(list.ID());
    Turn();
    table.selectRow(0);
    table.setFocus();
    QTest::keyClick(&table, Qt::Key_Delete);
    EXPECT_EQ(Songs(list), std::vector{Number(i_songs[2])});
    EXPECT_EQ(i_databaseP->Library().Count(), 2U);
    EXPECT_EQ(i_ui.questions.size(), 2U);
}

TEST_F(BrowserTest, WhatIsTypedIntoACellStaysWhenRowsChange) {
    auto& table = Find<XSongTable>();
    auto& model = *static_cast<CSongTableModel*>(table.model());
    table.selectRow(1);
    table.EditCurrent();
    auto* const editorP = table.findChild<QLineEdit*>();
    ASSERT_NE(editorP, nullptr);
    EXPECT_EQ(editorP->selectedText(), "Beta");
    model.SetPlaying(kPlaylistID_Library, model.ItemAt(0), i_songs[0]);   // all rows are told of
    EXPECT_EQ(editorP->selectedText(), "Beta");
    QTest::keyClicks(editorP, "Delta");
    model.SetPlaying(PlaylistID{0}, SDB_kNoItem, SongID{0});
    QTest::keyClick(editorP, Qt::Key_Return);
    Turn();
    EXPECT_EQ(i_databaseP->GetSong(i_songs[1])->Name(), "Delta");
}

TEST_F(BrowserTest, ListsAreMadeRenamedAndDeletedByKeys) {
    auto& sources = Find<XSourceList>();
    i_windowP->Actions().Get(Command::kNewList).trigger();
    auto* const editorP = sources.findChild<QLineEdit*>();   // its name can be typed at once
    ASSERT_NE(editorP, nullptr);
    editorP->selectAll();
    QTest::keyClicks(editorP, "Friday");
    i_databaseP->AddSongsToLibrary(
        std::array{Song("Epsilon", "Nobody").GetSongID()});   // the lists are told anew meanwhile
    Turn();
    QTest::keyClicks(editorP, " night");
    QTest::keyClick(editorP, Qt::Key_Return);
    Turn();
    CPlayList* const listP = i_databaseP->GetPlayList(kSourceDB_PLAYLIST);
    ASSERT_NE(listP, nullptr);
    EXPECT_EQ(listP->Name(), "Friday night");
    EXPECT_EQ(sources.Selected(), listP->ID());
    const auto labels = i_windowP->findChildren<QLabel*>("songTitle");
    EXPECT_TRUE(std::ranges::any_of(labels, [](const QLabel* labelP) { return labelP->text() == "Friday night"; }));
    sources.setFocus();
    i_ui.answers = {{0, false}};
    QTest::keyClick(&sources, Qt::Key_Delete);
    Turn();
    EXPECT_EQ(i_databaseP->GetPlayList(kSourceDB_PLAYLIST), nullptr);
    EXPECT_EQ(sources.Selected(), kPlaylistID_Library);
    EXPECT_EQ(i_ui.questions.front().text,
              "Are you sure you want to permanently delete playlist “Friday night”?  You can not undo this action.");
}

// ---- Drops ----

TEST_F(BrowserTest, FilesThatAreDroppedStayWithWhoeverDraggedThem) {
    QMimeData files;
    files.setUrls({QUrl::fromLocalFile("/nowhere/Song.mp3")});
    int askedL = 0;
    QObject::connect(&Find<XSourceList>(), &XSourceList::FilesDropped, [&] { ++askedL; });
    QObject::connect(static_cast<CSongTableModel*>(Find<XSongTable>().model()), &CSongTableModel::FilesDropped,
                     [&] { ++askedL; });
    QWidget* const places[] = {Find<XSongTable>().viewport(), Find<XSourceList>().viewport()};
    for (QWidget* const placeP : places)
        for (const bool copyB : {true, false}) {
            const Qt::DropActions able = copyB ? Qt::CopyAction | Qt::MoveAction : Qt::DropActions(Qt::MoveAction);
            QDropEvent drop({40, 20}, able, &files, Qt::LeftButton, Qt::ShiftModifier);   // a move is proposed
            ASSERT_EQ(drop.dropAction(), Qt::MoveAction);
            QDragEnterEvent enter({40, 20}, able, &files, Qt::LeftButton, Qt::ShiftModifier);
            QApplication::sendEvent(placeP, &enter);
            ASSERT_TRUE(enter.isAccepted());
            askedL = 0;
            QApplication::sendEvent(placeP, &drop);
            EXPECT_EQ(askedL, copyB ? 1 : 0);
            EXPECT_EQ(drop.dropAction(),
                      copyB ? Qt::CopyAction : Qt::IgnoreAction);   // told of a move, it would delete
        }
}

// ---- The commands on songs ----

TEST_F(BrowserTest, CommandsOnSongsAreThereWhenTheyMakeSense) {
    const auto set = [&](std::size_t n, SDB_SongFile type, const char* nameZ) {
        (void)i_databaseP->GetSong(i_songs[n])->SetFile(type, CFileRef(i_folder / nameZ), CSong::StatusCheck::kSkip);
    };
    set(0, SDB_SongFile_AUDIO, "a.mp3");
    set(0, SDB_SongFile_VIDEO, "a.cdg");
    set(1, SDB_SongFile_ZIP, "b.zip");
    i_databaseP->GetSong(i_songs[2])->SetMissing(true);
    auto& table = Find<XSongTable>();
    const struct {
        std::vector<int> rows;
        bool zipB, unzipB, locateB, revealB;
    } cases[] = {{{}, false, false, false, false},
                 {{0}, true, false, false, true},
                 {{1}, false, true, false, true},
                 {{2}, false, false, true, true},
                 {{0, 1, 2}, true, true, false, true}};
    for (const auto& c : cases) {
        table.clearSelection();
        for (const int row : c.rows)
            table.selectionModel()->select(table.model()->index(row, 0),
                                           QItemSelectionModel::Select | QItemSelectionModel::Rows);
        const auto onB = [&](Command command) { return i_windowP->Actions().Get(command).isEnabled(); };
        EXPECT_EQ(onB(Command::kZip), c.zipB) << c.rows.size();
        EXPECT_EQ(onB(Command::kUnzip), c.unzipB) << c.rows.size();
        EXPECT_EQ(onB(Command::kLocateMissing), c.locateB) << c.rows.size();
        EXPECT_EQ(onB(Command::kReveal), c.revealB) << c.rows.size();
        EXPECT_EQ(onB(Command::kTrashOriginals), c.revealB) << c.rows.size();
    }
}

TEST_F(BrowserTest, EachListKeepsItsColumns) {
    auto& list = UserList();
    auto& table = Find<XSongTable>();
    auto& model = static_cast<CSongTableModel&>(*table.model());
    const auto shown = [&] {
        std::string keys;
        for (int place = 0; place < table.horizontalHeader()->count(); ++place)
            keys +=
                MetaKeyText(model.Columns()[static_cast<std::size_t>(table.horizontalHeader()->logicalIndex(place))]);
        return keys;
    };
    const auto show = [&](PlaylistID id) {
        Turn();
        Find<XSourceList>().Select(id);
        Turn();
    };
    const std::string factory = shown();
    show(list.ID());
    EXPECT_EQ(shown(), factory);
    table.horizontalHeader()->moveSection(0, 2);
    const std::string dragged = shown();
    ASSERT_NE(dragged, factory);
    show(kPlaylistID_Library);
    EXPECT_EQ(shown(), factory);
    QMenu menu;
    table.FillColumnMenu(menu);
    const auto actions = menu.findChildren<QAction*>();
    const auto choose = [&](const QString& title) {
        const auto it = std::ranges::find_if(actions, [&](const QAction* actionP) { return actionP->text() == title; });
        ASSERT_NE(it, actions.end()) << title.toStdString();
        (*it)->trigger();
    };
    ASSERT_NO_FATAL_FAILURE(choose("Genre"));
    const std::string wider = shown();
    ASSERT_EQ(wider.size(), factory.size() + 4);
    ASSERT_NO_FATAL_FAILURE(choose("Use These Columns for New Lists"));
    show(list.ID());
    EXPECT_EQ(shown(), dragged);
    show(kPlaylistID_Library);
    EXPECT_EQ(shown(), wider);
    const PlaylistID later = i_databaseP->AddPlaylist(kSourceDB_PLAYLIST, "Later").ID();
    show(later);
    EXPECT_EQ(shown(), wider);
    // Another start.
    CSongTableModel again(*i_databaseP);
    const XSongTable window(again, i_prefs, i_windowP->Actions());
    again.SetList(list.ID());
    std::string kept;
    for (const MetaKey key : again.Columns()) kept += MetaKeyText(key);
    EXPECT_EQ(kept, dragged);
}

TEST_F(BrowserTest, ATaskIsShownAndEndedByItsButton) {
    CTaskList tasks;
    auto viewP = tasks.Open(i_host.i_loop, "find missing");
    bool askedB = false;
    viewP->OnCancel([&] { askedB = true; });
    viewP->SetSteps(1, 4);
    XTasksWindow window(tasks);
    window.Follow(tasks.Rows());
    i_windowP->ShowTasks(tasks.Rows());
    auto* const buttonP = window.findChild<QPushButton*>();
    ASSERT_NE(buttonP, nullptr);
    EXPECT_EQ(window.findChild<QProgressBar*>()->value(), 250);
    EXPECT_EQ(i_windowP->findChild<QToolButton*>("tasks")->text(), "Find missing 25 %");
    buttonP->click();
    EXPECT_TRUE(askedB);
    EXPECT_FALSE(buttonP->isEnabled());
    viewP.reset();
    window.Follow(tasks.Rows());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(window.findChild<QPushButton*>(), nullptr);
}

// ---- Preferences ----

/** Whatever is set holds at once, and is shown again by the next window. */
TEST_F(BrowserTest, PreferencesHoldAtOnce) {
    XPreferencesWindow window(i_prefs, i_play, i_windowP->Actions(), nullptr);
    const auto boxes = window.findChildren<QCheckBox*>();
    EXPECT_GT(boxes.size(), 15);
    for (QCheckBox* const boxP : boxes) {
        const std::string key = boxP->objectName().toStdString();
        const bool wasB = boxP->isChecked();
        boxP->setChecked(!wasB);
        EXPECT_EQ(i_prefs.GetByName(key), CCFValue(!wasB)) << key;
    }
    const struct {
        const char* keyZ;
        double shown, stored;
    } numbers[] = {{"Sync Slip increment (300ths)", 0.5, 150},
                   {"Tempo change increment (percent)", 3, 3},
                   {"Video Window Opacity", 60, 0.6},
                   {"Browser Font Size", 20, 20},
                   {"Number of cached songs", 7, 7}};
    for (const auto& n : numbers) {
        auto* const boxP = window.findChild<QDoubleSpinBox*>(n.keyZ);
        ASSERT_NE(boxP, nullptr) << n.keyZ;
        boxP->setValue(n.shown);
        EXPECT_NEAR(i_prefs.GetByName(n.keyZ)->Number().value_or(0), n.stored, 1e-6) << n.keyZ;
    }
    const char* const choices[] = {"Look (0=desktop, 1=dark, 2=light)",
                                   "Video Drawing (0=automatic, 1=processor, 2=OpenGL)"};
    for (const char* const keyZ : choices) {
        window.findChild<QComboBox*>(keyZ)->setCurrentIndex(2);
        EXPECT_EQ(i_prefs.GetByName(keyZ), CCFValue(2)) << keyZ;
    }
    i_windowP->FollowPreferences();
    EXPECT_EQ(Find<XSongTable>().font().pointSize(), 20);
    EXPECT_GE(Find<XSongTable>().rowHeight(0), QFontMetrics(Find<XSongTable>().font()).height());
    const XPreferencesWindow next(i_prefs, i_play, i_windowP->Actions(), nullptr);
    for (const QCheckBox* const boxP : next.findChildren<QCheckBox*>())
        EXPECT_EQ(CCFValue(boxP->isChecked()), i_prefs.GetByName(boxP->objectName().toStdString()))
            << boxP->text().toStdString();
    for (const char* const keyZ : choices) EXPECT_EQ(next.findChild<QComboBox*>(keyZ)->currentIndex(), 2) << keyZ;
    for (const auto& n : numbers)
        EXPECT_NEAR(next.findChild<QDoubleSpinBox*>(n.keyZ)->value(), n.shown, 1e-6) << n.keyZ;
}

TEST_F(BrowserTest, AnOutputIsChosenWithItsDelayWhileTheMachineThinks) {
    XOutputPanel panel(i_play, i_prefs);
    auto* const delayP = panel.findChild<QSpinBox*>();
    const auto buttons = [&] { return panel.findChildren<QRadioButton*>(); };
    ASSERT_EQ(buttons().size(), 1);   // the machine has not answered, and the window works
    delayP->setValue(120);
    EXPECT_EQ(i_play.PictureDelay(), 120);
    i_gateRef->release();
    ASSERT_TRUE(RunUntil([&] { return buttons().size() == 3; }));
    EXPECT_EQ(buttons()[2]->accessibleName(), "Television");
    buttons()[2]->click();
    EXPECT_EQ(i_prefs.GetString("Audio Output Device"), "Television");
    EXPECT_EQ(delayP->value(), 0);
    delayP->setValue(-40);
    buttons()[0]->click();
    EXPECT_EQ(delayP->value(), 120);
    EXPECT_EQ(i_play.PictureDelay(), 120);
    buttons()[2]->click();
    EXPECT_EQ(delayP->value(), -40);
}

TEST_F(BrowserTest, AnAnswerOfTheMachineAfterItsPanelHasGoneIsNothing) {
    std::make_unique<XOutputPanel>(i_play, i_prefs).reset();
    i_gateRef->release();
    bool overB = false;
    (void)i_play.AskOutputDevices([&](const auto&) { overB = true; });
    i_gateRef->release();
    EXPECT_TRUE(RunUntil([&] { return overB; }));
}

TEST_F(BrowserTest, TheSheetShowsEveryKey) {
    CKeyMap map;
    map.SetKeys(Command::kStop, {QKeySequence("Ctrl+Alt+F9")});
    const XShortcutSheet sheet(map, nullptr);
    QStringList texts;
    for (const QLabel* const labelP : sheet.findChildren<QLabel*>()) texts << labelP->text();
    for (const CommandRow& row : CommandTable()) {
        if (map.KeysOf(row.command).isEmpty()) continue;
        EXPECT_TRUE(texts.contains(row.titleZ)) << row.titleZ;
        EXPECT_TRUE(texts.contains(KeysText(map.KeysOf(row.command)))) << row.titleZ;
    }
}

/** Nothing overlaps, and nothing is cut, on a small screen at twice the size of its pixels and on a large one; volume and
    output are always in sight, and so are rows. */
TEST_F(BrowserTest, FitsSmallAndLargeScreens) {
    for (const QSize size : {QSize(560, 300), QSize(681, 330), QSize(880, 560), QSize(1024, 640), QSize(1920, 1080)}) {
        i_windowP->resize(size);
        Turn();
        ASSERT_EQ(i_windowP->size(), size);   // its least size is no larger
        std::vector<const QWidget*> leaves;
        for (const QWidget* const widgetP : i_windowP->findChild<QWidget*>("transport")->findChildren<QWidget*>())
            if (widgetP->isVisible() && widgetP->findChildren<QWidget*>().isEmpty()) leaves.push_back(widgetP);
        ASSERT_GT(leaves.size(), 10U);
        for (const char* const nameZ : {"Volume", "Sound output", "Remaining", "Position"})
            EXPECT_TRUE(std::ranges::any_of(
                leaves, [&](const auto* leafP) { return leafP->accessibleName().startsWith(nameZ); }))
                << nameZ << " at " << size.width();
        EXPECT_GE(Find<XSongTable>().viewport()->height(), 2 * Find<XSongTable>().rowHeight(0)) << size.height();
        const auto place = [&](const QWidget* widgetP) {
            return QRect(widgetP->mapTo(i_windowP.get(), QPoint()), widgetP->size());
        };
        for (const QWidget* const aP : leaves) {
            EXPECT_TRUE(i_windowP->rect().contains(place(aP)));
            for (const QWidget* const bP : leaves)
                EXPECT_TRUE(aP == bP || !place(aP).intersects(place(bP)))
                    << aP->accessibleName().toStdString() << " / " << bP->accessibleName().toStdString();
        }
    }
}

}   // namespace
