#pragma once
#include <filesystem>
#include <functional>
#include <memory>
#include <QMainWindow>
#include <QPointer>
#include <QTimer>

#include "App/CNotices.h"
#include "App/CTaskList.h"
#include "Library/CSongDatabase.h"
#include "Shell/CKeyMap.h"

class CGraphicsPorts;
class CLibraryCommands;
class CPlayControl;
class CPreferences;
class CSongTableModel;
class QAction;
class QBoxLayout;
class QLineEdit;
class QMenu;
class QSplitter;
class XActions;
class XBrowserMenus;
class XElidedLabel;
class XNoticeBar;
class XNoticesWindow;
class XPreferencesWindow;
class XShortcutSheet;
class XSongTable;
class XSourceList;
class XTasksButton;
class XTransport;
class XValueLabel;

/** What the main window shows and orders about; all outlive it. */
struct BrowserSetup {
    CSongDatabase& database;
    CPlayControl& play;
    CPreferences& prefs;
    CLibraryCommands& commands;
    CNotices& notices;
    CGraphicsPorts* portsP = nullptr;   // of the preview; null leaves it out
    /** CApp::ConfirmManualSongChange. */
    std::function<void(long, std::function<void()>)> ifInterruptible = [](long, const auto& then) { then(); };
};

/** The main window: the lists at the left over the preview, the songs of one of them at the right, the transport above.
    Threads  main. */
class XBrowserWindow final : public QMainWindow {
    Q_OBJECT
public:
    explicit XBrowserWindow(BrowserSetup setup);
    ~XBrowserWindow() override;

    [[nodiscard]] XActions& Actions() const { return *i_actions; }
    [[nodiscard]] CKeyMap& Keys() { return i_keys; }
    void SetStatus(const QString& text);
    /** No song of the list is selected any more. */
    void Deselect();
    /** What the preferences say of this window. */
    void FollowPreferences();
    /** Of the displays of the full screen; filled by who has the video windows, when it opens. */
    [[nodiscard]] QMenu& DisplayMenu() const;
    /** What works in the background: a button in the status line while there is anything. */
    void ShowTasks(const std::vector<TaskRow>& rows);
    void NoticesChanged();
    /** Adds files and folders to the library, and their songs to a list of the user's. */
    void AddFiles(const QStringList& paths, PlaylistID list, RowIndex where);

signals:
    void CloseAsked();
    void Resizing(bool resizingB);

protected:
    void closeEvent(QCloseEvent* eventP) override;
    void resizeEvent(QResizeEvent* eventP) override;
    void showEvent(QShowEvent* eventP) override;
    void hideEvent(QHideEvent* eventP) override;
    bool eventFilter(QObject* watchedP, QEvent* eventP) override;
    void keyPressEvent(QKeyEvent* eventP) override;

private:
    [[nodiscard]] QWidget* MakeSidebar();
    [[nodiscard]] QWidget* MakeSongs();
    void MakeStatus();
    void ShowPreferences();
    void ShowNotices();
    void Connect();
    void ConnectLists();
    void ShowList(PlaylistID list);
    void Filter();
    /** What was typed in a list begins a new search. */
    void TypeSearch(const QString& text);
    /** Takes back the search; without one, the selection. */
    void Escape();
    /** The keys go to the table, and a row is there to be played. */
    void GoToSongs();
    void ShowState();
    void PlayTold();
    /** By a key, a double click or a button: asks when that would end a song, if the preferences want so. */
    void PlayItem(PLItemID item, long confirmModeL);
    /** The one song that is selected; several are refused with a question. */
    void PlaySelected(long confirmModeL);
    void PlayOrPause();
    void ConnectLibrary();
    void ConnectFiles();
    void ConnectRows();
    void EnableList();
    void ShowPreview();
    void PlayNext();
    void AddToList();
    void Paste();
    /** The list is sorted: says by what, and offers the order in which rows can be moved. */
    void OfferUserOrder(const QPoint& global);
    /** In the user's order; the end of the list where another one is shown, or nothing is selected. */
    [[nodiscard]] RowIndex RowBehindSelection() const;
    [[nodiscard]] SDB_Selection Selected() const;
    /** The songs' commands can be given when they would do something with one of the rows. */
    void EnableSongs();
    static void TellFailure(OSErr err);
    /** The user chooses what to add to the list that is shown, from where it was the last time. */
    void AskForFiles();
    void AskForFolder();
    [[nodiscard]] QString FolderToAddFrom() const;
    void SavePlaces();
    /** One song came: it is shown, and played when nothing else is. */
    void ShowAdded(SongID song);

    BrowserSetup i_setup;
    CKeyMap i_keys;
    std::unique_ptr<XActions> i_actions;
    std::unique_ptr<CSongTableModel> i_model;
    QTimer i_resizeEnd, i_typing;
    PLItemID i_begunItem = SDB_kNoItem;   // the row that was last played from the table
    // Children.
    XTransport* i_transportP = nullptr;
    XNoticeBar* i_noticesP = nullptr;
    XSourceList* i_sourcesP = nullptr;
    XSongTable* i_tableP = nullptr;
    QLineEdit* i_searchP = nullptr;
    XValueLabel* i_countP = nullptr;
    XTasksButton* i_tasksP = nullptr;
    XElidedLabel* i_listNameP = nullptr;
    QWidget* i_previewP = nullptr;   // null without a picture to show
    XBrowserMenus* i_menusP = nullptr;
    QSplitter* i_sideP = nullptr;   // the lists over the preview
    QBoxLayout* i_barP = nullptr;   // the list's name and the search
    QSplitter* i_splitterP = nullptr;
    QPointer<XPreferencesWindow> i_preferencesP;
    QPointer<XNoticesWindow> i_noticeListP;
    QPointer<XShortcutSheet> i_sheetP;
};
