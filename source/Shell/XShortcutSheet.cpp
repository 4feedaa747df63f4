#include "Shell/XShortcutSheet.h"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QScrollArea>
#include <QVBoxLayout>

#include "Shell/XActions.h"
#include "Widgets/CWindowPlace.h"
#include "Widgets/XLook.h"

namespace {

QLabel* MakeKey(const QString& keys) {
    auto* const labelP = new QLabel(keys);
    labelP->setTextFormat(Qt::PlainText);
    labelP->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    QFont font = labelP->font();
    font.setBold(true);
    labelP->setFont(font);
    return labelP;
}

/** One group: its title, then a row for each command that has a key. */
QWidget* MakeGroup(const CKeyMap& keys, CommandGroup group) {
    auto* const groupP = new QWidget;
    auto* const gridP = new QGridLayout(groupP);
    gridP->setContentsMargins(0, 0, 0, 14);
    gridP->setHorizontalSpacing(18);
    gridP->setVerticalSpacing(5);
    auto* const titleP = new QLabel(QObject::tr(TitleOf(group)));
    titleP->setObjectName("songTitle");
    gridP->addWidget(titleP, 0, 0, 1, 2);
    int row = 1;
    for (const CommandRow& command : CommandTable()) {
        if (command.group != group || keys.KeysOf(command.command).isEmpty()) continue;
        gridP->addWidget(new QLabel(QObject::tr(command.titleZ)), row, 0);
        gridP->addWidget(MakeKey(KeysText(keys.KeysOf(command.command))), row++, 1);
    }
    return groupP;
}

}   // namespace

XShortcutSheet::XShortcutSheet(const CKeyMap& keys, QWidget* parentP) : QDialog(parentP) {
    setWindowTitle(tr("Keyboard Shortcuts"));
    setAccessibleName(windowTitle());
    auto* const sheetP = new QWidget;
    auto* const columnsP = new QHBoxLayout(sheetP);
    columnsP->setContentsMargins(20, 12, 20, 0);
    columnsP->setSpacing(36);
    const std::vector<std::vector<CommandGroup>> columns = {
        {CommandGroup::kPlaying, CommandGroup::kPicture},
        {CommandGroup::kSound},
        {CommandGroup::kSongs, CommandGroup::kLists, CommandGroup::kProgram}};
    for (const auto& groups : columns) {
        auto* const columnP = new QVBoxLayout;
        for (const CommandGroup group : groups) columnP->addWidget(MakeGroup(keys, group));
        columnP->addStretch(1);
        columnsP->addLayout(columnP);
    }
    auto* const scrollP = new QScrollArea;
    scrollP->setWidget(sheetP);
    scrollP->setWidgetResizable(true);
    scrollP->setFrameShape(QFrame::NoFrame);
    scrollP->setAccessibleName(windowTitle());
    scrollP->setAccessibleDescription(tr("The keys of all commands, by groups"));
    auto* const buttonsP = new QDialogButtonBox(QDialogButtonBox::Close);
    connect(buttonsP, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* const layoutP = new QVBoxLayout(this);
    auto* const wordsP =
        new QLabel(tr("In the lists letters and digits search. Keys of playing, sound and picture that have "
                      "neither Ctrl nor Alt, but Space, F and F11, work in the video windows, and "
                      "everywhere when “Single-key commands” is on."));
    wordsP->setObjectName("quiet");
    wordsP->setWordWrap(true);
    layoutP->addWidget(scrollP, 1);
    layoutP->addWidget(wordsP);
    layoutP->addWidget(buttonsP);
    resize(980, 600);
    (void)CWindowPlace::Of(*this);   // it fits the display with its frame
}
