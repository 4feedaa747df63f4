#include "Shell/CUserInterface_Qt.h"

#include <memory>
#include <QApplication>
#include <QDesktopServices>
#include <QDialogButtonBox>
#include <QDrag>
#include <QEventLoop>
#include <QFileDialog>
#include <QLabel>
#include <QListWidget>
#include <QMessageBox>
#include <QUrl>
#include <QVBoxLayout>
#include <utility>

#include "App/CApp.h"
#include "App/CNotices.h"
#include "Platform/CFolders.h"
#include "Shell/XBrowserWindow.h"
#include "Shell/XQuestion.h"
#include "Shell/XVideoWindow.h"
#include "Widgets/FileDialog.h"
#include "Widgets/QtText.h"
#include "Widgets/XProgressWindow.h"

namespace {

/** In front of the KJ's window, which stays to the end; any other, closed meanwhile, would take the dialog along with
    nobody's answer, and on the video window the audience looks. */
QWidget* Front() {
    for (QWidget* const windowP : QApplication::topLevelWidgets())
        if (qobject_cast<XBrowserWindow*>(windowP) != nullptr && windowP->isVisible()) {
            // With a minimized window its dialogs are out of sight, and hold up all others.
            if (windowP->isMinimized()) windowP->setWindowState(windowP->windowState() & ~Qt::WindowMinimized);
            return windowP;
        }
    return nullptr;
}

/** Until it is closed. No other window waits for it. */
void Stand(QDialog& dialog) {
    dialog.setModal(false);
    QEventLoop loop;
    QObject::connect(&dialog, &QDialog::finished, &loop, &QEventLoop::quit);
    dialog.show();
    if (dialog.isVisible()) loop.exec();
}

/** Calls `answered` once: with what `answer` says when the dialog is closed, with `none` when it goes without that. */
template <class T, class Answered, class OfDialog>
void WhenClosed(QDialog& dialog, T none, Answered answered, OfDialog answer) {
    auto onceRef = std::make_shared<Answered>(std::move(answered));
    const auto tell = [onceRef](const T& given) {
        if (*onceRef) std::exchange(*onceRef, nullptr)(given);
    };
    QObject::connect(&dialog, &QDialog::finished, &dialog, [tell, answer](int result) { tell(answer(result)); });
    QObject::connect(&dialog, &QObject::destroyed, [tell, none = std::move(none)] { tell(none); });
}

}   // namespace

void CUserInterface_Qt::Alert(std::string_view message, std::string_view detail) {
    if (gApp != nullptr && gApp->IsLibraryLoaded() && gApp->HasMainWindow() && !gApp->IsShutdown())
        gApp->Notices().Add(message, detail);
    else
        AlertAndWait(message, detail);
}

void CUserInterface_Qt::AlertAndWait(std::string_view message, std::string_view detail) {
    QMessageBox box(QMessageBox::Warning, QtText(CApp::DisplayName()), QtText(message), QMessageBox::Ok, Front());
    box.setTextFormat(Qt::PlainText);
    box.setInformativeText(QtText(detail));
    // The box keeps the form of its own text alone; names of files may look like marks.
    if (auto* const detailP = box.findChild<QLabel*>("qt_msgbox_informativelabel"); detailP != nullptr)
        detailP->setTextFormat(Qt::PlainText);
    Stand(box);
}

Answer CUserInterface_Qt::Ask(const Question& question) {
    XQuestion box(question, AskedFor::kUser, Front());
    Stand(box);
    return box.Answered();
}

void CUserInterface_Qt::AskThen(const Question& question, Answered answered, AskedFor who) {
    for (QWidget* const windowP : QApplication::topLevelWidgets())
        if (auto* const openP = qobject_cast<XQuestion*>(windowP);
            openP != nullptr && openP->isVisible() && openP->Asks(question)) {
            openP->raise();
            openP->activateWindow();
            return answered({question.safeIndex, question.checkedB});
        }
    auto* const boxP = new XQuestion(question, who, Front());
    boxP->setAttribute(Qt::WA_DeleteOnClose);
    WhenClosed(*boxP, Answer{question.safeIndex, question.checkedB}, std::move(answered),
               [boxP](int) { return boxP->Answered(); });
    boxP->show();
}

