#include "Shell/XPreferencesWindow.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QTabWidget>
#include <QVBoxLayout>

#include "Core/CPreferences.h"
#include "Play/CPlayControl.h"
#include "Shell/QtText.h"
#include "Shell/XActions.h"
#include "Shell/XKeysPage.h"
#include "Shell/XLook.h"

namespace {

constexpr const char* kOutput_PreferenceZ = "Audio Output Device";
constexpr const char* kOutput_DefaultZ = "System Default";

/** A switch is known by its key in the preferences, which is its label, too. */
constexpr const char* kSwitches[] = {
    "Auto-cue",
    "Pause between tracks",
    "Stop between tracks",
    "Stop at playlist end",
    "Auto Full Screen During Play",
    "Bring Video Window to front when playing",
    "Hide on pause",
    "Always on top",
    "Auto-play when you add single song to Library",
    "Always confirm manual song changes",
    "Remember pitch / tempo in all playlists",
    "Require Audio (no naked CDG files)",
};

}   // namespace

XPreferencesWindow::XPreferencesWindow(CPreferences& prefs, CPlayControl& play, XActions& actions, QWidget* parentP)
    : QDialog(parentP), i_prefs(prefs), i_play(play), i_actions(actions) {
    setWindowTitle(tr("Preferences"));
    setAccessibleName(windowTitle());
    i_keysP = new XKeysPage(actions.Keys());
    auto* const tabsP = new QTabWidget;
    tabsP->setDocumentMode(true);
    tabsP->setAccessibleName(tr("Pages"));
    tabsP->setAccessibleDescription(tr("The pages of the preferences"));
    tabsP->addTab(MakeGeneral(), tr("General"));
    tabsP->addTab(i_keysP, tr("Keys"));
    auto* const buttonsP = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    connect(buttonsP, &QDialogButtonBox::accepted, this, [this] {
        Take();
        accept();
    });
    connect(buttonsP, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* const columnP = new QVBoxLayout(this);
    columnP->addWidget(tabsP, 1);
    columnP->addWidget(buttonsP);
    resize(640, 560);
}

QWidget* XPreferencesWindow::MakeGeneral() {
    i_lookP = new QComboBox;
    i_lookP->addItems({tr("Like the desktop"), tr("Dark"), tr("Light")});
    i_lookP->setCurrentIndex(std::clamp<int>(i_prefs.GetLong(XLook::kPreferenceZ, 0), 0, 2));
    i_lookP->setAccessibleName(tr("Look"));
    i_lookP->setAccessibleDescription(tr("Dark or light windows"));
    i_outputP = new QComboBox;
    i_outputP->addItem(kOutput_DefaultZ);
    for (const std::string& name : i_play.OutputDevices())
        if (name != kOutput_DefaultZ) i_outputP->addItem(QtText(name));
    const QString chosen = QtText(i_prefs.GetString(kOutput_PreferenceZ, kOutput_DefaultZ));
    if (i_outputP->findText(chosen) < 0) i_outputP->addItem(chosen);   // unplugged now, and wanted all the same
    i_outputP->setCurrentText(chosen);
    i_outputP->setAccessibleName(tr("Sound output"));
    i_outputP->setAccessibleDescription(tr("The device that plays"));
    auto* const pageP = new QWidget;
    auto* const formP = new QFormLayout(pageP);
    formP->setContentsMargins(20, 20, 20, 12);
    formP->setVerticalSpacing(8);
    formP->addRow(tr("Look"), i_lookP);
    formP->addRow(tr("Sound output"), i_outputP);
    for (const char* const keyZ : kSwitches) {
        auto* const boxP = new QCheckBox(keyZ);
        boxP->setObjectName(keyZ);
        boxP->setChecked(i_prefs.GetBool(keyZ));
        boxP->setAccessibleName(keyZ);
        boxP->setAccessibleDescription(tr("On or off"));
        formP->addRow(QString(), boxP);
    }
    return pageP;
}

void XPreferencesWindow::Take() {
    i_prefs.Set(XLook::kPreferenceZ, CCFValue(i_lookP->currentIndex()));
    if (XLook* const lookP = XLook::Get(); lookP != nullptr)
        lookP->Choose(static_cast<XLook::Choice>(i_lookP->currentIndex()));
    for (const char* const keyZ : kSwitches)
        if (const auto* const boxP = findChild<QCheckBox*>(keyZ); boxP != nullptr)
            i_prefs.Set(keyZ, CCFValue(boxP->isChecked()));
    const std::string output = i_outputP->currentText().toStdString();
    if (i_prefs.GetString(kOutput_PreferenceZ, kOutput_DefaultZ) != SuperString(output))
        (void)i_play.SetOutputDevice(output);
    i_actions.Keys() = i_keysP->Map();
    i_actions.KeysChanged();
    i_prefs.Set(CKeyMap::kPreferenceZ, CCFValue(i_actions.Keys().ToDictionary()));
}
