#include "Shell/XTransport.h"

#include <cmath>
#include <QBoxLayout>
#include <QComboBox>
#include <QLabel>
#include <QSignalBlocker>
#include <QSlider>
#include <QStyle>
#include <QToolButton>

#include "Core/Localize.h"
#include "Library/CSongDatabase.h"
#include "Play/CPlayControl.h"
#include "Shell/XActions.h"
#include "Widgets/ActionButton.h"
#include "Widgets/QtText.h"
#include "Widgets/XElidedLabel.h"
#include "Widgets/XIcons.h"
#include "Widgets/XSeekBar.h"
#include "Widgets/XStepper.h"
#include "Widgets/XValueLabel.h"

namespace {

constexpr int kTick_Milliseconds = 100;
constexpr long k300ths_Second = 300;
constexpr int kVolume_Step = 5;   // percent
constexpr int kTime_Width = 150, kTime_LowWidth = 64, kVolume_Width = 184;

constexpr struct {
    VocalMode mode;
    const char* titleZ;
} kVocal_Modes[] = {
    {VocalMode::kBoth, N_("As recorded")},
    {VocalMode::kLeftOnly, N_("Left channel")},
    {VocalMode::kRightOnly, N_("Right channel")},
    {VocalMode::kVocalCut, N_("Vocal cut")},
};

QLabel* MakeCaption(const QString& text, QWidget* ofP) {
    auto* const labelP = new QLabel(text);
    labelP->setBuddy(ofP);
    labelP->setObjectName("caption");
    return labelP;
}

XValueLabel* MakeTime(Qt::Alignment alignment, const QString& name, const QString& description) {
    auto* const labelP = new XValueLabel(name);
    labelP->setObjectName("time");
    labelP->setAlignment(alignment | Qt::AlignVCenter);
    labelP->setMinimumWidth(kTime_Width);
    labelP->setAccessibleDescription(description);
    labelP->setToolTip(XTransport::tr("A click lets this time stand out"));
    return labelP;
}

/** Room between two groups, which gives way in a narrow window. */
QSpacerItem* MakeGap() { return new QSpacerItem(12, 1, QSizePolicy::Maximum, QSizePolicy::Minimum); }

/** `captionP` over `widgetP`. */
QWidget* Under(QLabel* captionP, QLayout* rowP) {
    auto* const groupP = new QWidget;
    auto* const columnP = new QVBoxLayout(groupP);
    columnP->setContentsMargins(0, 0, 0, 0);
    columnP->setSpacing(1);
    columnP->addWidget(captionP);
    columnP->addLayout(rowP);
    return groupP;
}

}   // namespace

XTransport::XTransport(CPlayControl& play, CSongDatabase& database, XActions& actions, IfInterruptible ifInterruptible)
    : i_play(play),
      i_database(database),
      i_actions(actions),
      i_ifInterruptible(std::move(ifInterruptible)),
      i_titleP(new XElidedLabel(tr("Song"))),
      i_artistP(new XElidedLabel(tr("Artist"))),
      i_elapsedP(MakeTime(Qt::AlignLeft, tr("Elapsed"), tr("How long the song has played"))),
      i_leftP(MakeTime(Qt::AlignRight, tr("Remaining"), tr("How long the song will play"))),
      i_seekP(new XSeekBar) {
    setObjectName("transport");
    setAttribute(Qt::WA_StyledBackground);
    setAccessibleName(tr("Transport"));
    setAccessibleDescription(tr("What plays, and how it sounds"));
    i_columnP = new QVBoxLayout(this);
    i_columnP->addWidget(MakeTop());
    i_columnP->addWidget(i_seekP);
    i_columnP->addWidget(MakeBottom());
    Arrange();
    for (XValueLabel* const timeP : {i_elapsedP, i_leftP}) timeP->installEventFilter(this);
    SetTimeDisplay(false);
    Connect();
    i_tick.setInterval(kTick_Milliseconds);
    connect(&i_tick, &QTimer::timeout, this, &XTransport::ShowTime);
    i_play.AddWatcher(*this);
    PlayChanged();
    SettingsChanged();
    GoBackChanged();
}

XTransport::~XTransport() { i_play.RemoveWatcher(*this); }

// ---- The panel ----

