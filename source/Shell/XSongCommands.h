#pragma once
#include <QObject>

#include "Library/CSongDatabase.h"
#include "Shell/BrowserSetup.h"

class CSongTableModel;
class XActions;
class XFileAdder;
class XSongTable;

/** The commands on the rows that are selected: removing, files, other lists, the clipboard; each with the rule when it can
    be given.
    Threads  main. A child of the window; all others outlive it. */
class XSongCommands final : public QObject {
    Q_OBJECT
public:
    XSongCommands(const BrowserSetup& setup, XActions& actions, XSongTable& table, CSongTableModel& model,
                  XFileAdder& adder, QWidget& window);

    [[nodiscard]] SDB_Selection Selected() const;
    /** The selection, its songs or the list are others now: looks at them, and has all rules asked again. */
    void Refresh();

signals:
    void Told(const QString& text);

private:
    /** What the rules ask of the selected rows. */
    struct Facts {
        int rowsL = 0;   // so many as were looked at
        bool zipB = false, unzipB = false, missingB = false;
    };

    void OnRows();
    void OnSongs();
    void OnLists();
    void Look();
    void PlayNext();
    void AddToList();
    void Copy();
    void Paste();
    /** The list is sorted: says by what, and offers the order in which rows can be moved. */
    void OfferUserOrder(const QPoint& global);
    /** In the user's order; the end of the list where another one is shown, or nothing is selected. */
    [[nodiscard]] RowIndex RowBehindSelection() const;
    static void TellFailure(OSErr err);

    const BrowserSetup& i_setup;
    XActions& i_actions;
    XSongTable& i_table;
    CSongTableModel& i_model;
    XFileAdder& i_adder;
    QWidget& i_window;
    Facts i_facts;
};
