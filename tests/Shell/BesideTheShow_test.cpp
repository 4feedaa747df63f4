#include "Shell/BrowserTest.h"
#include "Shell/CUserInterface_Qt.h"
#include "Shell/XNoticeBar.h"
#include "Shell/XNoticesWindow.h"
#include "Shell/XPreferencesWindow.h"
#include "Shell/XQuestion.h"
#include "Shell/XShortcutSheet.h"

namespace {

/** A dialog stands beside the show: no window waits for it, and its keys are not those of the show. */
TEST_F(BrowserTest, TheShowGoesOnWhateverDialogStands) {
    Count(Command::kPlayPause);
    Count(Command::kVolumeUp);
    const auto open = [&](auto make) {
        make();
        for (QWidget* const windowP : QApplication::topLevelWidgets())
            if (auto* const dialogP = qobject_cast<QDialog*>(windowP); dialogP != nullptr && dialogP->isVisible())
                return dialogP;
        return static_cast<QDialog*>(nullptr);
    };
    CUserInterface_Qt ui;
    std::vector<std::size_t> answers;
    const Question question{.title = "Sure?",
                            .text = "Stop “Alpha”?",
                            .buttons = {"Yes", "No"},
                            .defaultIndex = 1,
                            .safeIndex = 1,
                            .checkBox = {}};
    const auto command = [&](Command c) { return [this, c] { i_windowP->Actions().Get(c).trigger(); }; };
    const std::pair<const char*, std::function<void()>> dialogs[] = {
        {"shortcuts", command(Command::kShortcuts)},
        {"preferences", command(Command::kPreferences)},
        {"notices", command(Command::kShowNotices)},
        {"files", command(Command::kOpenFiles)},
        {"folder", [&] { ChooseFolderThen(ui, "Where?", [](const auto&) {}); }},
        {"question",
         [&] { AskThen(ui, question, [&](const Answer& answer) { answers.push_back(answer.buttonIndex); }); }},
    };
    for (const auto& [nameZ, make] : dialogs) {
        SCOPED_TRACE(nameZ);
        const QPointer<QDialog> dialogP = open(make);
        ASSERT_NE(dialogP, nullptr);
        dialogP->activateWindow();   // else its parent counts as active, and has the keys
        Turn();
        EXPECT_FALSE(dialogP->isModal());
        EXPECT_TRUE(QTest::qWaitForWindowActive(dialogP, 120'000));
        i_askedL = 0;
        for (auto* const buttonP : dialogP->findChildren<QPushButton*>()) {
            if (!buttonP->isVisible() || !buttonP->isEnabled()) continue;
            ASSERT_TRUE(RunUntil([&] {   // a file dialog gives the focus to its field once it stands
                buttonP->setFocus();
                QApplication::processEvents();
                return buttonP->hasFocus();
            }));
            QTest::keyClick(buttonP, Qt::Key_Space);
            EXPECT_EQ(std::exchange(i_askedL, 0), 1) << buttonP->text().toStdString();
            QTest::keyClick(buttonP, Qt::Key_Up, Qt::ControlModifier);
            EXPECT_EQ(std::exchange(i_askedL, 0), 1) << buttonP->text().toStdString();
            break;
        }
        EXPECT_TRUE(dialogP->isVisible());
        EXPECT_TRUE(answers.empty());
        if (nameZ == std::string_view("question")) {
            make();   // asked again: the one that stands comes to the front
            Turn();
            EXPECT_EQ(answers, std::vector<std::size_t>{1});
            const auto buttons = dialogP->findChildren<QPushButton*>();
            const auto yes =
                std::ranges::find_if(buttons, [](const auto* buttonP) { return buttonP->text().remove('&') == "Yes"; });
            ASSERT_NE(yes, buttons.end());
            EXPECT_TRUE((*yes)->isVisible() && (*yes)->isEnabled());
            (*yes)->click();
            EXPECT_EQ(answers.size(), 2U);
        } else {
            QTest::keyClick(dialogP, Qt::Key_Escape);
        }
        EXPECT_TRUE(dialogP.isNull() || !dialogP->isVisible());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        i_windowP->activateWindow();
    }
}

TEST_F(BrowserTest, AQuestionOutlivesTheDialogThatItCameOver) {
    CUserInterface_Qt ui;
    std::optional<std::size_t> answer;
    i_windowP->Actions().Get(Command::kPreferences).trigger();
    QPointer<QDialog> under = i_windowP->findChild<XPreferencesWindow*>();
    under->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(under, 120'000));
    AskThen(ui,
            {.title = "Sure?",
             .text = "Stop?",
             .buttons = {"Yes", "No"},
             .defaultIndex = 0,
             .safeIndex = 1,
             .checkBox = {}},
            [&](const Answer& given) { answer = given.buttonIndex; });
    under->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(under.isNull());
    auto* const boxP = i_windowP->findChild<XQuestion*>();
    ASSERT_NE(boxP, nullptr);
    EXPECT_TRUE(boxP->isVisible());
    boxP->findChildren<QPushButton*>().front()->click();
    EXPECT_EQ(answer, 0U);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

    // One that goes unanswered has its safe answer.
    AskThen(ui,
            {.title = "Sure?",
             .text = "Stop?",
             .buttons = {"Yes", "No"},
             .defaultIndex = 0,
             .safeIndex = 1,
             .checkBox = {}},
            [&](const Answer& given) { answer = given.buttonIndex; });
    delete i_windowP->findChild<XQuestion*>();
    EXPECT_EQ(answer, 1U);
    std::optional<bool> chosenB;
    ChooseFolderThen(ui, "Where?", [&](const auto& folder) { chosenB = folder.has_value(); });
    delete i_windowP->findChild<QFileDialog*>();
    EXPECT_EQ(chosenB, false);
}

/** Space and keys with Ctrl mean the show, letters choose from the menu. */
TEST_F(BrowserTest, TheShowGoesOnWithAMenuOpen) {
    Count(Command::kPlayPause);
    Count(Command::kVolumeUp);
    QMenu& menu = *i_windowP->menuBar()->actions().front()->menu();
    QMenu inner("Inner", &menu);
    for (const auto& [key, modifiers] : {std::pair{Qt::Key_Space, Qt::NoModifier}, {Qt::Key_Up, Qt::ControlModifier}}) {
        menu.popup(i_windowP->mapToGlobal(QPoint(10, 10)));
        inner.popup(i_windowP->mapToGlobal(QPoint(60, 60)));
        QTest::keyClick(&inner, Qt::Key_Q);
        EXPECT_TRUE(menu.isVisible());
        QTest::keyClick(&inner, key, modifiers);
        EXPECT_EQ(i_askedL, 0);   // not from inside the menu
        Turn();
        EXPECT_EQ(std::exchange(i_askedL, 0), 1);
        EXPECT_FALSE(menu.isVisible());
        EXPECT_FALSE(inner.isVisible());
    }
}

/** What is told stays until it is read, takes nothing from who works, and moves no row. */
TEST_F(BrowserTest, NoticesStandBesideTheShowUntilTheyAreRead) {
    auto& table = Find<XSongTable>();
    auto& bar = Find<XNoticeBar>();
    const auto words = [&] { return bar.isVisible() ? bar.findChild<QLabel*>()->text().toStdString() : "-"; };
    const auto button = [&](const char* nameZ) { return bar.findChild<QToolButton*>(nameZ); };
    EXPECT_EQ(words(), "-");
    table.setFocus();
    const QPoint row = table.viewport()->mapToGlobal(table.visualRect(table.model()->index(1, 0)).topLeft());
    i_notices.Add("The disk is full", "<b>/a</b>");
    i_notices.Add("The song could not be played", "");
    i_notices.Add("The disk is full", "<b>/a</b>");
    Turn();
    EXPECT_EQ(words(), "The disk is full: <b>/a</b> (2 times)");
    EXPECT_TRUE(table.hasFocus());
    EXPECT_EQ(table.viewport()->mapToGlobal(table.visualRect(table.model()->index(1, 0)).topLeft()), row);
    int takenL = 0;
    i_notices.Offer({"Go Back", [&] { ++takenL; }}, CClock::Get().SteadyT() + 3600);
    EXPECT_EQ(button("offer")->text(), "Go Back");
    button("offer")->setFocus(Qt::TabFocusReason);
    QTest::keyClick(button("offer"), Qt::Key_Return);
    EXPECT_EQ(takenL, 1);
    i_notices.Offer({"Go Back", [&] { ++takenL; }}, CClock::Get().SteadyT() + 3600);
    i_notices.Add("Something else", "");
    EXPECT_EQ(button("offer")->text(), "Go Back");   // which has little time
    EXPECT_TRUE(button("offer")->isVisible());
    i_notices.SetRead(i_notices.All().back().id);
    button("read")->click();
    EXPECT_EQ(takenL, 1);
    EXPECT_EQ(words(), "The disk is full: <b>/a</b> (2 times)");   // which was not read with the offer
    button("read")->click();
    EXPECT_EQ(words(), "The song could not be played");
    QTest::keyClick(&table, Qt::Key_4, Qt::ControlModifier);   // all of them, which are read then
    EXPECT_EQ(words(), "-");
    auto& list = Find<XNoticesWindow>();
    EXPECT_FALSE(list.isModal());
    EXPECT_EQ(list.findChild<QListWidget*>()->count(), 3);
    ExpectNames(list);
}

}   // namespace
