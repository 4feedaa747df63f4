#include "Shell/XBrowserWindow.h"

#include <QApplication>
#include <QCloseEvent>
#include <QLineEdit>
#include <QMenu>
#include <QScreen>
#include <QSplitter>
#include <QStatusBar>
#include <QToolButton>
#include <QVBoxLayout>

#include "App/CAlerts.h"
#include "Core/SizeForms.h"
#include "Meta/CMetaManager.h"
#include "Play/CPlayControl.h"
#include "Shell/AboutBox.h"
#include "Shell/CSongTableModel.h"
#include "Shell/XActions.h"
#include "Shell/XBrowserMenus.h"
#include "Shell/XFileAdder.h"
#include "Shell/XNoticeBar.h"
#include "Shell/XNoticesWindow.h"
#include "Shell/XOutputPanel.h"
#include "Shell/XPreferencesWindow.h"
#include "Shell/XPreviewPane.h"
#include "Shell/XShortcutSheet.h"
#include "Shell/XSongCommands.h"
#include "Shell/XSongTable.h"
#include "Shell/XSourceList.h"
#include "Shell/XTasksButton.h"
#include "Shell/XTransport.h"
#include "SongFiles/CLibraryCommands.h"
#include "Values/CPreferences.h"
#include "Widgets/QtText.h"
#include "Widgets/XElidedLabel.h"
#include "Widgets/XIcons.h"
#include "Widgets/XValueLabel.h"

namespace {

constexpr LongPref kPref_Sidebar = "Sources Panel Width";
constexpr BoolPref kPref_Preview = "Show Artwork Panel";
constexpr LongPref kPref_PreviewHeight = "Artwork Panel height";
constexpr LongPref kPref_TimeDisplay = "Time display: (0=elapsed, 1=remain)";
constexpr int kSidebar_Least = 150, kSidebar_Most = 480;
constexpr int kTyping_Milliseconds = 120;   // a word is typed faster than this
constexpr int kMessage_Milliseconds = 5000;
constexpr int kFont_Least = 8, kFont_Most = 32, kFont_MostBeside = 13;   // points
/** A small screen at twice the size of its pixels leaves 683 x 350. */
constexpr QSize kWindow_Least{560, 300}, kWindow_Usual{1180, 760};
constexpr int kWindow_Low = 520;   // below this height what is not needed gives way to rows

/** What the songs of a list last together: of hours nobody wants the seconds. */
QString SumText(std::uint64_t duration300) {
    const std::uint64_t secondsL = duration300 / 300;
    return QtText(DurationText(static_cast<double>(secondsL < 3600 ? secondsL : secondsL / 60 * 60)));
}

/** Brings a dialog to the front, made when there is none. No dialog waits: the show goes on beside it. */
template <class Dialog, class Make>
void Raise(QPointer<Dialog>& dialogP, Make&& make) {
    if (dialogP.isNull()) {
        dialogP = make();
        dialogP->setAttribute(Qt::WA_DeleteOnClose);
    }
    dialogP->show();
    dialogP->raise();
    dialogP->activateWindow();
}

}   // namespace

