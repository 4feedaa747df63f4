#include <clocale>
#include <cstdlib>

#include "App/CApp.h"
#include "App/CTaskList.h"
#include "App/LibraryVersions.h"
#include "Core/Localize.h"
#include "Shell/AboutBox.h"
#include "Shell/BrowserTest.h"
#include "Shell/XListPicker.h"
#include "Shell/XNoticesWindow.h"
#include "Shell/XPreferencesWindow.h"
#include "Shell/XShortcutSheet.h"
#include "Shell/XTasksWindow.h"
#include "SongFiles/LibraryDialogs.h"
#include "Widgets/CCatalogueTranslator.h"
#include "Widgets/QtText.h"
#include "Widgets/XElidedLabel.h"

// What the windows show, in a language whose texts are accented, end in "~" and are a third longer than the English ones
// (tools/make_test_locale): none is missed by the catalogue, and none is cut off.

namespace {

/** The process speaks the language of the tests. Before any window is made. */
struct TestLanguage {
    TestLanguage() {
        ::setenv("LANGUAGE", "xx", 1);
        std::setlocale(LC_MESSAGES, "C.UTF-8");   // in "C" itself nothing is looked up
        ChooseCatalogue(std::filesystem::path(VOPLA_BINARY_DIR) / "locale");
        App();
        QApplication::installTranslator(&translator);
    }
    ~TestLanguage() {
        QApplication::removeTranslator(&translator);
        ::unsetenv("LANGUAGE");
    }
    CCatalogueTranslator translator;
};

class TextsTest : private TestLanguage, public BrowserTest {
protected:
    /** It is of the catalogue, or no text of ours: numbers, signs, names of keys, songs and forms. */
    static bool IsSaid(QString text) {
        text.remove("&");
        static const QStringList toolkits{"Close", "Scroll Left", "Scroll Right"};   // it has catalogues of its own
        if (toolkits.contains(text)) return true;
        static const QRegularExpression ours(
            "Alpha|Beta|Gamma|Somebody|Vopla|OpenGL|MP3|CD\\+G|System "
            "Default|Loudspeaker|Television|[0-9.,:%+]+|\\b(ms|s|pt|dB|MB|kB)\\b");
        static const QRegularExpression keys(
            "\\b(Ctrl|Alt|Shift|Meta|Space|Return|Enter|Esc|Del|Left|Right|Up|Down|PgUp|PgDown|F\\d+|[A-Z])\\b");
        const bool saidB = text.contains('~');
        for (const LibraryVersion& library : LibraryVersions())
            text.remove(QtText(library.name + " " + library.version));
        text.remove(QtText(CApp::DisplayName())).remove(QString("Qt ") + qVersion());
        text.remove(keys).remove(ours);
        return saidB || !text.contains(QRegularExpression("[A-Za-z]{2}"));
    }
    void Note(const QWidget& window, const QObject& of, const QString& text) {
        if (!IsSaid(text))
            missed << QString("%1 / %2: “%3”").arg(window.windowTitle(), of.metaObject()->className(), text);
        ++textsL;
    }
    void NoteCut(const QWidget& window, const QWidget& of, const QString& text, bool fitsB) {
        if (!fitsB && !text.isEmpty())
            cut << QString("%1 / %2: “%3”").arg(window.windowTitle(), of.metaObject()->className(), text);
    }
    /** All that the window shows now. */
    void Look(QWidget& window) {
        Turn();
        if (const char* const folderZ = std::getenv("VOPLA_PHOTOS"); folderZ != nullptr)
            window.grab().save(QString("%1/%2.png").arg(folderZ).arg(++photosL));
        Note(window, window, window.windowTitle());
        for (const QAction* const actionP : window.findChildren<QAction*>()) {
            Note(window, *actionP, actionP->text());
            Note(window, *actionP, actionP->toolTip());
        }
        for (const QMenu* const menuP : window.findChildren<QMenu*>()) Note(window, *menuP, menuP->title());
        for (QWidget* const widgetP : window.findChildren<QWidget*>()) {
            Note(window, *widgetP, widgetP->toolTip());
            Note(window, *widgetP, widgetP->accessibleName());
            Note(window, *widgetP, widgetP->accessibleDescription());
            if (const auto* const barP = qobject_cast<QTabBar*>(widgetP))
                for (int n = 0; n < barP->count(); ++n) Note(window, *barP, barP->tabText(n));
            if (const auto* const headerP = qobject_cast<QHeaderView*>(widgetP);
                headerP != nullptr && headerP->orientation() == Qt::Horizontal && headerP->isVisibleTo(&window))
                for (int n = 0; n < headerP->count(); ++n) {
                    const QString title = headerP->model()->headerData(n, Qt::Horizontal).toString();
                    Note(window, *headerP, title);
                    NoteCut(window, *headerP, title, headerP->sectionSize(n) >= headerP->sectionSizeHint(n));
                }
            if (const auto* const comboP = qobject_cast<QComboBox*>(widgetP))
                for (int n = 0; n < comboP->count(); ++n) Note(window, *comboP, comboP->itemText(n));
            if (!widgetP->isVisibleTo(&window)) continue;
            if (const auto* const labelP = qobject_cast<QLabel*>(widgetP)) {
                Note(window, *labelP, labelP->text());
                const bool fitsB = labelP->wordWrap() ? labelP->heightForWidth(labelP->width()) <= labelP->height()
                                                      : labelP->sizeHint().width() <= labelP->width();
                NoteCut(window, *labelP, labelP->text(), fitsB || qobject_cast<const XElidedLabel*>(labelP) != nullptr);
            }
            if (const auto* const buttonP = qobject_cast<QAbstractButton*>(widgetP)) {
                Note(window, *buttonP, buttonP->text());
                NoteCut(window, *buttonP, buttonP->text(), buttonP->sizeHint().width() <= buttonP->width());
            }
        }
    }
    void ShowAndLook(QWidget& window) {
        window.show();
        Look(window);
    }

