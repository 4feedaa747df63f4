#pragma once
#include <functional>
#include <QTimer>
#include <QWidget>

#include "Library/LibraryIDs.h"
#include "Play/CPlayWatcher.h"

class CPlayControl;
class CSongDatabase;
class QComboBox;
class QLabel;
class QSlider;
class QToolButton;
class XActions;
class XElidedLabel;
class XSeekBar;
class XStepper;
enum class Command : std::uint8_t;
enum class IconKind;

/** What plays, how far it is and how it sounds: the panel that a KJ reads across a dark booth. Asks CPlayControl ten
   times a second while a song runs, and else only when it is told of a change. Threads  main. Goes before its play
   control. */
class XTransport final : public QWidget, private CPlayWatcher {
    Q_OBJECT
public:
    /** `mayInterrupt` is asked before a button ends the song that plays. */
    XTransport(CPlayControl& play, CSongDatabase& database, XActions& actions, std::function<bool()> mayInterrupt);
    ~XTransport() override;

    /** "-3:05": with a minus what is left. Hours only where there are some. */
    [[nodiscard]] static QString TimeText(long time300);

signals:
    void PlayTold();
    void Message(const QString& text);
    /** The user wants the menu of the sound outputs here. */
    void OutputsAsked(const QPoint& at);

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
    void Connect();

    CPlayControl& i_play;
    SongID i_song{0};   // whose place the seek bar shows
    CSongDatabase& i_database;
    XActions& i_actions;
    const std::function<bool()> i_mayInterrupt;
    QTimer i_tick;
    // Children.
    XElidedLabel* i_titleP;
    XElidedLabel* i_artistP;
    QLabel* i_elapsedP;
    QLabel* i_leftP;
    XSeekBar* i_seekP;
    QToolButton* i_playP = nullptr;
    QToolButton* i_muteP = nullptr;
    XStepper* i_pitchP = nullptr;
    XStepper* i_tempoP = nullptr;
    XStepper* i_slipP = nullptr;
    QComboBox* i_vocalP = nullptr;
    QSlider* i_volumeP = nullptr;
};
