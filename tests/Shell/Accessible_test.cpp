// What people who do not see the screen, or not well, have of the desktop.
#include <cmath>
#include <QtGui/QAccessible>

#include "App/LibraryVersions.h"
#include "Shell/AboutBox.h"
#include "Shell/BrowserTest.h"
#include "Shell/XListPicker.h"
#include "Shell/XOutputPanel.h"
#include "Shell/XPreferencesWindow.h"
#include "Shell/XShortcutSheet.h"
#include "Shell/XTasksWindow.h"
#include "Widgets/XLook.h"

namespace {

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

}   // namespace

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
    EXPECT_GT(controlsL, 0);
}

namespace {

/** All windows, and every dialog that the program makes by itself. */
TEST_F(BrowserTest, EveryControlIsNamedForScreenReaders) {
    ExpectNames(*i_windowP);
    XPreferencesWindow preferences(i_prefs, i_play, i_windowP->Actions(), nullptr);
    ExpectNames(preferences);
    XOutputPanel output(i_play, i_prefs);
    ExpectNames(output);
    XShortcutSheet sheet(i_windowP->Keys(), nullptr);
    ExpectNames(sheet);
    CTaskList tasks;
    const auto viewP = tasks.Open(i_host.i_loop, "find missing");
    viewP->OnCancel([] {});
    XTasksWindow tasksWindow(tasks);
    tasksWindow.Follow(tasks.Rows());
    ExpectNames(tasksWindow);
    XListPicker picker(*i_databaseP, "Add to List", nullptr);
    picker.setAttribute(Qt::WA_DeleteOnClose, false);
    ExpectNames(picker);
    ShowAbout(*i_windowP);
    auto* const aboutP = i_windowP->findChild<QDialog*>();
    ASSERT_NE(aboutP, nullptr);
    ExpectNames(*aboutP);
    for (const auto& [name, version] : LibraryVersions())
        EXPECT_TRUE(std::ranges::any_of(version, [](char c) { return c >= '0' && c <= '9'; })) << name;
    for (QWidget* const boxP : preferences.findChildren<QWidget*>())
        if (qobject_cast<QComboBox*>(boxP) != nullptr || qobject_cast<QAbstractSpinBox*>(boxP) != nullptr) {
            const auto labels = preferences.findChildren<QLabel*>() + output.findChildren<QLabel*>();
            EXPECT_TRUE(std::ranges::any_of(labels, [&](const QLabel* labelP) { return labelP->buddy() == boxP; }))
                << boxP->accessibleName().toStdString() << " is no label's box";
        }
}

TEST_F(BrowserTest, WhatTheTransportAndTheListTellAreValues) {
    const auto spoken = [&](const char* nameZ) {
        for (const QLabel* const labelP : i_windowP->findChildren<QLabel*>())
            if (labelP->accessibleName().startsWith(nameZ)) {
                QAccessibleInterface* const interfaceP =
                    QAccessible::queryAccessibleInterface(const_cast<QLabel*>(labelP));
                return std::pair(interfaceP->text(QAccessible::Name), interfaceP->text(QAccessible::Value));
            }
        return std::pair<QString, QString>();
    };
    EXPECT_EQ(spoken("Elapsed"), std::pair(QString("Elapsed: 0:00"), QString("0:00")));
    EXPECT_EQ(spoken("Remaining"), std::pair(QString("Remaining"), QString()));   // of nothing
    ASSERT_TRUE(RunUntil([&] {   // it says, too, while the list is sorted
        QApplication::processEvents();
        return spoken("Count") == std::pair(QString("Count: 3 songs"), QString("3 songs"));
    }));
    EXPECT_EQ(spoken("Song").second, "Nothing plays");
    EXPECT_EQ(spoken("List").second, "Library");
    auto& model = static_cast<CSongTableModel&>(*Find<XSongTable>().model());
    const auto told = [&](int row) { return model.index(row, 0).data(Qt::AccessibleTextRole).toString(); };
    EXPECT_EQ(told(1), "Beta");
    model.SetPlaying(kPlaylistID_Library, model.ItemAt(1), i_songs[1]);
    EXPECT_EQ(told(1), "Beta, it plays");
    EXPECT_EQ(told(0), "Alpha");
}

TEST_F(BrowserTest, TabComesRoundAllControls) {
    i_windowP->activateWindow();
    Search().setFocus();
    std::set<QWidget*> seen;
    for (int n = 0; n < 60 && seen.insert(QApplication::focusWidget()).second; ++n)
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    for (QWidget* const widgetP : i_windowP->findChildren<QWidget*>()) {
        if ((widgetP->focusPolicy() & Qt::TabFocus) == 0 || IsInside(*widgetP) || !widgetP->isEnabled() ||
            !widgetP->isVisible())
            continue;
        EXPECT_TRUE(seen.contains(widgetP))
            << widgetP->metaObject()->className() << " " << widgetP->accessibleName().toStdString();
    }
}

// ---- For those who do not see it well ----

/** Of the pixels' light, as WCAG has it. */
double Contrast(const QColor& a, const QColor& b) {
    const auto light = [](const QColor& color) {
        const auto linear = [](double part) {
            return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
    };
    const double lightA = light(a), lightB = light(b);
    return (std::max(lightA, lightB) + 0.05) / (std::min(lightA, lightB) + 0.05);
}

TEST(Look, WordsCanBeReadOnTheirGround) {
    (void)App();
    XLook look;
    for (const XLook::Choice choice : {XLook::Choice::kDark, XLook::Choice::kLight}) {
        look.Choose(choice);
        const XLook::Colors& c = XLook::Now();
        const QPalette palette = QApplication::palette();
        const struct {
            const char* whatZ;
            QColor ink, ground;
            double least;
        } pairs[] = {
            {"a selected row", palette.color(QPalette::HighlightedText), palette.color(QPalette::Highlight), 4.5},
            {"a list that is shown", c.text, c.line, 4.5},
            {"a row", palette.color(QPalette::Text), palette.color(QPalette::Base), 4.5},
            {"the row that plays", c.playing, c.stripe, 4.5},
            {"a caption", c.quiet, c.window, 4.5},
            {"a warning", c.warning, c.window, 4.5},
            {"a menu", c.text, c.raised, 4.5},
            {"disabled", palette.color(QPalette::Disabled, QPalette::WindowText), palette.color(QPalette::Window), 3},
            {"a disabled button", palette.color(QPalette::Disabled, QPalette::ButtonText), c.raised, 3},
            {"a disabled field", palette.color(QPalette::Disabled, QPalette::Text), c.field, 3},
            {"the focus", c.accent, c.window, 3},
        };
        for (const auto& pair : pairs)
            EXPECT_GE(Contrast(pair.ink, pair.ground), pair.least)
                << pair.whatZ << (look.IsDark() ? ", dark" : ", light");
    }
}

TEST_F(BrowserTest, WhatIsDraggedIsMarkedOverTheWholeRow) {
    const XLook look;
    auto& table = Find<XSongTable>();
    QImage image(table.viewport()->size(), QImage::Format_RGB32);
    image.fill(Qt::black);
    QPainter painter(&image);
    QStyleOption option;
    option.rect = QRect(table.columnViewportPosition(2), 60, table.columnWidth(2), 0);   // as the view has it
    table.style()->drawPrimitive(QStyle::PE_IndicatorItemViewItemDrop, &option, &painter, &table);
    painter.end();
    for (const int x : {3, image.width() / 2, image.width() - 4})
        EXPECT_NE(image.pixelColor(x, 60), QColor(Qt::black)) << x;
}

}   // namespace