XBrowserWindow::XBrowserWindow(BrowserSetup setup) : i_setup(std::move(setup)) {
    i_keys.FromDictionary(i_setup.prefs.GetDictionary("Key Map"));
    i_actions = std::make_unique<XActions>(i_keys);
    i_model = std::make_unique<CSongTableModel>(i_setup.database);
    setObjectName("browser");
    setAccessibleName(tr("Vopla"));
    setWindowTitle("Vopla[*]");
    setMinimumSize(kWindow_Least);
    resize(kWindow_Usual.boundedTo(screen()->availableSize()));

    i_transportP = new XTransport(i_setup.play, i_setup.database, *i_actions,
                                  [this](auto then) { i_setup.ifInterruptible(2, std::move(then)); });
    i_splitterP = new QSplitter(Qt::Horizontal);
    i_splitterP->setHandleWidth(1);
    i_splitterP->setChildrenCollapsible(false);
    i_splitterP->addWidget(MakeSidebar());
    i_splitterP->addWidget(MakeSongs());
    i_splitterP->setStretchFactor(0, 0);
    i_splitterP->setStretchFactor(1, 1);
    const int sidebar = std::clamp<int>(i_setup.prefs.GetLong(kPref_Sidebar), kSidebar_Least, kSidebar_Most);
    i_splitterP->setSizes({sidebar, width() - sidebar});
    auto* const centralP = new QWidget;
    auto* const columnP = new QVBoxLayout(centralP);
    columnP->setContentsMargins(0, 0, 0, 0);
    columnP->setSpacing(0);
    columnP->addWidget(i_transportP);
    columnP->addWidget(i_splitterP, 1);
    i_noticesP = new XNoticeBar(i_setup.notices, *i_actions);
    columnP->addWidget(i_noticesP);
    setCentralWidget(centralP);

    MakeStatus();
    i_menusP = new XBrowserMenus(*this, *i_actions, i_setup.play);
    i_adderP = new XFileAdder(
        i_setup, *i_actions, [this] { return i_model->ListID(); }, *this);
    i_songsP = new XSongCommands(i_setup, *i_actions, *i_tableP, *i_model, *i_adderP, *this);
    Connect();
    ConnectLists();
    ShowList(kPlaylistID_Library);
    PlayTold();
    FollowPreferences();
    // From the search to the songs to the lists to the transport.
    setTabOrder(i_searchP, i_tableP);
    setTabOrder(i_tableP, i_sourcesP);
    i_tableP->setFocus();
}

XBrowserWindow::~XBrowserWindow() {
    delete takeCentralWidget();   // its parts look at the model and the actions
}

// ---- The parts ----

QWidget* XBrowserWindow::MakeSidebar() {
    i_sourcesP = new XSourceList(i_setup.database, *i_actions);
    auto* const sidebarP = new QWidget;
    sidebarP->setObjectName("sidebar");
    sidebarP->setAttribute(Qt::WA_StyledBackground);
    sidebarP->setMinimumWidth(kSidebar_Least);
    sidebarP->setMaximumWidth(kSidebar_Most);
    auto* const columnP = new QVBoxLayout(sidebarP);
    columnP->setContentsMargins(6, 8, 6, 6);
    columnP->setSpacing(6);
    auto* const upperP = new QWidget;
    auto* const upperColumnP = new QVBoxLayout(upperP);
    upperColumnP->setContentsMargins(0, 0, 0, 0);
    upperColumnP->setSpacing(6);
    upperColumnP->addWidget(i_sourcesP, 1);
    auto* const newP = new QToolButton;
    newP->setDefaultAction(&i_actions->Get(Command::kNewList));
    newP->setIcon(Icon(IconKind::kPlus));
    newP->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    newP->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    newP->setAccessibleName(tr("New List"));
    newP->setAccessibleDescription(tr(RowOf(Command::kNewList).toolTipZ));
    auto* const buttonsP = new QHBoxLayout;
    buttonsP->setContentsMargins(0, 0, 0, 0);
    buttonsP->addWidget(newP, 1);
    upperColumnP->addLayout(buttonsP);
    i_sideP = new QSplitter(Qt::Vertical);
    i_sideP->setChildrenCollapsible(false);
    i_sideP->addWidget(upperP);
    i_sideP->setStretchFactor(0, 1);
    connect(i_sideP, &QSplitter::splitterMoved, this, [this] {
        if (i_previewP != nullptr) i_setup.prefs.SetLong(kPref_PreviewHeight, i_previewP->height());
    });
    columnP->addWidget(i_sideP);
    i_actions->Get(Command::kShowPreview).setVisible(i_setup.portsP != nullptr);
    if (i_setup.portsP != nullptr) {
        i_previewP = new XPreviewPane(*i_setup.portsP);
        i_previewP->setObjectName("preview");
        i_previewP->setAccessibleName(tr("Preview"));
        i_previewP->setAccessibleDescription(tr("What the room sees"));
        i_previewP->hide();
        i_sideP->addWidget(i_previewP);
        i_sideP->setStretchFactor(1, 0);
        auto* const previewP = new QToolButton;
        QAction& action = i_actions->Get(Command::kShowPreview);
        action.setIcon(Icon(IconKind::kPicture));
        action.setIconVisibleInMenu(false);
        previewP->setDefaultAction(&action);
        previewP->setIconSize({18, 18});
        previewP->setToolButtonStyle(Qt::ToolButtonIconOnly);
        previewP->setAccessibleName(tr("Preview"));
        previewP->setAccessibleDescription(tr(RowOf(Command::kShowPreview).toolTipZ));
        buttonsP->addWidget(previewP);
    }
    return sidebarP;
}

