#include "Shell/CUserInterface_Qt.h"

#include <QApplication>
#include <QCheckBox>
#include <QDesktopServices>
#include <QFileDialog>
#include <QInputDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QUrl>

#include "Shell/QtText.h"
#include "Shell/XProgressWindow.h"

void CUserInterface_Qt::Alert(std::string_view message, std::string_view detail) {
    QMessageBox box(QMessageBox::Warning, QApplication::applicationDisplayName(), QtText(message), QMessageBox::Ok);
    box.setTextFormat(Qt::PlainText);
    box.setInformativeText(QtText(detail));
    box.exec();
}

Answer CUserInterface_Qt::Ask(const Question& question) {
    QMessageBox box(QMessageBox::Question, QtText(question.title), QtText(question.text));
    box.setTextFormat(Qt::PlainText);
    std::vector<QPushButton*> buttonsP;   // owned by the box
    for (const std::string& label : question.buttons)
        buttonsP.push_back(box.addButton(QtText(label), QMessageBox::ActionRole));
    if (question.defaultIndex < buttonsP.size()) box.setDefaultButton(buttonsP[question.defaultIndex]);
    if (question.safeIndex < buttonsP.size()) box.setEscapeButton(buttonsP[question.safeIndex]);
    QCheckBox* checkP = nullptr;   // owned by the box
    if (!question.checkBox.empty()) {
        checkP = new QCheckBox(QtText(question.checkBox));
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
    const QString folder = QFileDialog::getExistingDirectory(nullptr, QtText(prompt));
    if (folder.isEmpty()) return std::nullopt;
    return std::filesystem::path(folder.toStdString());
}

std::optional<std::size_t> CUserInterface_Qt::PickFromList(std::string_view prompt, std::span<const std::string> rows) {
    QStringList items;
    for (const std::string& row : rows) items << QtText(row);
    QInputDialog dialog;
    dialog.setLabelText(QtText(prompt));
    dialog.setComboBoxItems(items);
    dialog.setOption(QInputDialog::UseListViewForComboBoxItems);
    if (dialog.exec() != QDialog::Accepted) return std::nullopt;
    const qsizetype index = items.indexOf(dialog.textValue());
    if (index < 0) return std::nullopt;
    return static_cast<std::size_t>(index);
}

bool CUserInterface_Qt::OpenPage(std::string_view url) { return QDesktopServices::openUrl(QUrl(QtText(url))); }

void CUserInterface_Qt::Beep() { QApplication::beep(); }

void CUserInterface_Qt::DismissDialogs() {
    for (QWidget* const windowP : QApplication::topLevelWidgets())
        if (auto* const dialogP = qobject_cast<QDialog*>(windowP); dialogP != nullptr && dialogP->isVisible())
            dialogP->reject();
}

bool CUserInterface_Qt::AlertsMuted() const {
    constexpr Qt::KeyboardModifiers kBoth = Qt::ControlModifier | Qt::AltModifier;
    return (QGuiApplication::queryKeyboardModifiers() & kBoth) == kBoth;
}
