#include "Shell/XBrowserMenus.h"

#include <QMainWindow>
#include <QMenuBar>

#include "Play/CPlayControl.h"
#include "Shell/XActions.h"
#include "Widgets/QtText.h"

XBrowserMenus::XBrowserMenus(QMainWindow& window, XActions& actions, const CPlayControl& play)
    : QObject(&window), i_actions(actions), i_play(play) {
    using enum Command;
    constexpr Command kLine = kQuit;   // in the lists below: a line, as Quit stands in none but the first
    const auto add = [&](const QString& title, std::initializer_list<Command> commands) {
        QMenu* const menuP = window.menuBar()->addMenu(title);
        for (const Command command : commands)
            if (command == kLine)
                menuP->addSeparator();
            else
                menuP->addAction(&i_actions.Get(command));
        return menuP;
    };
    QMenu* const fileP = add(
        tr("&File"), {kOpenFiles, kOpenFolder, kLine, kNewList, kRenameList, kDeleteList, kLine, kPreferences, kLine});
    fileP->addAction(&i_actions.Get(kQuit));
    add(tr("&Songs"), {kPlaySelected,  kPlayNext,       kAddToList,
                       kLine,          kCopy,           kPaste,
                       kEditCell,      kLine,           kFind,
                       kShowPlaying,   kShowUserOrder,  kUserOrder,
                       kLine,          kReveal,         kConformNames,
                       kZip,           kUnzip,          kLine,
                       kFindMissing,   kLocateMissing,  kRemoveDuplicates,
                       kLine,          kRemoveFromList, kRemoveFromLibrary,
                       kTrashOriginals});
    add(tr("&Play"), {kPlayPause, kStop, kRewind, kLine, kPrevious, kNext, kGoBack, kLine, kSeekBack, kSeekForward,
                      kSeekBackFar, kSeekForwardFar});
    add(tr("S&ound"), {kVolumeUp, kVolumeDown, kMute, kOneLevel, kLine, kPitchUp, kPitchDown, kPitchReset, kLine,
                       kTempoUp, kTempoDown, kTempoReset, kLine, kVocalNext});
    QMenu* const pictureP = add(tr("P&icture"), {kFullScreen});
    // Its key is that of the video windows: here Escape takes back the search.
    pictureP->addAction(i_actions.Get(kLeaveFullScreen).text(), &i_actions.Get(kLeaveFullScreen), &QAction::trigger);
    pictureP->addAction(&i_actions.Get(kNextDisplay));
    i_displaysP = pictureP->addMenu(tr("Full Screen &Display"));
    pictureP->addSeparator();
    FillSlips(*pictureP->addMenu(tr("Sync &Slip")));
    add(tr("&Window"), {kShowVideo, kShowVideo2, kShowPreview, kShowTasks, kShowNotices});
    add(tr("&Help"), {kShortcuts, kAbout});
}

void XBrowserMenus::FillSlips(QMenu& menu) {
    using enum Command;
    menu.menuAction()->setToolTip(tr("Moves the picture against the sound"));
    const auto addPart = [&](std::initializer_list<Command> commands) {
        QAction* const wordsP = menu.addAction(QString());
        wordsP->setEnabled(false);
        for (const Command command : commands) menu.addAction(&i_actions.Get(command));
        return wordsP;
    };
    QAction* const songP = addPart({kSlipSongEarlier, kSlipSongLater, kSlipSongReset});
    menu.addSeparator();
    QAction* const allP = addPart({kSlipAllEarlier, kSlipAllLater, kSlipAllReset});
    connect(&menu, &QMenu::aboutToShow, this, [this, songP, allP] {
        const bool idleB = i_play.State() == PlayState::kIdle;
        songP->setText(idleB ? tr("No song plays") : QtText(i_play.SongSlipText()));
        allP->setText(QtText(i_play.GlobalSlipText()));
    });
}
