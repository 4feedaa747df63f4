#include "Shell/CUserInterface_Qt.h"

#include <QApplication>
#include <QCheckBox>
#include <QDesktopServices>
#include <QDialogButtonBox>
#include <QDrag>
#include <QFileDialog>
#include <QLabel>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QUrl>
#include <QVBoxLayout>

#include "App/CNotices.h"
#include "Core/CApp.h"
#include "Platform/CFolders.h"
#include "Shell/QtText.h"
#include "Shell/XBrowserWindow.h"
#include "Shell/XProgressWindow.h"
#include "Shell/XVideoWindow.h"

namespace {

/** A label of the engine's: "&" is a letter there. */
QString Label(std::string_view text) { return QtText(text).replace('&', "&&"); }

/** In front of the window that the user works with; never where the audience looks while there is another. */
QWidget* Front() {
    QWidget* const activeP = QApplication::activeWindow();
    if (activeP != nullptr && qobject_cast<XVideoWindow*>(activeP) == nullptr) return activeP;
    for (QWidget* const windowP : QApplication::topLevelWidgets())
        if (qobject_cast<XBrowserWindow*>(windowP) != nullptr && windowP->isVisible()) {
            // With a minimized window its dialogs are out of sight, and hold up all others.
            if (windowP->isMinimized()) windowP->setWindowState(windowP->windowState() & ~Qt::WindowMinimized);
            return windowP;
        }
    return activeP;
}

}   // namespace

void CUserInterface_Qt::Alert(std::string_view message, std::string_view detail) {
    if (gApp != nullptr && gApp->IsLibraryLoaded() && gApp->HasMainWindow() && !gApp->IsShutdown())
        gApp->Notices().Add(message, detail);
    else
        AlertAndWait(message, detail);
}

void CUserInterface_Qt::AlertAndWait(std::string_view message, std::string_view detail) {
    QMessageBox box(QMessageBox::Warning, QtText(CApp::DisplayName()), QtText(message), QMessageBox::Ok,
                    Front());
    box.setTextFormat(Qt::PlainText);
    box.setInformativeText(QtText(detail));
    // The box keeps the form of its own text alone; names of files may look like marks.
    if (auto* const detailP = box.findChild<QLabel*>("qt_msgbox_informativelabel"); detailP != nullptr)
        detailP->setTextFormat(Qt::PlainText);
    box.exec();
}

Answer CUserInterface_Qt::Ask(const Question& question) {
    QMessageBox box(QMessageBox::Question, QtText(question.title), QtText(question.text), QMessageBox::NoButton,
                    Front());
    box.setTextFormat(Qt::PlainText);
    std::vector<QPushButton*> buttonsP;   // owned by the box
    for (const std::string& label : question.buttons)
        buttonsP.push_back(box.addButton(Label(label), QMessageBox::ActionRole));
    if (question.defaultIndex < buttonsP.size()) box.setDefaultButton(buttonsP[question.defaultIndex]);
    if (question.safeIndex < buttonsP.size()) box.setEscapeButton(buttonsP[question.safeIndex]);
    QCheckBox* checkP = nullptr;   // owned by the box
    if (!question.checkBox.empty()) {
        checkP = new QCheckBox(Label(question.checkBox));
        checkP->setChecked(question.checkedB);
        box.setCheckBox(checkP);
    }
    box.exec();
    const auto clicked = std::ranges::find(buttonsP, box.clickedButton());
    const bool checkedB = checkP != nullptr ? checkP->isChecked() : question.checkedB;
    if (clicked == buttonsP.end()) return {question.safeIndex, checkedB};
    return {static_cast<std::size_t>(clicked - buttonsP.begin()), checkedB};
}

std::unique_ptr<CProgressView> CUserInterface_Qt::OpenProgress(std::string_view title) {
    return std::make_unique<XProgressWindow>(title);
}

std::optional<std::filesystem::path> CUserInterface_Qt::ChooseFolder(std::string_view prompt) {
    const QString folder = QFileDialog::getExistingDirectory(Front(), QtText(prompt), QtText(CFolders::Music().string()));
    if (folder.isEmpty()) return std::nullopt;
    return std::filesystem::path(folder.toStdString());
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
    if (dialog.exec() != QDialog::Accepted || listP->currentRow() < 0) return std::nullopt;
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
