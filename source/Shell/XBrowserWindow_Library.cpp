// What the main window changes in the library: adding, removing, deleting.
#include <QFileDialog>
#include <QFileInfo>
#include <QPointer>

#include "App/CAlerts.h"
#include "Core/CLog.h"
#include "Core/FaultText.h"
#include "Platform/CFolders.h"
#include "Play/CPlayControl.h"
#include "Shell/CSongTableModel.h"
#include "Shell/XActions.h"
#include "Shell/XBrowserWindow.h"
#include "Shell/XSongTable.h"
#include "Shell/XSourceList.h"
#include "SongFiles/AddFilesToLibrary.h"
#include "SongFiles/CLibraryCommands.h"
#include "Values/CPreferences.h"
#include "Widgets/FileDialog.h"
#include "Widgets/QtText.h"
#include "Zip/CZipSongMembers.h"

namespace {
constexpr StringPref kPref_AddFolder = "Add Files Folder";   // where the user added from the last time

/** What the dialog shows of a folder: files of some kinds, each by its endings in small letters and in capitals. */
constexpr struct {
    const char* titleZ;
    bool zipB, audioB, graphicsB, videoB;
} kFile_Kinds[] = {
    {"Songs", true, true, true, true},
    {"Sound", false, true, false, false},
    {"CD+G graphics", false, false, true, false},
    {"Videos", false, false, false, true},
    {"Zips", true, false, false, false},
};

QStringList SongFileFilters(bool midiB) {
    QStringList filters;
    for (const auto& kind : kFile_Kinds) {
        QStringList patterns;
        const auto add = [&](const QString& ending) { patterns << '*' + ending << '*' + ending.toUpper(); };
        if (kind.zipB) add(".zip");
        for (const auto& [ending, kinds] : ZipSongEndings())
            if ((kind.audioB && kinds.audioB) || (kind.graphicsB && kinds.graphicsB) || (kind.videoB && kinds.videoB))
                add(QtText(ending));
        if (kind.audioB && midiB)
            for (const char* const endingZ : {".mid", ".midi", ".kar"}) add(endingZ);
        filters << QString("%1 (%2)").arg(kind.titleZ, patterns.join(' '));
    }
    filters << QString("%1 (*)").arg(QObject::tr("All files"));
    return filters;
}

}   // namespace

QString XBrowserWindow::FolderToAddFrom() const {
    const QString kept = QtText(i_setup.prefs.GetString(kPref_AddFolder));
    return !kept.isEmpty() && QFileInfo(kept).isDir() ? kept : QString::fromStdString(CFolders::Music().string());
}

void XBrowserWindow::AskForFiles() {
    auto* const dialogP = MakeFileDialog(this, tr("Add Files"), FolderToAddFrom());
    dialogP->setFileMode(QFileDialog::ExistingFiles);
    dialogP->setNameFilters(SongFileFilters(i_setup.prefs.GetBool("Launch Midi Files")));
    dialogP->setOption(QFileDialog::HideNameFilterDetails);
    ShowFileDialog(*dialogP, [this, list = i_model->ListID()](const QStringList& files) {
        const std::string folder = QFileInfo(files.front()).path().toStdString();
        i_setup.prefs.SetString(kPref_AddFolder, SuperString(folder));
        AddFiles(files, list, SDB_Index_END);
    });
}

void XBrowserWindow::AskForFolder() {
    auto* const dialogP = MakeFileDialog(this, tr("Add Folder"), FolderToAddFrom());
    dialogP->setFileMode(QFileDialog::Directory);
    dialogP->setOption(QFileDialog::ShowDirsOnly);
    ShowFileDialog(*dialogP, [this, list = i_model->ListID()](const QStringList& folders) {
        const std::string above = QFileInfo(folders.front()).path().toStdString();
        i_setup.prefs.SetString(kPref_AddFolder, SuperString(above));
        AddFiles(folders, list, SDB_Index_END);
    });
}

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
            window.SetStatus(added.newL == 1       ? tr("1 new song")
                             : added.newL > 1      ? tr("%1 new songs").arg(added.newL)
                             : added.songs.empty() ? QString()
                                                   : tr("In the library already"));
            if (added.songs.size() == 1) window.ShowAdded(added.songs.front());
            if (!added.refused.empty()) MessageAlert("Some files could not be added.", added.RefusedText());
        });
    if (Failed(err)) MessageAlert("The files could not be added.", FaultText(err, FaultOf::kStep, {}));
}

