#pragma once
#include <QWidget>

#include "Play/CPlayWatcher.h"

class CPlayControl;
class CPreferences;
class QButtonGroup;
class QLabel;
class QSpinBox;
class QVBoxLayout;

/** Where the sound goes, and how much later the picture is shown for that device: what plays by radio or through a
    television is heard late. Both hold at once. The machine is asked for its devices on a worker; until it answers, the
    one that is chosen stands alone.
    Threads  main. Goes before its play control. */
class XOutputPanel final : public QWidget, private CPlayWatcher {
    Q_OBJECT
public:
    XOutputPanel(CPlayControl& play, CPreferences& prefs, QWidget* parentP = nullptr);
    ~XOutputPanel() override;

    /** In a frame of its own that closes by a click outside or Escape, under `at`. */
    static void PopUp(CPlayControl& play, CPreferences& prefs, QWidget& parent, const QPoint& at);

signals:
    void Resized();

protected:
    void resizeEvent(QResizeEvent* eventP) override;

private:
    void FitWords();
    void PlayChanged() override {}
    void SettingsChanged() override;
    void ShowDevices(const std::vector<std::string>& names);
    [[nodiscard]] QString Chosen() const;

    CPlayControl& i_play;
    CPreferences& i_prefs;
    QButtonGroup* i_groupP;   // children
    QVBoxLayout* i_devicesP;
    QSpinBox* i_delayP;
    QLabel* i_wordsP;
};