QWidget* XBrowserWindow::MakeSongs() {
    i_listNameP = new XElidedLabel(tr("List"));
    i_listNameP->setObjectName("songTitle");
    i_searchP = new QLineEdit;
    i_searchP->setPlaceholderText(tr("Find by song or artist"));
    i_searchP->setClearButtonEnabled(true);
    i_searchP->setMaxLength(200);
    i_searchP->setMinimumWidth(160);
    i_searchP->setMaximumWidth(360);
    i_searchP->addAction(Icon(IconKind::kSearch), QLineEdit::LeadingPosition);
    i_searchP->setAccessibleName(tr("Find"));
    i_searchP->setAccessibleDescription(
        tr("Words of the song or the artist; Escape shows all again, Down goes to the songs"));
    i_searchP->installEventFilter(this);
    auto* const columnsP = new QToolButton;
    columnsP->setIcon(Icon(IconKind::kColumns));
    columnsP->setIconSize({18, 18});
    columnsP->setFixedSize(32, 32);
    columnsP->setToolTip(tr("Columns"));
    columnsP->setAccessibleName(tr("Columns"));
    columnsP->setAccessibleDescription(tr("Chooses what is shown of the songs"));
    i_tableP = new XSongTable(*i_model, i_setup.prefs, *i_actions);
    connect(columnsP, &QToolButton::clicked, this, [this, columnsP] {
        QMenu menu;
        i_tableP->FillColumnMenu(menu);
        menu.exec(columnsP->mapToGlobal(QPoint(0, columnsP->height())));
    });
    i_barP = new QHBoxLayout;
    i_barP->setContentsMargins(14, 8, 10, 8);
    i_barP->addWidget(i_listNameP, 1);
    i_barP->addWidget(i_searchP, 1);
    i_barP->addWidget(columnsP);
    auto* const songsP = new QWidget;
    auto* const columnP = new QVBoxLayout(songsP);
    columnP->setContentsMargins(0, 0, 0, 0);
    columnP->setSpacing(0);
    columnP->addLayout(i_barP);
    columnP->addWidget(i_tableP, 1);
    return songsP;
}

QMenu& XBrowserWindow::DisplayMenu() const { return i_menusP->Displays(); }

void XBrowserWindow::ShowTasks(const std::vector<TaskRow>& rows) { i_tasksP->Follow(rows); }

void XBrowserWindow::MakeStatus() {
    i_tasksP = new XTasksButton(i_actions->Get(Command::kShowTasks));
    i_countP = new XValueLabel(tr("Count"));
    statusBar()->addPermanentWidget(i_tasksP);
    statusBar()->addPermanentWidget(i_countP);
    statusBar()->setSizeGripEnabled(false);
    statusBar()->setAccessibleName(tr("Status"));
}