    QStringList missed, cut;
    int textsL = 0, photosL = 0;
};

TEST_F(TextsTest, AllAreOfTheCatalogueAndFit) {
    i_notices.Add(Localize("Your library cannot be written."), {}, {});
    (void)i_commandsP->NewPlaylist({});
    for (const QSize size : {QSize(1180, 760), QSize(700, 420)}) {
        i_windowP->resize(size);
        Look(*i_windowP);
    }
    XPreferencesWindow preferences(i_prefs, i_play, i_windowP->Actions(), nullptr);
    preferences.show();
    auto& tabs = *preferences.findChild<QTabWidget*>();
    for (int n = 0; n < tabs.count(); ++n) {
        tabs.setCurrentIndex(n);
        Look(preferences);
    }
    XNoticesWindow notices(i_notices, nullptr);
    ShowAndLook(notices);
    CTaskList list;
    XTasksWindow tasks(list);
    const std::unique_ptr<CTaskView> task = list.Open(i_host.MainLoop(), Localize("Zip songs"));
    task->SetSteps(12, 300);
    tasks.Follow(list.Rows());
    ShowAndLook(tasks);
    ShowAbout(*i_windowP);
    Look(*i_windowP->findChild<QDialog*>(QString(), Qt::FindDirectChildrenOnly));
    XShortcutSheet sheet(i_windowP->Keys(), nullptr);
    ShowAndLook(sheet);
    XListPicker picker(*i_databaseP, QObject::tr("Add “%1” to List").arg("Alpha"), nullptr);
    ShowAndLook(picker);
    for (int n = 0; n <= static_cast<int>(LibraryDialog::kLastSong); ++n) {
        const Question question = LibraryQuestion(static_cast<LibraryDialog>(n), "Alpha");
        std::vector<std::string> texts = question.buttons;
        texts.insert(texts.end(), {question.title, question.text});
        for (const std::string& text : texts) Note(*i_windowP, picker, QtText(text));
    }
    QMenu columns;
    i_windowP->findChild<XSongTable*>()->FillColumnMenu(columns);
    for (const QMenu* const menuP : columns.findChildren<QMenu*>()) Note(*i_windowP, *menuP, menuP->title());
    for (const QAction* const actionP : columns.findChildren<QAction*>()) Note(*i_windowP, *actionP, actionP->text());
    EXPECT_GT(textsL, 500);
    missed.removeDuplicates();
    cut.removeDuplicates();
    EXPECT_TRUE(missed.isEmpty()) << missed.join('\n').toStdString();
    EXPECT_TRUE(cut.isEmpty()) << cut.join('\n').toStdString();
}

}   // namespace
