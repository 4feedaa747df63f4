#include "Shell/XBrowserWindow.h"

#include <QtGui/QAccessible>
#include <QtTest/QTest>
#include <QtWidgets/QtWidgets>

#include "Core/CPreferences.h"
#include "Graphics/CGraphicsPorts.h"
#include "Library/CLibraryCommands.h"
#include "Library/ListTest.h"
#include "Platform/CUserInterface_Scripted.h"
#include "Play/CPlayControl.h"
#include "Play/CPlayHost.h"
#include "Shell/CSongTableModel.h"
#include "Shell/QtApp.h"
#include "Shell/XActions.h"
#include "Shell/XPreferencesWindow.h"
#include "Shell/XShortcutSheet.h"
#include "Shell/XSongTable.h"
#include "Shell/XSourceList.h"

namespace {

/** The main window over a library of its own; nothing plays. */
class BrowserTest : public ListTest, private CPlayHost {
protected:
    BrowserTest() : i_prefs(PrefsFilesFor(i_folder), {.saveAtEndB = false}), i_play(*this) {
        App();
        for (const char* const nameZ : {"Alpha", "Beta", "Gamma"})
            i_songs.push_back(Song(nameZ, "Somebody").GetSongID());
        i_databaseP->AddSongsToLibrary(i_songs);
        i_commandsP = std::make_unique<CLibraryCommands>(*i_databaseP, i_ui);
        i_windowP = std::make_unique<XBrowserWindow>(BrowserSetup{
            .database = *i_databaseP, .play = i_play, .prefs = i_prefs, .commands = *i_commandsP, .portsP = &i_ports});
        i_windowP->show();
        i_windowP->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(i_windowP.get(), 5000));
    }
    ~BrowserTest() override {
        i_windowP.reset();
        i_commandsP.reset();
    }

    template <class Widget>
    Widget& Find() {
        auto* const widgetP = i_windowP->findChild<Widget*>();
        EXPECT_NE(widgetP, nullptr);
        return *widgetP;
    }
    QLineEdit& Search() { return Find<QLineEdit>(); }
    /** Counts what a command is asked to do, instead of doing it. */
    void Count(Command command) {
        QAction& action = i_windowP->Actions().Get(command);
        action.disconnect(SIGNAL(triggered(bool)));
        action.setEnabled(true);
        QObject::connect(&action, &QAction::triggered, i_windowP.get(), [this] { ++i_askedL; });
    }
    void Turn() {
        ASSERT_TRUE(RunUntil([n = 0]() mutable {
            QApplication::processEvents();
            return ++n > 3;
        }));
    }

    CGraphicsPorts i_ports;
    CUserInterface_Scripted i_ui;
    CPreferences i_prefs;
    std::vector<SongID> i_songs;
    CPlayControl i_play;
    std::unique_ptr<CLibraryCommands> i_commandsP;
    std::unique_ptr<XBrowserWindow> i_windowP;
    int i_askedL = 0;

private:
    CSongDatabase& Database() override { return *i_databaseP; }
    CCFPrefDictionary& Preferences() override { return i_prefs; }
    CUserInterface& Ui() override { return i_ui; }
    CGraphicsPorts& Ports() override { return i_ports; }
};

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