void XBrowserWindow::FollowPreferences() {
    i_actions->SetSingleKeys(i_setup.prefs.GetBool("Single-key commands"));
    const int points = std::clamp<int>(i_setup.prefs.GetBrowserFontSize(), kFont_Least, kFont_Most);
    if (i_tableP->font().pointSize() != points) {
        QFont font = i_tableP->font();
        font.setPointSize(points);
        i_tableP->SetFont(font);
        font.setPointSize(std::min(points, kFont_MostBeside));   // the column beside is narrow
        i_sourcesP->setFont(font);
    }
    const bool namesB = i_setup.prefs.GetBool("Allow Name Editing");
    i_model->SetNamesLocked(!namesB);
    i_sourcesP->SetNamesLocked(!namesB);
    i_actions->Refresh();
    i_tableP->SetEditWait(i_setup.prefs.GetFloat("Seconds to wait after click to edit"));
    i_transportP->SetTimeDisplay(i_setup.prefs.GetLong(kPref_TimeDisplay) == 1);
    ShowPreview();
}

bool XBrowserWindow::IsOwnList() const {
    const CPlayList* const listP = i_model->List();
    return listP != nullptr && listP->Type() == kSourceDB_PLAYLIST;
}

void XBrowserWindow::ShowPreview() {
    const bool onB = i_setup.prefs.GetBool(kPref_Preview);
    i_actions->Get(Command::kShowPreview).setChecked(onB);
    const bool shownB = onB && height() >= kWindow_Low;
    if (i_previewP == nullptr || !isVisible() || shownB == !i_previewP->isHidden()) return;
    i_previewP->setVisible(shownB);
    if (!shownB) return;
    const int all = i_sideP->height();
    const int own = std::clamp<int>(i_setup.prefs.GetLong(kPref_PreviewHeight), i_previewP->minimumHeight(),
                                    std::max(i_previewP->minimumHeight(), all / 2));
    i_sideP->setSizes({all - own, own});
}

void XBrowserWindow::SetStatus(const QString& text) { statusBar()->showMessage(text, kMessage_Milliseconds); }

void XBrowserWindow::Deselect() { i_tableP->clearSelection(); }

// ---- Commands ----

void XBrowserWindow::Connect() {
    using enum Command;
    i_actions->Attach(CommandScope::kEverywhere, *this);
    i_actions->Attach(CommandScope::kBrowser, *this);
    i_actions->On(kPlayPause, [this] { PlayOrPause(); });
    const auto rowsB = [this] { return i_model->rowCount() > 0; };
    i_actions->On(
        kPlaySelected, [this] { PlaySelected(1); }, rowsB);
    i_actions->On(
        kEditCell, [this] { i_tableP->EditCurrent(); }, rowsB);
    i_actions->On(
        kShowPlaying,
        [this] {
            if (i_setup.database.GetPlayList(i_setup.play.CurrentList()) == nullptr) return;
            i_searchP->clear();
            ShowList(i_setup.play.CurrentList());
            i_model->Settle();
            i_tableP->SelectItem(i_setup.play.CurrentItem());
            i_tableP->setFocus();
        },
        [this] { return i_setup.play.State() != PlayState::kIdle; });
    i_actions->On(kFind, [this] {
        i_searchP->setFocus(Qt::ShortcutFocusReason);
        i_searchP->selectAll();
    });
    i_actions->Get(kShowPreview).setCheckable(true);
    i_actions->On(kShowPreview, [this] {
        i_setup.prefs.SetBool(kPref_Preview, i_actions->Get(kShowPreview).isChecked());
        ShowPreview();
    });
    i_actions->On(kAbout, [this] { ShowAbout(*this); });
    i_actions->On(kPreferences, [this] { ShowPreferences(); });
    i_actions->On(kShowNotices, [this] { ShowNotices(); });
    i_actions->On(kShortcuts, [this] { Raise(i_sheetP, [this] { return new XShortcutSheet(i_keys, this); }); });
    i_actions->On(kQuit, [this] { emit CloseAsked(); });

    connect(i_transportP, &XTransport::PlayTold, this, &XBrowserWindow::PlayTold);
    connect(i_transportP, &XTransport::TimeDisplayChosen, this, [this](bool leftB) {
        i_setup.prefs.SetLong(kPref_TimeDisplay, leftB ? 1 : 0);
        i_transportP->SetTimeDisplay(leftB);
    });
    connect(i_transportP, &XTransport::Message, this, &XBrowserWindow::SetStatus);
    connect(i_transportP, &XTransport::OutputsAsked, this,
            [this](const QPoint& at) { XOutputPanel::PopUp(i_setup.play, i_setup.prefs, *this, at); });
    connect(i_tableP, &XSongTable::PlayAsked, this, [this](PLItemID item) { PlayItem(item, 1); });
    connect(i_tableP, &XSongTable::SelectionTold, this, &XBrowserWindow::ShowState);
    connect(i_tableP, &XSongTable::Typed, this, &XBrowserWindow::TypeSearch);
    connect(i_sourcesP, &XSourceList::Typed, this, &XBrowserWindow::TypeSearch);
    for (QWidget* const listP : std::initializer_list<QWidget*>{i_tableP, i_sourcesP}) listP->installEventFilter(this);
    connect(i_model.get(), &CSongTableModel::StateChanged, this, &XBrowserWindow::ShowState);
    connect(i_model.get(), &CSongTableModel::FilesDropped, i_adderP, &XFileAdder::Add);
    connect(i_adderP, &XFileAdder::Told, this, &XBrowserWindow::SetStatus);
    connect(i_adderP, &XFileAdder::SongAdded, this, &XBrowserWindow::ShowAdded);
    connect(i_songsP, &XSongCommands::Told, this, &XBrowserWindow::SetStatus);

    i_typing.setSingleShot(true);
    i_typing.setInterval(kTyping_Milliseconds);
    connect(&i_typing, &QTimer::timeout, this, &XBrowserWindow::Filter);
    connect(i_searchP, &QLineEdit::textChanged, this, [this] { i_typing.start(); });
    connect(i_searchP, &QLineEdit::returnPressed, this, &XBrowserWindow::GoToSongs);
    i_resizeEnd.setSingleShot(true);
    i_resizeEnd.setInterval(200);   // the toolkit tells no end: none for so long is one
    connect(&i_resizeEnd, &QTimer::timeout, this, [this] { emit Resizing(false); });
}

