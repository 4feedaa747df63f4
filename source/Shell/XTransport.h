#pragma once
#include <functional>
#include <QTimer>
#include <QWidget>

#include "Library/LibraryIDs.h"
#include "Play/CPlayWatcher.h"

class CPlayControl;
class CSongDatabase;
class QBoxLayout;
class QComboBox;
class QSlider;
class QToolButton;
class XActions;
class XElidedLabel;
class XSeekBar;
class XStepper;
class XValueLabel;
enum class Command : std::uint8_t;
enum class IconKind;

/** What plays, how far it is and how it sounds: the panel that a KJ reads across a dark booth. Asks CPlayControl ten
    times a second while a song runs, and else only when it is told of a change. In a narrow window what the menus have,
    too, gives way, never the volume and the output; in a low one the place in the song stands beside its name.
    Threads  main.
    Owner    the main window; goes before its play control. */
class XTransport final : public QWidget, private CPlayWatcher {
    Q_OBJECT
public:
    /** Calls what ends the song that plays, now or once the user has said so. */
    using IfInterruptible = std::function<void(std::function<void()> then)>;
    XTransport(CPlayControl& play, CSongDatabase& database, XActions& actions, IfInterruptible ifInterruptible);
    ~XTransport() override;

    /** "-3:05": with a minus what is left. Hours only where there are some. */
    [[nodiscard]] static QString TimeText(long time300);
    /** There is little height for it. */
    void SetLow(bool lowB);
    /** Which of the two times stands out: what is left, or what has gone. */
    void SetTimeDisplay(bool leftB);

protected:
    void resizeEvent(QResizeEvent* eventP) override;
    bool eventFilter(QObject* watchedP, QEvent* eventP) override;

signals:
    void PlayTold();
    void Message(const QString& text);
    /** The user wants the menu of the sound outputs here. */
    void OutputsAsked(const QPoint& at);
    /** The user clicked on one of the times. */
    void TimeDisplayChosen(bool leftB);

private:
    void PlayChanged() override;
    void SettingsChanged() override;
    void GoBackChanged() override;
    void ShowTime();
    void ShowDigits(long time300, long end300);
    void ShowSong();
    void ShowSlip();
    [[nodiscard]] QToolButton* MakeButton(Command command, IconKind icon, int size);
    [[nodiscard]] QToolButton* MakePlay();
    [[nodiscard]] QWidget* MakeTop();
    [[nodiscard]] QWidget* MakeBottom();
    void Arrange();
    void Connect();

    CPlayControl& i_play;
    SongID i_song{0};   // whose place the seek bar shows
    CSongDatabase& i_database;
    XActions& i_actions;
    const IfInterruptible i_ifInterruptible;
    QTimer i_tick;
    // Children.
    XElidedLabel* i_titleP;
    XElidedLabel* i_artistP;
    XValueLabel* i_elapsedP;
    XValueLabel* i_leftP;
    XSeekBar* i_seekP;
    QWidget* i_namesP = nullptr;
    QBoxLayout *i_columnP = nullptr, *i_topP = nullptr, *i_bottomP = nullptr;
    QWidget* i_vocalGroupP = nullptr;
    bool i_lowB = false;
    QToolButton* i_playP = nullptr;
    QToolButton* i_muteP = nullptr;
    QToolButton* i_oneLevelP = nullptr;
    XStepper* i_pitchP = nullptr;
    XStepper* i_tempoP = nullptr;
    XStepper* i_slipP = nullptr;
    QComboBox* i_vocalP = nullptr;
    QSlider* i_volumeP = nullptr;
};
