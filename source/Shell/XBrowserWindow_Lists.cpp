// What the main window does with rows between lists: the next songs, other lists, the clipboard.
#include <QApplication>
#include <QClipboard>
#include <QMimeData>

#include "Meta/CMetaManager.h"
#include "Play/CPlayControl.h"
#include "Shell/CSongTableModel.h"
#include "Shell/FileDrop.h"
#include "Shell/RowClipboard.h"
#include "Shell/XActions.h"
#include "Shell/XBrowserWindow.h"
#include "Shell/XListPicker.h"
#include "Shell/XSongTable.h"
#include "SongFiles/CLibraryCommands.h"
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

void XBrowserWindow::ConnectRows() {
    using enum Command;
    i_actions->On(kPlayNext, [this] { PlayNext(); });
    i_actions->On(kAddToList, [this] { AddToList(); });
    i_actions->On(kCopy, [this] {
        const std::vector<PLItemID> items = i_tableP->SelectedItems();
        const CPlayList* const listP = i_model->List();
        if (listP == nullptr || items.empty()) return;
        QApplication::clipboard()->setMimeData(
            CopyOfRows(i_setup.database, *listP, items, i_model->Columns()).release());   // the clipboard owns it
        SetStatus(items.size() == 1 ? tr("Copied.") : tr("%1 songs copied.").arg(items.size()));
    });
    connect(i_tableP, &XSongTable::MoveRefused, this, &XBrowserWindow::OfferUserOrder);
    i_actions->On(kPaste, [this] { Paste(); });
    i_actions->On(kShowUserOrder, [this] {
        if (CPlayList* const listP = i_model->List(); listP != nullptr) listP->SetSort({{kMyOrder, true}});
    });
}

void XBrowserWindow::PlayNext() {
    const CPlayList* const shownP = i_model->List();
    if (shownP == nullptr) return;
    std::vector<PLItemID> items = i_tableP->SelectedItems();
    const std::vector<SongID> songs = SongsIn(*shownP, items);
    if (songs.empty()) return;
    CPlayControl& play = i_setup.play;
    if (play.State() == PlayState::kIdle)
        return SetStatus(
            tr("Nothing plays: %1 plays a song at once.").arg(KeysText(i_keys.KeysOf(Command::kPlaySelected))));
    CPlayList* listP = i_setup.database.GetPlayList(play.CurrentList());
    PLItemID playing = play.CurrentItem();
    const bool placeB =
        listP != nullptr && listP->IsModifyable() && MainKey(listP->Spec()) == kMyOrder && playing != SDB_kNoItem;
    if (!placeB) {
        // The library, and a list in a sorted order, have no place behind a row: the show goes on in a list that has.
        if (Number(play.CurrentSong()) <= 0) return SetStatus(tr("The song that plays is no longer in the library."));
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
    SetStatus(songs.size() > 1    ? tr("%1 songs play next, in “%2”.").arg(songs.size()).arg(QtText(listP->Name()))
              : firstP == nullptr ? QString()
                                  : tr("“%1” plays next, in “%2”.").arg(QtText(firstP->Name()), QtText(listP->Name())));
}

void XBrowserWindow::AddToList() {
    const CPlayList* const shownP = i_model->List();
    if (shownP == nullptr) return;
    const std::vector<SongID> songs = SongsIn(*shownP, i_tableP->SelectedItems());
    if (songs.empty()) return;
    const CSong* const firstP = i_setup.database.GetSong(songs.front());
    const QString what =
        songs.size() == 1 && firstP != nullptr ? QtText(firstP->Name()) : tr("%1 songs").arg(songs.size());
    auto* const pickerP = new XListPicker(i_setup.database, tr("Add “%1” to List").arg(what), this);   // goes by itself
    i_actions->AttachEverywhere(*pickerP);
    const auto add = [this, songs](CPlayList* listP) {
        if (listP == nullptr) return;   // deleted meanwhile
        std::vector<SongID> there = songs;
        std::erase_if(there, [this](SongID song) { return i_setup.database.GetSong(song) == nullptr; });
        (void)listP->AddItemVec(RowsOf(there));
        SetStatus(there.size() == 1 ? tr("On “%1” now.").arg(QtText(listP->Name()))
                                    : tr("%1 songs are on “%2” now.").arg(there.size()).arg(QtText(listP->Name())));
    };
    connect(pickerP, &XListPicker::Chosen, this,
            [this, add](PlaylistID list) { add(i_setup.database.GetPlayList(list)); });
    connect(pickerP, &XListPicker::NewWanted, this,
            [this, add](const QString& name) { add(&i_setup.commands.NewPlaylist(name.toStdString())); });
    pickerP->show();
    pickerP->activateWindow();
}

void XBrowserWindow::OfferUserOrder(const QPoint& global) {
    const CPlayList* const listP = i_model->List();
    if (listP == nullptr) return;
    auto* const menuP = new QMenu(this);
    menuP->setAttribute(Qt::WA_DeleteOnClose);
    const QString key = QtText(MetaManager().GetTraits(MainKey(listP->Spec())).Title());
    menuP->addAction(tr("This list is sorted by “%1”: rows are moved in your own order.").arg(key))->setEnabled(false);
    menuP->addAction(&i_actions->Get(Command::kShowUserOrder));
    menuP->popup(global);   // nobody waits for it
}

RowIndex XBrowserWindow::RowBehindSelection() const {
    const CPlayList* const listP = i_model->List();
    const std::vector<PLItemID> items = i_tableP->SelectedItems();
    if (listP == nullptr || items.empty() || MainKey(listP->Spec()) != kMyOrder) return SDB_Index_END;
    return listP->GetPLI_Index(items.back()) + 1;
}

void XBrowserWindow::Paste() {
    const QMimeData* const dataP = QApplication::clipboard()->mimeData();
    CPlayList* const listP = i_model->List();
    if (dataP == nullptr || listP == nullptr) return;
    if (const auto songs = CopiedSongs(i_setup.database, *dataP); songs) {
        if (!listP->IsModifyable())
            return SetStatus(tr("The library has these songs: choose a list of yours for them."));
        (void)listP->AddItemVec(RowsOf(*songs), RowBehindSelection());
        return SetStatus(songs->size() == 1 ? tr("1 song pasted.") : tr("%1 songs pasted.").arg(songs->size()));
    }
    const QStringList files = LocalFiles(*dataP);
    if (files.isEmpty()) return SetStatus(tr("No songs were copied."));
    AddFiles(files, i_model->ListID(), RowBehindSelection());
}