void XBrowserWindow::ConnectLists() {
    using enum Command;
    connect(i_sourcesP, &XSourceList::Chosen, this, &XBrowserWindow::ShowList);
    connect(i_sourcesP, &XSourceList::FilesDropped, i_adderP, &XFileAdder::Add);
    i_actions->On(kNewList, [this] {
        const PlaylistID list = i_setup.commands.NewPlaylist({}).ID();
        i_sourcesP->EditName(list);
    });
    connect(i_sourcesP, &XSourceList::RenameAsked, this, [this](PlaylistID list, const QString& name) {
        (void)i_setup.commands.RenamePlaylist(list, SuperString(name.toStdString()));   // tells its own failure
    });
    i_actions->On(kOpenList, [this] { GoToSongs(); });
    i_actions->On(
        kRenameList, [this] { i_sourcesP->EditName(i_sourcesP->Selected()); },
        [this] { return IsOwnList() && !i_sourcesP->NamesLocked(); });
    i_actions->On(
        kDeleteList,
        [this] {
            const CPlayList* const listP = i_setup.database.GetPlayList(i_sourcesP->Selected());
            if (listP != nullptr && listP->Type() == kSourceDB_PLAYLIST)
                (void)i_setup.commands.DeletePlaylist(listP->ID());
        },
        [this] { return IsOwnList(); });
}

void XBrowserWindow::ShowList(PlaylistID list) {
    const CPlayList* const listP = i_setup.database.GetPlayList(list);
    if (listP == nullptr) return;
    i_sourcesP->Select(list);
    if (i_model->ListID() != list) {
        i_searchP->clear();   // what was looked for in one list hides another
        Filter();
        i_model->SetList(list);
    }
    i_listNameP->SetText(XSourceList::TitleOf(*listP));
    ShowState();
}

void XBrowserWindow::Filter() {
    i_typing.stop();
    i_model->SetFilter(
        CTextFilter(i_searchP->text().toStdString(), i_setup.prefs.GetBool("Diacritic Insensitive Searching")));
}

