#include "Shell/XBrowserMenus.h"

#include <QMainWindow>
#include <QMenuBar>

#include "Play/CPlayControl.h"
#include "Shell/XActions.h"
#include "Widgets/QtText.h"

XBrowserMenus::XBrowserMenus(QMainWindow& window, XActions& actions, const CPlayControl& play)
    : QObject(&window), i_actions(actions), i_play(play) {
    const auto add = [&](const QString& title, CommandMenu which) {
        QMenu* const menuP = window.menuBar()->addMenu(title);
        for (const CommandRow& row : CommandTable()) {
            if (row.menu != which) continue;
            if (row.lineB) menuP->addSeparator();
            QAction& action = i_actions.Get(row.command);
            // The key of the video windows is none here: in this one Escape takes back the search.
            if (row.scope == CommandScope::kVideo)
                menuP->addAction(action.text(), &action, &QAction::trigger);
            else
                menuP->addAction(&action);
        }
        return menuP;
    };
    add(tr("&File"), CommandMenu::kFile);
    add(tr("&Songs"), CommandMenu::kSongs);
    add(tr("&Play"), CommandMenu::kPlay);
    add(tr("S&ound"), CommandMenu::kSound);
    QMenu* const pictureP = add(tr("P&icture"), CommandMenu::kPicture);
    i_displaysP = pictureP->addMenu(tr("Full Screen &Display"));
    pictureP->addSeparator();
    FillSlips(*pictureP->addMenu(tr("Sync &Slip")));
    add(tr("&Window"), CommandMenu::kWindow);
    add(tr("&Help"), CommandMenu::kHelp);
}

void XBrowserMenus::FillSlips(QMenu& menu) {
    menu.menuAction()->setToolTip(tr("Moves the picture against the sound"));
    // Two parts, each under the words that say how far its pictures are moved.
    QAction *songP = nullptr, *allP = nullptr;
    for (const CommandRow& row : CommandTable()) {
        if (row.menu != CommandMenu::kSlip) continue;
        if (row.lineB) menu.addSeparator();
        if (songP == nullptr || row.lineB) {
            QAction* const wordsP = menu.addAction(QString());
            wordsP->setEnabled(false);
            (songP == nullptr ? songP : allP) = wordsP;
        }
        menu.addAction(&i_actions.Get(row.command));
    }
    connect(&menu, &QMenu::aboutToShow, this, [this, songP, allP] {
        const bool idleB = i_play.State() == PlayState::kIdle;
        songP->setText(idleB ? tr("No song plays") : QtText(i_play.SongSlipText()));
        allP->setText(QtText(i_play.GlobalSlipText()));
    });
}
