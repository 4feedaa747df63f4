#pragma once
#include <QDialog>

class CPlayControl;
class CPreferences;
class QComboBox;
class XActions;
class XKeysPage;

/** The settings of the desktop: its look, the sound output, the switches of play, and the keys. Each is taken when the
    window is closed with OK.
    Threads  main. */
class XPreferencesWindow final : public QDialog {
    Q_OBJECT
public:
    XPreferencesWindow(CPreferences& prefs, CPlayControl& play, XActions& actions, QWidget* parentP);

private:
    [[nodiscard]] QWidget* MakeGeneral();
    void Take();

    CPreferences& i_prefs;
    CPlayControl& i_play;
    XActions& i_actions;
    QComboBox* i_lookP = nullptr;   // children
    QComboBox* i_outputP = nullptr;
    XKeysPage* i_keysP = nullptr;
};