void XBrowserWindow::ShowState() {
    CPlayList* const listP = i_model->List();
    if (listP == nullptr) return;
    const auto allL = static_cast<qlonglong>(listP->Count());
    const qsizetype selectedL = [this] {
        qsizetype rowsL = 0;
        for (const QItemSelectionRange& range : i_tableP->selectionModel()->selection()) rowsL += range.height();
        return rowsL;
    }();
    const QLocale locale;
    QString text = i_model->IsFiltering()
                       ? tr("%1 of %2 songs").arg(locale.toString(i_model->rowCount()), locale.toString(allL))
                   : allL == 1 ? tr("1 song")
                               : tr("%1 songs").arg(locale.toString(allL));
    const std::uint64_t duration300 = i_model->IsFiltering() ? 0 : listP->Duration300();
    if (duration300 > 0) text += tr(", %1").arg(SumText(duration300));
    if (selectedL > 1) text += tr(", %1 selected").arg(locale.toString(selectedL));
    if (i_model->IsLooking()) text += tr(", looking…");
    if (listP->IsSorting()) text += tr(", sorting…");
    i_countP->SetValue(text);
    i_listNameP->SetText(XSourceList::TitleOf(*listP));
    i_songsP->Refresh();
    if (i_model->IsFiltering())
        i_tableP->SetHint(i_model->IsLooking() ? tr("Looking…") : tr("Nothing found"),
                          i_model->IsLooking() ? QString() : tr("Escape in the search field shows all songs again."));
    else if (i_model->ListID() == kPlaylistID_Library)
        i_tableP->SetHint(tr("Drop songs here"),
                          tr("Files and folders: MP3 with CD+G, zips, videos. Or choose them with %1.")
                              .arg(KeysText(i_keys.KeysOf(Command::kOpenFiles))));
    else
        i_tableP->SetHint(tr("An empty list"), tr("Drag songs from the library onto its name, or drop files here."));
}

