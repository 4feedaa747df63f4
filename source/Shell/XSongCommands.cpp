#include "Shell/XSongCommands.h"

#include <QApplication>
#include <QClipboard>
#include <QMenu>
#include <QMimeData>
#include <QPointer>

#include "App/CAlerts.h"
#include "Core/FaultText.h"
#include "Core/Localize.h"
#include "Meta/CMetaManager.h"
#include "Play/CPlayControl.h"
#include "Shell/CSongTableModel.h"
#include "Shell/FileDrop.h"
#include "Shell/RowClipboard.h"
#include "Shell/SongColumns.h"
#include "Shell/XActions.h"
#include "Shell/XFileAdder.h"
#include "Shell/XListPicker.h"
#include "Shell/XSongTable.h"
#include "SongFiles/CLibraryCommands.h"
#include "Values/CPreferences.h"
#include "Widgets/QtText.h"

namespace {

constexpr MetaKey kMyOrder = "stIx"_key;

std::vector<PLNewItem> RowsOf(const std::vector<SongID>& songs) {
    std::vector<PLNewItem> rows;
    for (const SongID song : songs) rows.push_back({song});
    return rows;
}

/** The songs of the rows, each as often as it stands there. */
std::vector<SongID> SongsIn(const CPlayList& list, std::span<const PLItemID> items) {
    std::vector<SongID> songs;
    for (const PLItemID item : items)
        if (const auto row = list.Items()->Get(item); row && row->target.type == SDB_kPLItem_SONG)
            songs.push_back(SongID{row->target.idL});
    return songs;
}

}   // namespace

XSongCommands::XSongCommands(const BrowserSetup& setup, XActions& actions, XSongTable& table, CSongTableModel& model,
                             XFileAdder& adder, QWidget& window)
    : QObject(&window),
      i_setup(setup),
      i_actions(actions),
      i_table(table),
      i_model(model),
      i_adder(adder),
      i_window(window) {
    connect(&i_table, &XSongTable::MoveRefused, this, &XSongCommands::OfferUserOrder);
    OnRows();
    OnSongs();
    OnLists();
}

SDB_Selection XSongCommands::Selected() const {
    SDB_Selection selection(i_model.List());
    selection.SetItems(i_table.SelectedItems());
    return selection;
}

/** What is done with the selected rows. */
void XSongCommands::OnRows() {
    using enum Command;
    CLibraryCommands& commands = i_setup.commands;
    const auto anyB = [this] { return i_facts.rowsL > 0; };
    const auto onRows = [this](Command command, auto work, std::function<bool()> ifB) {
        i_actions.On(
            command,
            [this, work] {
                if (const SDB_Selection selection = Selected(); selection.Count() > 0) TellFailure(work(selection));
            },
            std::move(ifB));
    };
    onRows(
        kRemoveFromList,
        [this, &commands](const SDB_Selection& rows) {
            const bool warnB = i_setup.prefs.GetBool("warn about deleting last song");
            return commands.DeleteTracks(rows, CLibraryCommands::WarnLast{warnB});
        },
        [this, anyB] {
            const CPlayList* const listP = i_model.List();
            return anyB() && listP != nullptr && (listP->ID() == kPlaylistID_Library || listP->IsModifyable());
        });
    onRows(
        kRemoveFromLibrary, [&commands](const SDB_Selection& rows) { return commands.RemoveFromLibrary(rows); }, anyB);
    onRows(
        kTrashOriginals, [&commands](const SDB_Selection& rows) { return commands.TrashOriginals(rows); }, anyB);
    onRows(
        kReveal,
        [this, &commands](const SDB_Selection& rows) { return commands.Reveal(i_setup.database.SongsOf(rows)); }, anyB);
    i_actions.On(
        kRemoveDuplicates,
        [this, &commands] {
            CPlayList& library = i_setup.database.Library();
            SDB_Selection rows = Selected();
            if (rows.List() != &library || rows.Items().size() < 2) {
                rows = SDB_Selection(&library);
                rows.SetItems(library.Items()->UserOrder());
            }
            TellFailure(commands.RemoveDuplicates(rows));
        },
        [this] {
            const CPlayList* const listP = i_model.List();
            return listP == &i_setup.database.Library() && listP->Count() > 1;
        });
}

