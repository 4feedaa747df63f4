#pragma once
#include <QDialog>

#include "Library/CSongDatabase.h"

class QLineEdit;
class QListWidget;

/** Asks for one of the user's lists. A typed text leaves the lists whose name has it, and is the name of a new one; the
    arrows and Return choose. The show goes on beside it: it waits for nobody.
    Threads  main.
    Owner    itself, until it is closed. */
class XListPicker final : public QDialog {
    Q_OBJECT
public:
    XListPicker(CSongDatabase& database, const QString& title, QWidget* parentP);

signals:
    /** By Return or a double click, once; the picker closes. */
    void Chosen(PlaylistID list);
    void NewWanted(const QString& name);

protected:
    bool event(QEvent* eventP) override;
    bool eventFilter(QObject* watchedP, QEvent* eventP) override;

private:
    void Fill();
    void Choose();

    CSongDatabase& i_database;
    // Children.
    QLineEdit* i_nameP;
    QListWidget* i_listsP;
};
