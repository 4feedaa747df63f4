#pragma once
#include <QDialog>

class CPlayControl;
class CPreferences;
class QTabWidget;
class XActions;
class XPreferencePage;

/** The settings of the desktop, a page for each thing that a KJ looks for. A setting holds at once; the window stays
    open beside the show, and has nothing to confirm.
    Threads  main. */
class XPreferencesWindow final : public QDialog {
    Q_OBJECT
public:
    XPreferencesWindow(CPreferences& prefs, CPlayControl& play, XActions& actions, QWidget* parentP);

protected:
    void changeEvent(QEvent* eventP) override;

private:
    XPreferencePage* MakePage(const QString& title);
    void MakeVideo();
    void MakeSound();
    void MakeLook();
    void MakeKeys();

    CPreferences& i_prefs;
    CPlayControl& i_play;
    XActions& i_actions;
    QTabWidget* i_tabsP;   // a child
    std::vector<XPreferencePage*> i_pages;
};
