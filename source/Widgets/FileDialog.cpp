#include "Widgets/FileDialog.h"

#include <QFileDialog>

QFileDialog* MakeFileDialog(QWidget* parentP, const QString& title, const QString& folder) {
    auto* const dialogP = new QFileDialog(parentP, title, folder);   // deletes itself
    dialogP->setAttribute(Qt::WA_DeleteOnClose);
    dialogP->setOption(QFileDialog::DontUseNativeDialog);
    dialogP->setModal(false);
    return dialogP;
}

void ShowFileDialog(QFileDialog& dialog, std::function<void(const QStringList& files)> chosen) {
    QObject::connect(&dialog, &QDialog::finished, &dialog, [&dialog, chosen = std::move(chosen)](int result) {
        if (result == QDialog::Accepted && !dialog.selectedFiles().isEmpty()) chosen(dialog.selectedFiles());
    });
    dialog.show();
}