QToolButton* XTransport::MakeButton(Command command, IconKind icon, int size) {
    auto* const buttonP = new QToolButton;
    buttonP->setIcon(Icon(icon));
    buttonP->setFixedSize(size, size);
    buttonP->setIconSize(QSize(size, size) * 6 / 10);
    BindButton(*buttonP, i_actions.Get(command));
    return buttonP;
}

QToolButton* XTransport::MakePlay() {
    i_playP = new QToolButton;
    i_playP->setObjectName("play");
    i_playP->setFixedSize(48, 48);
    i_playP->setIconSize({28, 28});
    BindButton(*i_playP, i_actions.Get(Command::kPlayPause));
    return i_playP;
}

QWidget* XTransport::MakeTop() {
    i_titleP->setObjectName("songTitle");
    i_titleP->setAlignment(Qt::AlignHCenter | Qt::AlignBottom);
    i_artistP->setObjectName("artist");
    i_artistP->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    i_namesP = new QWidget;
    auto* const namesP = new QVBoxLayout(i_namesP);
    namesP->setContentsMargins(0, 0, 0, 0);
    namesP->setSpacing(0);
    namesP->addWidget(i_titleP);
    namesP->addWidget(i_artistP);
    auto* const widgetP = new QWidget;
    i_topP = new QHBoxLayout(widgetP);
    return widgetP;
}

void XTransport::SetTimeDisplay(bool leftB) {
    for (XValueLabel* const timeP : {i_elapsedP, i_leftP}) {
        timeP->setProperty("chosen", (timeP == i_leftP) == leftB);
        timeP->style()->polish(timeP);   // the style sheet looks at the property
    }
}

bool XTransport::eventFilter(QObject* watchedP, QEvent* eventP) {
    if (eventP->type() == QEvent::MouseButtonPress) emit TimeDisplayChosen(watchedP == i_leftP);
    return QWidget::eventFilter(watchedP, eventP);
}

void XTransport::SetLow(bool lowB) {
    if (std::exchange(i_lowB, lowB) != lowB) Arrange();
}

void XTransport::Arrange() {
    i_columnP->setContentsMargins(16, i_lowB ? 3 : 10, 16, i_lowB ? 3 : 10);
    i_columnP->setSpacing(i_lowB ? 0 : 4);
    i_topP->setContentsMargins(i_lowB ? 0 : 8, 0, i_lowB ? 0 : 8, 0);
    i_artistP->setVisible(!i_lowB);
    for (XValueLabel* const timeP : {i_elapsedP, i_leftP}) {
        timeP->setMinimumWidth(i_lowB ? kTime_LowWidth : kTime_Width);
        timeP->setProperty("low", i_lowB);
        timeP->style()->polish(timeP);   // the style sheet looks at the property
    }
    i_titleP->setAlignment(i_lowB ? Qt::AlignLeft | Qt::AlignVCenter : Qt::AlignHCenter | Qt::AlignBottom);
    for (QWidget* const partP : std::initializer_list<QWidget*>{i_elapsedP, i_namesP, i_leftP})
        i_topP->removeWidget(partP);
    i_topP->removeWidget(i_seekP);
    i_columnP->removeWidget(i_seekP);
    if (i_lowB) {
        i_topP->addWidget(i_namesP, 2);
        i_topP->addWidget(i_elapsedP);
        i_topP->addWidget(i_seekP, 3);
        i_topP->addWidget(i_leftP);
    } else {
        i_topP->addWidget(i_elapsedP);
        i_topP->addWidget(i_namesP, 1);
        i_topP->addWidget(i_leftP);
        i_columnP->insertWidget(1, i_seekP);
    }
}

void XTransport::resizeEvent(QResizeEvent* eventP) {
    QWidget::resizeEvent(eventP);
    // What gives way first stands first; the menus have its commands.
    QWidget* const groups[] = {i_slipP, i_vocalGroupP, i_tempoP, i_pitchP};
    const auto widthOf = [this](const QWidget* groupP) {
        return groupP->minimumSizeHint().width() + i_bottomP->spacing();
    };
    const QMargins margins = i_columnP->contentsMargins();
    int room = width() - margins.left() - margins.right() - i_bottomP->minimumSize().width();
    for (const QWidget* const groupP : groups)
        if (groupP->isHidden()) room -= widthOf(groupP);
    for (QWidget* const groupP : groups) {
        const bool goesB = room < 0;
        if (goesB) room += widthOf(groupP);
        groupP->setVisible(!goesB);
    }
}