/** What is done with the songs of the selected rows, and their files. */
void XSongCommands::OnSongs() {
    using enum Command;
    using Songs = std::vector<SongID>;
    CLibraryCommands& commands = i_setup.commands;
    const auto onSongs = [this](Command command, auto work, std::function<bool()> ifB) {
        i_actions.On(
            command,
            [this, work] {
                const Songs songs = i_setup.database.SongsOf(Selected());
                if (!songs.empty()) TellFailure(work(songs));
            },
            std::move(ifB));
    };
    const auto told = [this](const QString& words) {   // the window may have gone when the task ends
        return [self = QPointer<XSongCommands>(this), words](OSErr err) {
            if (!self.isNull() && !Failed(err)) emit self->Told(words);
        };
    };
    onSongs(
        kZip, [&commands, told](const Songs& songs) { return commands.Zip(songs, told(tr("Zipped."))); },
        [this] { return i_facts.zipB; });
    onSongs(
        kUnzip, [&commands, told](const Songs& songs) { return commands.Unzip(songs, told(tr("Unzipped."))); },
        [this] { return i_facts.unzipB; });
    onSongs(
        kConformNames,
        [&commands, told](const Songs& songs) {
            return commands.ConformNames(songs, told(tr("The files have the names of their songs.")));
        },
        [this] { return i_facts.rowsL > 0 && i_setup.database.Settings()->conformNamesB; });
    onSongs(
        kLocateMissing, [&commands](const Songs& songs) { return commands.LocateMissing(songs.front()); },
        [this] { return i_facts.missingB && i_facts.rowsL == 1; });
    // One row is where the cursor happens to be; who selects several means them.
    i_actions.On(
        kFindMissing,
        [this, &commands, told] {
            const Songs songs = i_setup.database.SongsOf(Selected());
            TellFailure(
                commands.FindMissing(songs.size() > 1 ? songs : Songs{}, told(tr("All files were looked for."))));
        },
        [this] { return i_setup.database.Library().Count() > 0; });
}

/** What brings rows from list to list, and into an order. */
void XSongCommands::OnLists() {
    using enum Command;
    const auto anyB = [this] { return i_facts.rowsL > 0; };
    i_actions.On(
        kPlayNext, [this] { PlayNext(); }, anyB);
    i_actions.On(
        kAddToList, [this] { AddToList(); }, anyB);
    i_actions.On(
        kCopy, [this] { Copy(); }, anyB);
    i_actions.On(kPaste, [this] { Paste(); });
    i_actions.On(
        kUserOrder,
        [this] {
            if (CPlayList* const listP = i_model.List(); listP != nullptr) listP->MakeUserOrder();
        },
        [this] { return i_model.List() != nullptr && i_model.List()->Count() > 1; });
    i_actions.On(
        kShowUserOrder,
        [this] {
            if (CPlayList* const listP = i_model.List(); listP != nullptr) listP->SetSort({{kMyOrder, true}});
        },
        [this] { return i_model.List() != nullptr && MainKey(i_model.List()->Spec()) != kMyOrder; });
}

void XSongCommands::Refresh() {
    Look();
    i_actions.Refresh();
}

void XSongCommands::Copy() {
    const std::vector<PLItemID> items = i_table.SelectedItems();
    const CPlayList* const listP = i_model.List();
    if (listP == nullptr || items.empty()) return;
    QApplication::clipboard()->setMimeData(
        CopyOfRows(i_setup.database, *listP, items, i_model.Columns()).release());   // the clipboard owns it
    emit Told(items.size() == 1 ? tr("Copied.") : tr("%1 songs copied.").arg(items.size()));
}

void XSongCommands::Look() {
    // So many rows are looked at: beyond them a command would rather find nothing to do than hold up the window.
    constexpr int kMost = 200;
    i_facts = {};
    for (const QItemSelectionRange& range : i_table.selectionModel()->selection())
        for (int row = range.top(); row <= range.bottom() && i_facts.rowsL < kMost; ++row, ++i_facts.rowsL) {
            const CPlayList* const listP = i_model.List();
            const auto found = listP == nullptr ? std::nullopt : listP->Items()->Get(i_model.ItemAt(row));
            if (!found || found->target.type != SDB_kPLItem_SONG) continue;
            const CSong* const songP = i_setup.database.GetSong(SongID{found->target.idL});
            if (songP == nullptr) continue;
            i_facts.zipB = i_facts.zipB || CLibraryCommands::CanZip(*songP);
            i_facts.unzipB = i_facts.unzipB || CLibraryCommands::CanUnzip(*songP);
            i_facts.missingB = i_facts.missingB || songP->Meta().Stored("Msng"_key).Bool() == BoolValueType::kTrue;
        }
    if (i_facts.rowsL == kMost) i_facts.zipB = i_facts.unzipB = true;
}