void XBrowserWindow::ShowAdded(SongID song) {
    const CSong* const songP = i_setup.database.GetSong(song);
    if (songP == nullptr) return;
    i_model->Settle();
    if (i_model->ListID() == kPlaylistID_Library) i_tableP->SelectItem(songP->LibraryItem());
    const bool playB = i_setup.prefs.GetBool("Auto-play when you add single song to Library");
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
    i_actions->On(kRemoveFromList, onSelected([&, this](const SDB_Selection& rows) {
                      const bool warnB = i_setup.prefs.GetBool("warn about deleting last song");
                      return commands.DeleteTracks(rows, CLibraryCommands::WarnLast{warnB});
                  }));
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

void XBrowserWindow::ConnectFiles() {
    using enum Command;
    CLibraryCommands& commands = i_setup.commands;
    const auto onSongs = [this](Command command, auto work) {
        i_actions->On(command, [this, work] {
            const std::vector<SongID> songs = i_setup.database.SongsOf(Selected());
            if (!songs.empty()) TellFailure(work(songs));
        });
    };
    const auto told = [this](const QString& words) {   // the window may have gone when the task ends
        return [self = QPointer<XBrowserWindow>(this), words](OSErr err) {
            if (!self.isNull() && !Failed(err)) self->SetStatus(words);
        };
    };
    using Songs = std::vector<SongID>;
    onSongs(kZip, [&commands, told](const Songs& songs) { return commands.Zip(songs, told(tr("Zipped."))); });
    onSongs(kUnzip, [&commands, told](const Songs& songs) { return commands.Unzip(songs, told(tr("Unzipped."))); });
    onSongs(kConformNames, [&commands, told](const Songs& songs) {
        return commands.ConformNames(songs, told(tr("The files have the names of their songs.")));
    });
    onSongs(kLocateMissing, [&commands](const Songs& songs) { return commands.LocateMissing(songs.front()); });
    i_actions->On(kRemoveDuplicates, [this, &commands] {
        SDB_Selection rows = Selected();
        if (rows.List() != &i_setup.database.Library() || rows.Items().size() < 2) {
            rows = SDB_Selection(&i_setup.database.Library());
            rows.SetItems(i_setup.database.Library().Items()->UserOrder());
        }
        TellFailure(commands.RemoveDuplicates(rows));
    });
    // One row is where the cursor happens to be; who selects several means them.
    i_actions->On(kFindMissing, [this, &commands, told] {
        const std::vector<SongID> songs = i_setup.database.SongsOf(Selected());
        TellFailure(commands.FindMissing(songs.size() > 1 ? songs : Songs{}, told(tr("All files were looked for."))));
    });
}

void XBrowserWindow::EnableSongs() {
    using enum Command;
    // So many rows are looked at: beyond them a command would rather find nothing to do than hold up the window.
    constexpr int kMost = 200;
    bool anyB = false, zipB = false, unzipB = false, missingB = false;
    int rowsL = 0;
    for (const QItemSelectionRange& range : i_tableP->selectionModel()->selection())
        for (int row = range.top(); row <= range.bottom() && rowsL < kMost; ++row, ++rowsL) {
            anyB = true;
            const CPlayList* const listP = i_model->List();
            const auto found = listP == nullptr ? std::nullopt : listP->Items()->Get(i_model->ItemAt(row));
            if (!found || found->target.type != SDB_kPLItem_SONG) continue;
            const CSong* const songP = i_setup.database.GetSong(SongID{found->target.idL});
            if (songP == nullptr) continue;
            zipB = zipB || CLibraryCommands::CanZip(*songP);
            unzipB = unzipB || CLibraryCommands::CanUnzip(*songP);
            missingB = missingB || songP->Meta().Stored("Msng"_key).Bool() == BoolValueType::kTrue;
        }
    const bool moreB = rowsL == kMost;
    const CPlayList* const listP = i_model->List();
    const bool removeB = anyB && listP != nullptr && (listP->ID() == kPlaylistID_Library || listP->IsModifyable());
    const std::pair<Command, bool> states[] = {
        {kPlaySelected, i_model->rowCount() > 0},
        {kEditCell, i_model->rowCount() > 0},
        {kPlayNext, anyB},
        {kAddToList, anyB},
        {kCopy, anyB},
        {kReveal, anyB},
        {kConformNames, anyB && i_setup.database.Settings()->conformNamesB},
        {kZip, zipB || moreB},
        {kUnzip, unzipB || moreB},
        {kLocateMissing, missingB && rowsL == 1},
        {kRemoveDuplicates, listP == &i_setup.database.Library() && listP->Count() > 1},
        {kFindMissing, i_setup.database.Library().Count() > 0},
        {kRemoveFromList, removeB},
        {kRemoveFromLibrary, anyB},
        {kTrashOriginals, anyB},
        {kUserOrder, listP != nullptr && listP->Count() > 1},
        {kShowUserOrder, listP != nullptr && MainKey(listP->Spec()) != "stIx"_key},
    };
    for (const auto& [command, onB] : states) i_actions->Get(command).setEnabled(onB);
}

void XBrowserWindow::TellFailure(OSErr err) {
    // What the user did not want is no failure, and a list that may not be changed says so by its menu.
    if (Failed(err) && err != userCanceledErr && err != paramErr)
        MessageAlert("That could not be done for all songs.", FaultText(err, FaultOf::kStep, {}));
}
