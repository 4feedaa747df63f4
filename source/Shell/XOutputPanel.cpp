#include "Shell/XOutputPanel.h"

#include <QButtonGroup>
#include <QGuiApplication>
#include <QLabel>
#include <QPointer>
#include <QRadioButton>
#include <QScreen>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QVBoxLayout>

#include "Play/CPictureDelays.h"
#include "Play/CPlayControl.h"
#include "Values/CPreferences.h"
#include "Widgets/QtText.h"

namespace {

constexpr int kDelay_Step = 10;   // milliseconds

QLabel* MakeHeading(const QString& text) {
    auto* const labelP = new QLabel(text);
    labelP->setObjectName("caption");
    return labelP;
}

}   // namespace

XOutputPanel::XOutputPanel(CPlayControl& play, CPreferences& prefs, QWidget* parentP)
    : QWidget(parentP),
      i_play(play),
      i_prefs(prefs),
      i_groupP(new QButtonGroup(this)),
      i_devicesP(new QVBoxLayout),
      i_delayP(new QSpinBox),
      i_wordsP(new QLabel) {
    setAccessibleName(tr("Sound output"));
    setAccessibleDescription(tr("The devices that there are, and the delay of the picture"));
    i_devicesP->setSpacing(4);
    i_delayP->setRange(static_cast<int>(-CPictureDelays::kMost), static_cast<int>(CPictureDelays::kMost));
    i_delayP->setSingleStep(kDelay_Step);
    i_delayP->setMinimumSize(104, 30);
    i_delayP->setSuffix(tr(" ms"));
    i_delayP->setAccessibleName(tr("Picture delay"));
    i_delayP->setAccessibleDescription(tr("How much later than its sound the picture is shown, for this output"));
    i_wordsP->setObjectName("quiet");
    i_wordsP->setWordWrap(true);
    i_wordsP->setTextFormat(Qt::PlainText);
    auto* const delayRowP = new QHBoxLayout;
    auto* const delayLabelP = new QLabel(tr("Picture delay"));
    delayLabelP->setBuddy(i_delayP);
    delayRowP->addWidget(delayLabelP);
    delayRowP->addStretch();
    delayRowP->addWidget(i_delayP);
    auto* const columnP = new QVBoxLayout(this);
    columnP->setContentsMargins(0, 0, 0, 0);
    columnP->setSpacing(8);
    columnP->addWidget(MakeHeading(tr("Sound output")));
    columnP->addLayout(i_devicesP);
    columnP->addSpacing(6);
    columnP->addLayout(delayRowP);
    columnP->addWidget(i_wordsP);

    connect(i_groupP, &QButtonGroup::buttonClicked, this, [this](QAbstractButton* buttonP) {
        (void)i_play.SetOutputDevice(buttonP->property("device").toString().toStdString());   // told by the control
    });
    connect(i_delayP, &QSpinBox::valueChanged, this, [this](int delay) { i_play.SetPictureDelay(delay); });
    i_play.AddWatcher(*this);
    ShowDevices({});
    SettingsChanged();
    // The panel may be closed again when the machine answers. Without an answer the one that is chosen stands alone.
    (void)i_play.AskOutputDevices([self = QPointer<XOutputPanel>(this)](const std::vector<std::string>& names) {
        if (!self.isNull()) self->ShowDevices(names);
    });
}

XOutputPanel::~XOutputPanel() { i_play.RemoveWatcher(*this); }

QString XOutputPanel::Chosen() const {
    const QString chosen = QtText(i_prefs.GetString("Audio Output Device"));
    return chosen.isEmpty() ? QtText(kAudioOutput_Default) : chosen;
}

void XOutputPanel::ShowDevices(const std::vector<std::string>& names) {
    QStringList shown{QtText(kAudioOutput_Default)};
    for (const std::string& name : names)
        if (!shown.contains(QtText(name))) shown << QtText(name);
    if (!shown.contains(Chosen())) shown << Chosen();   // unplugged now, and wanted all the same
    for (const QString& name : shown) {
        const auto buttons = i_groupP->buttons();
        if (std::ranges::any_of(buttons, [&](const auto* buttonP) { return buttonP->property("device") == name; }))
            continue;
        auto* const buttonP = new QRadioButton(QString(name).replace('&', "&&"));
        buttonP->setProperty("device", name);
        buttonP->setChecked(name == Chosen());
        buttonP->setAccessibleName(name);
        buttonP->setAccessibleDescription(tr("Plays through this device"));
        i_groupP->addButton(buttonP);
        i_devicesP->addWidget(buttonP);
        if (!buttons.isEmpty()) setTabOrder(buttons.last(), buttonP);
    }
    setTabOrder(i_groupP->buttons().last(), i_delayP);
    emit Resized();
}

void XOutputPanel::SettingsChanged() {
    for (QAbstractButton* const buttonP : i_groupP->buttons())
        buttonP->setChecked(buttonP->property("device").toString() == Chosen());
    const QSignalBlocker quiet(i_delayP);
    i_delayP->setValue(static_cast<int>(i_play.PictureDelay()));
    i_wordsP->setText(tr("Remembered for “%1”. More when the words come before they are heard, less when they come "
                         "after.")
                          .arg(Chosen()));
    FitWords();
}

/** Some layouts around this give it the height of one line. */
void XOutputPanel::FitWords() { i_wordsP->setMinimumHeight(i_wordsP->heightForWidth(width())); }

void XOutputPanel::resizeEvent(QResizeEvent* eventP) {
    QWidget::resizeEvent(eventP);
    FitWords();
}

void XOutputPanel::PopUp(CPlayControl& play, CPreferences& prefs, QWidget& parent, const QPoint& at) {
    auto* const frameP = new QFrame(&parent, Qt::Popup);
    frameP->setObjectName("popup");
    frameP->setAttribute(Qt::WA_DeleteOnClose);
    frameP->setAccessibleName(tr("Sound output"));
    auto* const panelP = new XOutputPanel(play, prefs);
    auto* const columnP = new QVBoxLayout(frameP);
    columnP->setContentsMargins(16, 12, 16, 14);
    columnP->addWidget(panelP);
    const auto place = [frameP, at, &parent] {
        frameP->setFixedWidth(std::max(300, frameP->sizeHint().width()));
        frameP->adjustSize();
        const QRect room = parent.screen()->availableGeometry();
        frameP->move(std::clamp(at.x(), room.left(), std::max(room.left(), room.right() - frameP->width())),
                     std::clamp(at.y(), room.top(), std::max(room.top(), room.bottom() - frameP->height())));
    };
    connect(panelP, &XOutputPanel::Resized, frameP, place, Qt::QueuedConnection);
    place();
    frameP->show();
    if (QAbstractButton* const chosenP = panelP->i_groupP->checkedButton(); chosenP != nullptr) chosenP->setFocus();
}