QWidget* XTransport::MakeBottom() {
    auto* const widgetP = new QWidget;
    auto* const rowP = new QHBoxLayout(widgetP);
    i_bottomP = rowP;
    rowP->setContentsMargins(0, 0, 0, 0);
    rowP->setSpacing(4);
    rowP->addWidget(MakeButton(Command::kRewind, IconKind::kRewind, 40));
    rowP->addWidget(MakeButton(Command::kPrevious, IconKind::kPrevious, 40));
    rowP->addWidget(MakePlay());
    rowP->addWidget(MakeButton(Command::kNext, IconKind::kNext, 40));
    rowP->addWidget(MakeButton(Command::kStop, IconKind::kStop, 40));
    rowP->addStretch(1);

    i_pitchP = new XStepper(tr("Pitch"), i_actions.Get(Command::kPitchDown), i_actions.Get(Command::kPitchReset),
                            i_actions.Get(Command::kPitchUp), 44);
    i_tempoP = new XStepper(tr("Tempo"), i_actions.Get(Command::kTempoDown), i_actions.Get(Command::kTempoReset),
                            i_actions.Get(Command::kTempoUp), 62);
    rowP->addWidget(i_pitchP, 0, Qt::AlignVCenter);
    rowP->addItem(MakeGap());
    rowP->addWidget(i_tempoP, 0, Qt::AlignVCenter);
    rowP->addItem(MakeGap());

    i_slipP = new XStepper(tr("Lyrics"), i_actions.Get(Command::kSlipSongLater), i_actions.Get(Command::kSlipSongReset),
                           i_actions.Get(Command::kSlipSongEarlier), 58);
    rowP->addWidget(i_slipP, 0, Qt::AlignVCenter);
    rowP->addItem(MakeGap());

    i_vocalP = new QComboBox;
    for (const auto& row : kVocal_Modes) i_vocalP->addItem(tr(row.titleZ), static_cast<int>(row.mode));
    i_vocalP->setFixedHeight(28);
    i_vocalP->setMinimumWidth(84);
    i_vocalP->setAccessibleName(tr("Vocals"));
    i_vocalP->setAccessibleDescription(tr("How the lead vocal is heard"));
    auto* const vocalRowP = new QHBoxLayout;
    vocalRowP->addWidget(i_vocalP);
    i_vocalGroupP = Under(MakeCaption(tr("Vocals"), i_vocalP), vocalRowP);
    rowP->addWidget(i_vocalGroupP, 0, Qt::AlignVCenter);
    rowP->addItem(MakeGap());

    i_volumeP = new QSlider(Qt::Horizontal);
    i_volumeP->setRange(0, 100);
    i_volumeP->setPageStep(kVolume_Step);
    i_volumeP->setFixedHeight(28);
    i_volumeP->setMinimumWidth(50);
    i_volumeP->setAccessibleName(tr("Volume"));
    i_volumeP->setAccessibleDescription(tr("In percent"));
    i_muteP = MakeButton(Command::kMute, IconKind::kVolume, 28);
    auto* const volumeRowP = new QHBoxLayout;
    volumeRowP->setSpacing(4);
    volumeRowP->addWidget(i_muteP);
    volumeRowP->addWidget(i_volumeP);
    i_oneLevelP = MakeButton(Command::kOneLevel, IconKind::kOneLevel, 28);
    i_oneLevelP->setCheckable(true);
    volumeRowP->addWidget(i_oneLevelP);
    QWidget* const volumeGroupP = Under(MakeCaption(tr("Volume"), i_volumeP), volumeRowP);
    volumeGroupP->setMaximumWidth(kVolume_Width);
    rowP->addWidget(volumeGroupP, 1, Qt::AlignVCenter);   // as wide as it may be, where there is room
    rowP->addItem(MakeGap());

    auto* const outputP = new QToolButton;
    outputP->setIcon(Icon(IconKind::kOutput));
    outputP->setIconSize({22, 22});
    outputP->setFixedSize(36, 36);
    outputP->setToolTip(tr("Where the sound goes"));
    outputP->setAccessibleName(tr("Sound output"));
    outputP->setAccessibleDescription(tr("A menu of the devices that there are"));
    connect(outputP, &QToolButton::clicked, this,
            [this, outputP] { emit OutputsAsked(outputP->mapToGlobal(QPoint(0, outputP->height()))); });
    rowP->addWidget(outputP);
    rowP->addWidget(MakeButton(Command::kFullScreen, IconKind::kFullScreen, 36));
    return widgetP;
}

