#include "Shell/AboutBox.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QScrollArea>
#include <QVBoxLayout>

#include "App/CApp.h"
#include "App/LibraryVersions.h"
#include "Widgets/CWindowPlace.h"
#include "Widgets/QtText.h"

void ShowAbout(QWidget& parent) {
    auto* const dialogP = new QDialog(&parent);
    dialogP->setAttribute(Qt::WA_DeleteOnClose);
    dialogP->setWindowTitle(QDialog::tr("About Vopla"));
    dialogP->setAccessibleName(dialogP->windowTitle());
    auto* const nameP = new QLabel(QtText(CApp::DisplayName()));
    nameP->setObjectName("songTitle");
    auto* const wordsP = new QLabel(QDialog::tr("A host for karaoke shows. It runs with these libraries:"));
    wordsP->setObjectName("quiet");
    QString versions = QString("Qt %1").arg(qVersion());
    for (const LibraryVersion& library : LibraryVersions())
        versions += QString("\n%1 %2").arg(QtText(library.name), QtText(library.version));
    auto* const versionsP = new QLabel(versions);
    versionsP->setTextFormat(Qt::PlainText);
    versionsP->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    versionsP->setAccessibleName(QDialog::tr("Libraries"));
    versionsP->setAccessibleDescription(versions);
    auto* const scrollP = new QScrollArea;
    scrollP->setWidget(versionsP);
    scrollP->setWidgetResizable(true);
    scrollP->setFrameShape(QFrame::NoFrame);
    scrollP->setFocusPolicy(Qt::NoFocus);   // the text in it has the keys
    auto* const buttonsP = new QDialogButtonBox(QDialogButtonBox::Close);
    QObject::connect(buttonsP, &QDialogButtonBox::rejected, dialogP, &QDialog::reject);
    auto* const columnP = new QVBoxLayout(dialogP);
    columnP->setContentsMargins(20, 16, 20, 14);
    columnP->addWidget(nameP);
    columnP->addWidget(wordsP);
    columnP->addWidget(scrollP, 1);
    columnP->addWidget(buttonsP);
    dialogP->resize(440, 420);
    (void)CWindowPlace::Of(*dialogP);
    dialogP->show();
    dialogP->activateWindow();
}