void XBrowserWindow::GoToSongs() {
    Filter();
    i_tableP->setFocus();
    if (!i_tableP->selectionModel()->hasSelection() && i_model->rowCount() > 0) i_tableP->selectRow(0);
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

// ---- Play ----

void XBrowserWindow::PlayTold() {
    const bool idleB = i_setup.play.State() == PlayState::kIdle;
    i_model->SetPlaying(idleB ? PlaylistID{0} : i_setup.play.CurrentList(),
                        idleB ? SDB_kNoItem : i_setup.play.CurrentItem(),
                        idleB ? SongID{0} : i_setup.play.CurrentSong());
    CSong* const songP = idleB || Number(i_setup.play.CurrentSong()) <= 0
                             ? nullptr
                             : i_setup.database.GetSong(i_setup.play.CurrentSong());
    setWindowTitle(songP == nullptr ? "Vopla[*]" : QtText(songP->Name()) + "[*] - Vopla");
}

void XBrowserWindow::PlayItem(PLItemID item, long confirmModeL) {
    const CPlayList* const listP = i_model->List();
    const auto row = listP == nullptr || item == SDB_kNoItem ? std::nullopt : listP->Items()->Get(item);
    if (!row) return;
    // When the answer comes another list may be shown, and the row be another song's.
    i_setup.ifInterruptible(
        confirmModeL, [self = QPointer<XBrowserWindow>(this), list = listP->ID(), item, target = row->target] {
            CPlayList* const thenP = self.isNull() ? nullptr : self->i_setup.database.GetPlayList(list);
            const auto now = thenP == nullptr ? std::nullopt : thenP->Items()->Get(item);
            if (!now || !(now->target == target)) return;
            thenP->SetSelectedItem(item);
            self->i_begunItem = item;
            (void)self->i_setup.play.Play(list, item);   // tells its own failure
        });
}

void XBrowserWindow::PlaySelected(long confirmModeL) {
    if (const SDB_Selection selection = i_songsP->Selected(); selection.Count() > 1)
        (void)i_setup.play.Play(selection);   // asks; nothing is played
    else
        PlayItem(i_tableP->CurrentItem(), confirmModeL);
}

void XBrowserWindow::PlayOrPause() {
    CPlayControl& play = i_setup.play;
    if (play.State() != PlayState::kIdle) return play.TogglePause();
    // Where a list has stopped at a song that failed, the cursor still stands at the row that the show began with: what is
    // meant is the row where it stands now.
    const bool failedB = Failed(play.PlayErr()) && play.CurrentItem() != SDB_kNoItem &&
                         play.CurrentList() == i_model->ListID() && i_tableP->CurrentItem() == i_begunItem;
    if (failedB)
        (void)play.Play(play.CurrentList(), play.CurrentItem());
    else
        PlaySelected(0);
}

void XBrowserWindow::ShowPreferences() {
    Raise(i_preferencesP, [this] { return new XPreferencesWindow(i_setup.prefs, i_setup.play, *i_actions, this); });
}

void XBrowserWindow::NoticesChanged() {
    i_noticesP->Follow();
    if (!i_noticeListP.isNull()) i_noticeListP->Follow();
}

void XBrowserWindow::ShowNotices() {
    Raise(i_noticeListP, [this] { return new XNoticesWindow(i_setup.notices, this); });
    i_setup.notices.SetAllRead();   // also what came since it was opened
}

// ---- Window ----

bool XBrowserWindow::eventFilter(QObject* watchedP, QEvent* eventP) {
    if (eventP->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(eventP)->key();
        if (key == Qt::Key_Escape) {   // a cell's editor has it before
            Escape();
            if (watchedP == i_searchP) GoToSongs();
            return true;
        }
        if (watchedP == i_searchP && key == Qt::Key_Down) {
            GoToSongs();
            return true;
        }
    }
    return QMainWindow::eventFilter(watchedP, eventP);
}

void XBrowserWindow::keyPressEvent(QKeyEvent* eventP) {
    if (eventP->key() == Qt::Key_Escape) return Escape();
    QMainWindow::keyPressEvent(eventP);
}

void XBrowserWindow::TypeSearch(const QString& text) {
    if (text == "\b") {   // what was looked for is mended
        if (i_searchP->text().isEmpty()) return;
        i_searchP->setFocus(Qt::OtherFocusReason);
        i_searchP->end(false);
        i_searchP->backspace();
    } else if (!text.isEmpty() && text.at(0).isPrint()) {
        i_searchP->setFocus(Qt::OtherFocusReason);
        i_searchP->selectAll();
        i_searchP->insert(text);
    }
}

void XBrowserWindow::Escape() {
    if (i_searchP->text().isEmpty()) return i_tableP->clearSelection();
    i_searchP->clear();
    Filter();
}

void XBrowserWindow::SavePlaces() {
    i_tableP->SaveColumns();
    if (!i_splitterP->sizes().empty()) i_setup.prefs.SetLong(kPref_Sidebar, i_splitterP->sizes().front());
}

void XBrowserWindow::showEvent(QShowEvent* eventP) {
    QMainWindow::showEvent(eventP);
    QTimer::singleShot(0, this, &XBrowserWindow::ShowPreview);   // its height is told once the others have theirs
}

void XBrowserWindow::hideEvent(QHideEvent* eventP) {
    SavePlaces();
    QMainWindow::hideEvent(eventP);
}

void XBrowserWindow::closeEvent(QCloseEvent* eventP) {
    emit CloseAsked();
    eventP->ignore();   // the quit sequence decides
}

void XBrowserWindow::resizeEvent(QResizeEvent* eventP) {
    QMainWindow::resizeEvent(eventP);
    const bool lowB = height() < kWindow_Low;
    i_transportP->SetLow(lowB);
    ShowPreview();
    i_barP->setContentsMargins(14, lowB ? 2 : 8, 10, lowB ? 2 : 8);
    if (!i_resizeEnd.isActive()) emit Resizing(true);
    i_resizeEnd.start();
}