// ---- Commands ----

void XTransport::Connect() {
    const auto seekBy = [this](long seconds) {
        i_play.SeekTo300(i_play.CurTime300() + seconds * k300ths_Second);
        ShowTime();
    };
    const auto volumeBy = [this](int percent) { i_volumeP->setValue(i_volumeP->value() + percent); };
    const auto playsB = [this] { return i_play.State() != PlayState::kIdle; };
    const struct {
        Command command;
        std::function<void()> work;
        std::function<bool()> ifB = {};
    } works[] = {
        {Command::kStop, [this] { i_ifInterruptible([&play = i_play] { play.Stop(); }); }, playsB},
        {Command::kNext, [this] { i_ifInterruptible([&play = i_play] { (void)play.PlayNext(); }); }},
        {Command::kPrevious, [this] { i_ifInterruptible([&play = i_play] { (void)play.PlayPrevious(); }); }},
        {Command::kGoBack, [this] { (void)i_play.GoBack(); },   // never asks: a singer waits
         [this] { return i_play.InterruptedSong().has_value(); }},
        {Command::kRewind, [this] { i_play.Rewind(); }, playsB},
        {Command::kSeekBack, [seekBy] { seekBy(-5); }, playsB},
        {Command::kSeekForward, [seekBy] { seekBy(5); }, playsB},
        {Command::kSeekBackFar, [seekBy] { seekBy(-30); }, playsB},
        {Command::kSeekForwardFar, [seekBy] { seekBy(30); }, playsB},
        {Command::kVolumeUp, [volumeBy] { volumeBy(kVolume_Step); }},
        {Command::kVolumeDown, [volumeBy] { volumeBy(-kVolume_Step); }},
        {Command::kMute, [this] { i_play.SetMute(!i_play.IsMuted()); }},
        {Command::kOneLevel, [this] { i_play.SetOneLevel(!i_play.IsOneLevel()); }},
        {Command::kPitchUp, [this] { (void)i_play.SetPitch(i_play.Pitch() + 1); }},
        {Command::kPitchDown, [this] { (void)i_play.SetPitch(i_play.Pitch() - 1); }},
        {Command::kPitchReset, [this] { (void)i_play.SetPitch(0); }},
        {Command::kTempoUp, [this] { (void)i_play.StepTempo(1); }},
        {Command::kTempoDown, [this] { (void)i_play.StepTempo(-1); }},
        {Command::kTempoReset, [this] { (void)i_play.SetTempo(1.0); }},
        {Command::kVocalNext,
         [this] {
             i_vocalP->setCurrentIndex((i_vocalP->currentIndex() + 1) % i_vocalP->count());
             emit Message(tr("Vocals: %1").arg(i_vocalP->currentText()));
         }},
        {Command::kSlipSongEarlier,
         [this] {
             (void)i_play.SlipSong(1);
             ShowSlip();
         },
         playsB},
        {Command::kSlipSongLater,
         [this] {
             (void)i_play.SlipSong(-1);
             ShowSlip();
         },
         playsB},
        {Command::kSlipSongReset,
         [this] {
             (void)i_play.SetSongSlip300(0);
             ShowSlip();
         },
         playsB},
        {Command::kSlipAllEarlier, [this] { (void)i_play.SlipGlobal(1); }},
        {Command::kSlipAllLater, [this] { (void)i_play.SlipGlobal(-1); }},
        {Command::kSlipAllReset, [this] { (void)i_play.SetGlobalSlip300(0); }},
    };
    for (const auto& [command, work, ifB] : works) i_actions.On(command, work, ifB);

    connect(i_seekP, &XSeekBar::SeekAsked, this, [this](long time300) {
        i_play.SeekTo300(time300);
        ShowTime();
    });
    connect(i_seekP, &XSeekBar::Dragged, this, [this](long time300) { ShowDigits(time300, i_play.EndTime300()); });
    connect(i_volumeP, &QSlider::valueChanged, this,
            [this](int percent) { i_play.SetVolume(static_cast<float>(percent) / 100.0F); });
    connect(i_vocalP, &QComboBox::currentIndexChanged, this,
            [this] { i_play.SetVocalMode(static_cast<VocalMode>(i_vocalP->currentData().toInt())); });
}