std::unique_ptr<CProgressView> CUserInterface_Qt::OpenProgress(std::string_view title) {
    return std::make_unique<XProgressWindow>(title);
}

std::optional<std::filesystem::path> CUserInterface_Qt::ChooseFolder(std::string_view prompt) {
    std::optional<std::filesystem::path> folder;
    QEventLoop loop;
    ChooseFolderThen(prompt, [&](std::optional<std::filesystem::path> chosen) {
        folder = std::move(chosen);
        loop.quit();
    });
    loop.exec();
    return folder;
}

void CUserInterface_Qt::ChooseFolderThen(std::string_view prompt, Chosen chosen) {
    auto* const dialogP = MakeFileDialog(Front(), QtText(prompt), QtText(CFolders::Music().string()));
    dialogP->setFileMode(QFileDialog::Directory);
    dialogP->setOption(QFileDialog::ShowDirsOnly);
    using Folder = std::optional<std::filesystem::path>;
    WhenClosed(*dialogP, Folder(), std::move(chosen), [dialogP](int result) {
        const QStringList files = dialogP->selectedFiles();
        if (result != QDialog::Accepted || files.isEmpty()) return Folder();
        return Folder(files.front().toStdString());
    });
    dialogP->show();
}

std::optional<std::size_t> CUserInterface_Qt::PickFromList(std::string_view prompt, std::span<const std::string> rows) {
    QDialog dialog(Front());
    dialog.setWindowTitle(QtText(CApp::DisplayName()));
    auto* const listP = new QListWidget;   // two rows may have the same words: the number counts
    for (const std::string& row : rows) listP->addItem(QtText(row));
    listP->setCurrentRow(0);
    listP->setAccessibleName(QtText(prompt));
    auto* const promptP = new QLabel(QtText(prompt));
    promptP->setTextFormat(Qt::PlainText);
    promptP->setWordWrap(true);
    auto* const buttonsP = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    QObject::connect(buttonsP, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(buttonsP, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    QObject::connect(listP, &QListWidget::itemActivated, &dialog, &QDialog::accept);
    auto* const columnP = new QVBoxLayout(&dialog);
    columnP->addWidget(promptP);
    columnP->addWidget(listP, 1);
    columnP->addWidget(buttonsP);
    Stand(dialog);
    if (dialog.result() != QDialog::Accepted || listP->currentRow() < 0) return std::nullopt;
    return static_cast<std::size_t>(listP->currentRow());
}

bool CUserInterface_Qt::OpenPage(std::string_view url) { return QDesktopServices::openUrl(QUrl(QtText(url))); }

void CUserInterface_Qt::Beep() { QApplication::beep(); }

void CUserInterface_Qt::DismissDialogs() {
    QDrag::cancel();
    while (QWidget* const popupP = QApplication::activePopupWidget())   // a menu runs a loop of its own
        if (!popupP->close()) break;
    for (QWidget* const windowP : QApplication::topLevelWidgets())
        if (auto* const dialogP = qobject_cast<QDialog*>(windowP); dialogP != nullptr && dialogP->isVisible())
            dialogP->reject();
}

bool CUserInterface_Qt::AlertsMuted() const {
    constexpr Qt::KeyboardModifiers kBoth = Qt::ControlModifier | Qt::AltModifier;
    return (QGuiApplication::queryKeyboardModifiers() & kBoth) == kBoth;
}

bool CUserInterface_Qt::IsShiftHeld() const {
    return QGuiApplication::queryKeyboardModifiers().testFlag(Qt::ShiftModifier);
}