void XSongCommands::PlayNext() {
    const CPlayList* const shownP = i_model.List();
    if (shownP == nullptr) return;
    std::vector<PLItemID> items = i_table.SelectedItems();
    const std::vector<SongID> songs = SongsIn(*shownP, items);
    if (songs.empty()) return;
    CPlayControl& play = i_setup.play;
    if (play.State() == PlayState::kIdle)
        return emit Told(tr("Nothing plays: %1 plays a song at once.")
                             .arg(KeysText(i_actions.Keys().KeysOf(Command::kPlaySelected))));
    CPlayList* listP = i_setup.database.GetPlayList(play.CurrentList());
    PLItemID playing = play.CurrentItem();
    const bool placeB =
        listP != nullptr && listP->IsModifyable() && MainKey(listP->Spec()) == kMyOrder && playing != SDB_kNoItem;
    if (!placeB) {
        // The library, and a list in a sorted order, have no place behind a row: the show goes on in a list that has.
        if (Number(play.CurrentSong()) <= 0) return emit Told(tr("The song that plays is no longer in the library."));
        listP = &i_setup.commands.ListNamed(tr("Play Next").toStdString());
        listP->SetSort({{kMyOrder, true}});
        playing = listP->AddItem({play.CurrentSong()});
        if (Failed(play.GoOnIn(listP->ID(), playing))) return;
    }
    const RowIndex behind = listP->GetPLI_Index(playing) + 1;
    if (listP == shownP) {   // the rows move
        std::erase(items, playing);
        if (!items.empty()) (void)listP->MoveItems(items, behind);
    } else {
        (void)listP->AddItemVec(RowsOf(songs), behind);
    }
    const CSong* const firstP = i_setup.database.GetSong(songs.front());
    emit Told(songs.size() > 1    ? tr("%1 songs play next, in “%2”.").arg(songs.size()).arg(QtText(listP->Name()))
              : firstP == nullptr ? QString()
                                  : tr("“%1” plays next, in “%2”.").arg(QtText(firstP->Name()), QtText(listP->Name())));
}

void XSongCommands::AddToList() {
    const CPlayList* const shownP = i_model.List();
    if (shownP == nullptr) return;
    const std::vector<SongID> songs = SongsIn(*shownP, i_table.SelectedItems());
    if (songs.empty()) return;
    const CSong* const firstP = i_setup.database.GetSong(songs.front());
    const QString what =
        songs.size() == 1 && firstP != nullptr ? QtText(firstP->Name()) : tr("%1 songs").arg(songs.size());
    auto* const pickerP =
        new XListPicker(i_setup.database, tr("Add “%1” to List").arg(what), &i_window);   // goes by itself
    i_actions.AttachEverywhere(*pickerP);
    const auto add = [this, songs](CPlayList* listP) {
        if (listP == nullptr) return;   // deleted meanwhile
        std::vector<SongID> there = songs;
        std::erase_if(there, [this](SongID song) { return i_setup.database.GetSong(song) == nullptr; });
        (void)listP->AddItemVec(RowsOf(there));
        emit Told(there.size() == 1 ? tr("On “%1” now.").arg(QtText(listP->Name()))
                                    : tr("%1 songs are on “%2” now.").arg(there.size()).arg(QtText(listP->Name())));
    };
    connect(pickerP, &XListPicker::Chosen, this,
            [this, add](PlaylistID list) { add(i_setup.database.GetPlayList(list)); });
    connect(pickerP, &XListPicker::NewWanted, this,
            [this, add](const QString& name) { add(&i_setup.commands.NewPlaylist(name.toStdString())); });
    pickerP->show();
    pickerP->activateWindow();
}

void XSongCommands::OfferUserOrder(const QPoint& global) {
    const CPlayList* const listP = i_model.List();
    if (listP == nullptr) return;
    auto* const menuP = new QMenu(&i_window);
    menuP->setAttribute(Qt::WA_DeleteOnClose);
    const QString key = KeyTitle(MetaManager().GetTraits(MainKey(listP->Spec())));
    menuP->addAction(tr("This list is sorted by “%1”: rows are moved in your own order.").arg(key))->setEnabled(false);
    menuP->addAction(&i_actions.Get(Command::kShowUserOrder));
    menuP->popup(global);   // nobody waits for it
}

RowIndex XSongCommands::RowBehindSelection() const {
    const CPlayList* const listP = i_model.List();
    const std::vector<PLItemID> items = i_table.SelectedItems();
    if (listP == nullptr || items.empty() || MainKey(listP->Spec()) != kMyOrder) return SDB_Index_END;
    return listP->GetPLI_Index(items.back()) + 1;
}

void XSongCommands::Paste() {
    const QMimeData* const dataP = QApplication::clipboard()->mimeData();
    CPlayList* const listP = i_model.List();
    if (dataP == nullptr || listP == nullptr) return;
    if (const auto songs = CopiedSongs(i_setup.database, *dataP); songs) {
        if (!listP->IsModifyable())
            return emit Told(tr("The library has these songs: choose a list of yours for them."));
        (void)listP->AddItemVec(RowsOf(*songs), RowBehindSelection());
        return emit Told(songs->size() == 1 ? tr("1 song pasted.") : tr("%1 songs pasted.").arg(songs->size()));
    }
    const QStringList files = LocalFiles(*dataP);
    if (files.isEmpty()) return emit Told(tr("No songs were copied."));
    i_adder.Add(files, i_model.ListID(), RowBehindSelection());
}

void XSongCommands::TellFailure(OSErr err) {
    // What the user did not want is no failure, and a list that may not be changed says so by its menu.
    if (Failed(err) && err != userCanceledErr && err != paramErr)
        MessageAlert(Localize("That could not be done for all songs."), FaultText(err, FaultOf::kStep, {}));
}
