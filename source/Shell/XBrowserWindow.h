#pragma once
#include <memory>
#include <QMainWindow>
#include <QPointer>
#include <QTimer>

#include "App/CTaskList.h"
#include "Library/LibraryIDs.h"
#include "Shell/BrowserSetup.h"
#include "Shell/CKeyMap.h"

class CSongTableModel;
class QAction;
class QBoxLayout;
class QLineEdit;
class QMenu;
class QSplitter;
class XActions;
class XBrowserMenus;
class XElidedLabel;
class XFileAdder;
class XNoticeBar;
class XNoticesWindow;
class XPreferencesWindow;
class XShortcutSheet;
class XSongCommands;
class XSongTable;
class XSourceList;
class XTasksButton;
class XTransport;
class XValueLabel;

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
    /** Letters typed in a list begin a new search. */
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
    void ShowPreview();
    /** A list of the user's own is chosen. */
    [[nodiscard]] bool IsOwnList() const;
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
    XFileAdder* i_adderP = nullptr;
    XSongCommands* i_songsP = nullptr;
    QSplitter* i_sideP = nullptr;   // the lists over the preview
    QBoxLayout* i_barP = nullptr;   // the list's name and the search
    QSplitter* i_splitterP = nullptr;
    QPointer<XPreferencesWindow> i_preferencesP;
    QPointer<XNoticesWindow> i_noticeListP;
    QPointer<XShortcutSheet> i_sheetP;
};