// ---- What is told ----

void XTransport::PlayChanged() {
    const bool runsB = i_play.State() == PlayState::kPlaying && !i_play.IsPaused();
    const bool startsB = i_play.State() == PlayState::kStarting;
    if (runsB || startsB)
        i_tick.start();
    else
        i_tick.stop();
    i_playP->setIcon(Icon(runsB ? IconKind::kPause : IconKind::kPlay, IconInk::kOnAccent));
    i_playP->setAccessibleName(runsB ? tr("Pause") : tr("Play"));
    const bool idleB = i_play.State() == PlayState::kIdle;
    i_actions.Refresh();
    const SongID song = idleB ? SongID{0} : i_play.CurrentSong();
    if (std::exchange(i_song, song) != song) i_seekP->ForgetDrag();
    ShowSong();
    ShowSlip();
    ShowTime();
    emit PlayTold();
}

void XTransport::ShowSong() {
    CSong* const songP = Number(i_play.CurrentSong()) > 0 ? i_database.GetSong(i_play.CurrentSong()) : nullptr;
    if (songP != nullptr)
        i_titleP->SetText(QtText(songP->Name()));
    else if (const CSongPlay* const playP = i_play.Current(); playP != nullptr)   // it has left the library
        i_titleP->SetText(QtText(playP->Spec().name));
    else
        i_titleP->SetText(tr("Nothing plays"));
    i_artistP->SetText(songP == nullptr ? QString() : QtText(songP->Meta().GetString("arts"_key)));
}

void XTransport::SettingsChanged() {
    const int pitch = i_play.Pitch();
    i_pitchP->SetValue(pitch > 0 ? QString("+%1").arg(pitch) : QString::number(pitch), pitch != 0);
    const int tempo = static_cast<int>(std::lround(i_play.Tempo() * 100));
    i_tempoP->SetValue(QString("%1 %").arg(tempo), tempo != 100);
    const QSignalBlocker quietVolume(i_volumeP), quietVocal(i_vocalP);
    i_volumeP->setValue(static_cast<int>(std::lround(i_play.Volume() * 100)));
    i_volumeP->setToolTip(tr("Volume %1 %").arg(i_volumeP->value()));
    i_vocalP->setCurrentIndex(std::max(0, i_vocalP->findData(static_cast<int>(i_play.Vocal()))));
    i_muteP->setIcon(Icon(i_play.IsMuted() ? IconKind::kMuted : IconKind::kVolume));
    i_muteP->setAccessibleName(i_play.IsMuted() ? tr("Sound on") : tr("Mute"));
    i_oneLevelP->setChecked(i_play.IsOneLevel());
}

void XTransport::GoBackChanged() { i_actions.Refresh(); }

void XTransport::ShowSlip() {
    const double slipT = i_play.State() == PlayState::kIdle ? 0 : i_play.SlipT();
    i_slipP->SetValue((slipT > 0 ? "+" : "") + QLocale().toString(slipT, 'f', 1) + " s", std::abs(slipT) >= 0.05);
}

void XTransport::ShowTime() {
    const long end300 = i_play.EndTime300();
    if (i_seekP->IsDragging()) return;
    i_seekP->SetTime300(i_play.CurTime300(), end300);
    ShowDigits(i_play.CurTime300(), end300);
}

void XTransport::ShowDigits(long time300, long end300) {
    i_elapsedP->SetValue(TimeText(std::max(0L, time300)));
    i_leftP->SetValue(end300 > 0 ? TimeText(std::min(0L, time300 - end300)) : QString());
}

QString XTransport::TimeText(long time300) {
    // What is left counts up to the next second: it and the elapsed time change together.
    const bool leftB = time300 < 0;
    const long seconds = leftB ? (-time300 + k300ths_Second - 1) / k300ths_Second : time300 / k300ths_Second;
    const QString sign = leftB ? "−" : "";
    const auto two = [](long n) { return QString("%1").arg(n, 2, 10, QChar('0')); };
    if (seconds < 3600) return sign + QString("%1:%2").arg(seconds / 60).arg(two(seconds % 60));
    return sign + QString("%1:%2:%3").arg(seconds / 3600).arg(two(seconds / 60 % 60), two(seconds % 60));
}
