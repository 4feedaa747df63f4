// What the main window changes in the library: adding, removing, deleting.
#include <QPointer>

#include "Core/CAlerts.h"
#include "Core/CLog.h"
#include "Core/CPreferences.h"
#include "Library/AddFilesToLibrary.h"
#include "Library/CLibraryCommands.h"
#include "Play/CPlayControl.h"
#include "Shell/CSongTableModel.h"
#include "Shell/QtText.h"
#include "Shell/XActions.h"
#include "Shell/XBrowserWindow.h"
#include "Shell/XSongTable.h"
#include "Shell/XSourceList.h"

namespace {

constexpr std::size_t kRefused_MostShown = 10;

/** What could not be added, by name, for an alert. */
std::string RefusedText(const AddedFiles& added) {
    std::string text;
    for (std::size_t n = 0; n < std::min(added.refused.size(), kRefused_MostShown); ++n)
        text += added.refused[n].path.filename().string() + ": " + ErrorText(added.refused[n].err) + "\n";
    if (added.refused.size() > kRefused_MostShown)
        text += "and " + std::to_string(added.refused.size() - kRefused_MostShown) + " more, see the log\n";
    return text;
}

}   // namespace

void XBrowserWindow::AddFiles(const QStringList& paths, PlaylistID list, RowIndex where) {
    if (paths.isEmpty()) return;
    std::vector<std::filesystem::path> files;
    for (const QString& path : paths) files.emplace_back(path.toStdString());
    SetStatus(tr("Adding…"));
    // The window may have gone when the disc has been read.
    const QPointer<XBrowserWindow> self(this);
    const OSErr err =
        AddFilesToLibrary(i_setup.database, std::move(files), [self, list, where](const AddedFiles& added) {
            if (self.isNull()) return;
            XBrowserWindow& window = *self;
            CPlayList* const listP = window.i_setup.database.GetPlayList(list);
            if (listP != nullptr && listP->IsModifyable()) {
                std::vector<PLNewItem> items;
                for (const SongID song : added.songs) items.push_back({song});
                if (!items.empty()) listP->AddItemVec(std::move(items), where);
            }
            if (!added.refused.empty()) MessageAlert("Some files could not be added.", RefusedText(added));
            window.SetStatus(added.newL == 1 ? tr("1 new song") : tr("%1 new songs").arg(added.newL));
            if (added.songs.size() == 1) window.ShowAdded(added.songs.front());
        });
    if (Failed(err)) MessageAlert("The files could not be added.", ErrorText(err));
}

void XBrowserWindow::ShowAdded(SongID song) {
    const CSong* const songP = i_setup.database.GetSong(song);
    if (songP == nullptr) return;
    i_model->Settle();
    if (i_model->ListID() == kPlaylistID_Library) i_tableP->SelectItem(songP->LibraryItem());
    const bool playB = i_setup.prefs.GetBool("Auto-play when you add single song to Library", true);
    if (playB && i_setup.play.State() == PlayState::kIdle)
        (void)i_setup.play.Play(kPlaylistID_Library, songP->LibraryItem());
}

SDB_Selection XBrowserWindow::Selected() const {
    SDB_Selection selection(i_model->List());
    selection.SetItems(i_tableP->SelectedItems());
    return selection;
}

void XBrowserWindow::ConnectLibrary() {
    using enum Command;
    CLibraryCommands& commands = i_setup.commands;
    const auto onSelected = [this](auto work) {
        return [this, work] {
            if (const SDB_Selection selection = Selected(); selection.Count() > 0) TellFailure(work(selection));
        };
    };
    i_actions->On(kRemoveFromList, onSelected([&](const SDB_Selection& rows) { return commands.DeleteTracks(rows); }));
    i_actions->On(kRemoveFromLibrary,
                  onSelected([&](const SDB_Selection& rows) { return commands.RemoveFromLibrary(rows); }));
    i_actions->On(kTrashOriginals,
                  onSelected([&](const SDB_Selection& rows) { return commands.TrashOriginals(rows); }));
    i_actions->On(kReveal, onSelected([&](const SDB_Selection& rows) {
                      return commands.Reveal(i_setup.database.SongsOf(rows));
                  }));
    i_actions->On(kDeleteList, [this, &commands] {
        const CPlayList* const listP = i_setup.database.GetPlayList(i_sourcesP->Selected());
        if (listP != nullptr && listP->Type() == kSourceDB_PLAYLIST) (void)commands.DeletePlaylist(listP->ID());
    });
}

void XBrowserWindow::TellFailure(OSErr err) {
    // What the user did not want is no failure, and a list that may not be changed says so by its menu.
    if (Failed(err) && err != userCanceledErr && err != paramErr)
        MessageAlert("That could not be done for all songs.", ErrorText(err));
}