TEST_F(BrowserTest, AKeyInConflictWorksForNeither) {
    Count(Command::kNext);
    Count(Command::kStop);
    XActions& actions = i_windowP->Actions();
    actions.Keys().SetKeys(Command::kNext, {QKeySequence(Qt::Key_X), QKeySequence(Qt::Key_N)});
    actions.Keys().SetKeys(Command::kStop, {QKeySequence(Qt::Key_X)});
    actions.KeysChanged();
    auto& table = Find<XSongTable>();
    table.setFocus();
    QTest::keyClick(&table, Qt::Key_X);
    EXPECT_EQ(i_askedL, 0);
    QTest::keyClick(&table, Qt::Key_N);   // its other key is its own
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

TEST_F(BrowserTest, ListsAreMadeRenamedAndDeletedByKeys) {
    auto& sources = Find<XSourceList>();
    i_windowP->Actions().Get(Command::kNewList).trigger();
    auto* const editorP = sources.findChild<QLineEdit*>();   // its name can be typed at once
    ASSERT_NE(editorP, nullptr);
    editorP->selectAll();
    QTest::keyClicks(editorP, "Friday night");
    QTest::keyClick(editorP, Qt::Key_Return);
    Turn();
    CPlayList* const listP = i_databaseP->GetPlayList(kSourceDB_PLAYLIST);
    ASSERT_NE(listP, nullptr);
    EXPECT_EQ(listP->Name(), "Friday night");
    EXPECT_EQ(sources.Selected(), listP->ID());
    sources.setFocus();
    i_ui.answers = {{0, false}};
    QTest::keyClick(&sources, Qt::Key_Delete);
    Turn();
    EXPECT_EQ(i_databaseP->GetPlayList(kSourceDB_PLAYLIST), nullptr);
    EXPECT_EQ(sources.Selected(), kPlaylistID_Library);
    EXPECT_EQ(i_ui.questions.front().text,
              "Are you sure you want to permanantly delete playlist “Friday night”?  You can not undo this action.");
}

// ---- For those who do not see the screen ----

/** What can have the focus, or be pressed, chosen or read as a value. */
bool IsControl(const QWidget& widget) {
    return widget.focusPolicy() != Qt::NoFocus || qobject_cast<const QAbstractButton*>(&widget) != nullptr ||
           qobject_cast<const QAbstractSlider*>(&widget) != nullptr ||
           qobject_cast<const QAbstractItemView*>(&widget) != nullptr;
}

/** Parts that the toolkit makes inside a control, and names by it. */
bool IsInside(const QWidget& widget) {
    if (qobject_cast<const QScrollBar*>(&widget) != nullptr || widget.objectName().startsWith("qt_")) return true;
    for (const QWidget* upP = widget.parentWidget(); upP != nullptr; upP = upP->parentWidget())
        if (qobject_cast<const QComboBox*>(upP) != nullptr || qobject_cast<const QLineEdit*>(upP) != nullptr ||
            qobject_cast<const QTabBar*>(upP) != nullptr || qobject_cast<const QDialogButtonBox*>(upP) != nullptr ||
            qobject_cast<const QMenuBar*>(upP) != nullptr || qobject_cast<const QAbstractItemView*>(upP) != nullptr)
            return true;
    return qobject_cast<const QTabBar*>(&widget) != nullptr || qobject_cast<const QStackedWidget*>(&widget) != nullptr;
}

void ExpectNames(QWidget& top) {
    int controlsL = 0;
    for (const QWidget* const widgetP : top.findChildren<QWidget*>()) {
        if (!IsControl(*widgetP) || IsInside(*widgetP)) continue;
        ++controlsL;
        QAccessibleInterface* const spokenP = QAccessible::queryAccessibleInterface(const_cast<QWidget*>(widgetP));
        ASSERT_NE(spokenP, nullptr);
        const std::string what = std::string(widgetP->metaObject()->className()) + " " +
                                 widgetP->objectName().toStdString() + " in " +
                                 widgetP->parentWidget()->metaObject()->className();
        EXPECT_FALSE(spokenP->text(QAccessible::Name).isEmpty()) << what << " has no name";
        EXPECT_FALSE(spokenP->text(QAccessible::Description).isEmpty()) << what << " has no description";
    }
    EXPECT_GT(controlsL, 1);
}

TEST_F(BrowserTest, EveryControlIsNamedForScreenReaders) {
    ExpectNames(*i_windowP);
    XPreferencesWindow preferences(i_prefs, i_play, i_windowP->Actions(), nullptr);
    ExpectNames(preferences);
}

TEST_F(BrowserTest, TabComesRoundAllControls) {
    i_windowP->activateWindow();
    Search().setFocus();
    std::set<QWidget*> seen;
    for (int n = 0; n < 60 && seen.insert(QApplication::focusWidget()).second; ++n)
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    for (QWidget* const widgetP : i_windowP->findChildren<QWidget*>()) {
        if ((widgetP->focusPolicy() & Qt::TabFocus) == 0 || IsInside(*widgetP) || !widgetP->isEnabled()) continue;
        EXPECT_TRUE(seen.contains(widgetP))
            << widgetP->metaObject()->className() << " " << widgetP->accessibleName().toStdString();
    }
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

/** Nothing overlaps, and nothing is cut, on a small screen and on a large one. */
TEST_F(BrowserTest, FitsSmallAndLargeScreens) {
    for (const QSize size : {QSize(1024, 640), QSize(1920, 1080)}) {
        i_windowP->resize(size);
        Turn();
        ASSERT_EQ(i_windowP->size(), size);   // its least size is no larger
        std::vector<const QWidget*> leaves;
        for (const QWidget* const widgetP : i_windowP->findChild<QWidget*>("transport")->findChildren<QWidget*>())
            if (widgetP->isVisible() && widgetP->findChildren<QWidget*>().isEmpty()) leaves.push_back(widgetP);
        ASSERT_GT(leaves.size(), 15U);
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
