#include "Shell/VideoWindowMenu.h"

#include <algorithm>
#include <QActionGroup>
#include <QCoreApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QMenu>
#include <QStandardPaths>

#include "App/CApp.h"
#include "App/CBreakScreen.h"
#include "Shell/CAppWindows_Qt.h"
#include "Shell/Commands.h"
#include "Shell/FrameShapeChoice.h"
#include "Shell/XVideoWindow.h"
#include "Widgets/DisplayAbilities.h"
#include "Widgets/FileDialog.h"
#include "Widgets/QtText.h"

namespace {

QString Words(const char* textZ) { return QCoreApplication::translate("VideoWindowMenu", textZ); }

/** An action that is on or off as its preference is. */
QAction& AddSwitch(QMenu& menu, const char* textZ, BoolPref pref, bool possibleB = true) {
    QAction* const actionP = menu.addAction(Words(textZ));
    actionP->setCheckable(true);
    actionP->setChecked(gApp->Prefs().GetBool(pref));
    actionP->setEnabled(possibleB || actionP->isChecked());   // what is on can always be turned off
    QObject::connect(actionP, &QAction::triggered, &menu, [pref](bool onB) { gApp->Prefs().SetBool(pref, onB); });
    return *actionP;
}

}   // namespace

void FillDisplayMenu(QMenu& menu, XVideoWindow& window) {
    auto* const groupP = new QActionGroup(&menu);
    QStringList names = CWindowPlace::DisplayNames();
    const QString chosen = window.Place().Display();
    if (!chosen.isEmpty() && !names.contains(chosen)) names += chosen;   // not there now: still the one that was chosen
    const auto add = [&](const QString& text, const QString& name) {
        QAction* const actionP = menu.addAction(text);
        actionP->setCheckable(true);
        actionP->setChecked(name == chosen);
        groupP->addAction(actionP);
        QObject::connect(actionP, &QAction::triggered, &window,
                         [&window, name] { window.Place().ChooseDisplay(name); });
    };
    add(Words("Where the window is"), {});
    for (const QString& name : names) add(name, name);
}

namespace {

void AddShapes(QMenu& menu) {
    QMenu* const shapesP = menu.addMenu(Words("&Shape of the Picture"));
    auto* const groupP = new QActionGroup(shapesP);
    const FrameShape now = ReadFrameShape(gApp->Prefs());
    const auto add = [&](const char* textZ, FrameShape shape) {
        QAction* const actionP = shapesP->addAction(Words(textZ));
        actionP->setCheckable(true);
        actionP->setChecked(shape == now);
        groupP->addAction(actionP);
        QObject::connect(actionP, &QAction::triggered, shapesP, [shape] { KeepFrameShape(gApp->Prefs(), shape); });
    };
    add("Its own", FrameShape::kPicture);
    add("4:3", FrameShape::k4x3);
    add("16:9", FrameShape::k16x9);
}

void AddBreakPicture(QMenu& menu, XVideoWindow& window) {
    menu.addSeparator();
    QAction* const chooseP = menu.addAction(Words("&Picture Between Songs…"));
    QObject::connect(chooseP, &QAction::triggered, &window, [&window] { ChooseBreakPicture(window, gApp->Prefs()); });
    QAction* const noneP = menu.addAction(Words("&No Picture Between Songs"));
    noneP->setEnabled(!gApp->Prefs().GetString(kPref_BreakPicture).Empty());
    QObject::connect(noneP, &QAction::triggered, &window,
                     [] { gApp->Prefs().SetString(kPref_BreakPicture, SuperString()); });
}

}   // namespace

void ChooseBreakPicture(QWidget& parent, CPreferences& prefs, std::function<void()> chosen) {
    QString now = QtText(prefs.GetString(kPref_BreakPicture));
    if (now.isEmpty()) now = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    auto* const dialogP = MakeFileDialog(&parent, Words("Picture Between Songs"), {});
    dialogP->setFileMode(QFileDialog::ExistingFile);
    dialogP->setNameFilter(
        Words("Pictures and movies (*.png *.jpg *.jpeg *.webp *.bmp *.tif *.tiff *.gif *.mp4 *.m4v *.mov "
              "*.mkv *.webm *.avi)"));
    const QFileInfo info(now);
    dialogP->setDirectory(info.isDir() ? now : info.path());
    if (!info.isDir()) dialogP->selectFile(info.fileName());
    ShowFileDialog(*dialogP, [&prefs, chosen = std::move(chosen)](const QStringList& files) {
        prefs.SetString(kPref_BreakPicture, SuperString(files.front().toStdString()));
        if (chosen) chosen();
    });
}

void ShowVideoWindowMenu(XVideoWindow& window, CAppWindows_Qt& windows, const QPoint& global) {
    if (gApp == nullptr) return;
    const DisplayAbilities abilities = AbilitiesOfDisplay();
    QMenu menu(&window);
    menu.setToolTipsVisible(true);
    QAction* const fullP = menu.addAction(Words("&Full Screen"));
    const auto commands = window.actions();   // those with keys of their own
    const auto found = std::ranges::find(commands, QtText(RowOf(Command::kFullScreen).id), &QAction::objectName);
    if (found != commands.end() && !(*found)->shortcut().isEmpty())   // shown alone: the command itself listens
        fullP->setText(fullP->text() + "\t" + (*found)->shortcut().toString(QKeySequence::NativeText));
    fullP->setCheckable(true);
    fullP->setChecked(window.IsFullScreen());
    QObject::connect(fullP, &QAction::triggered, &window, [&window](bool onB) { window.SetFullScreen(onB); });
    FillDisplayMenu(*menu.addMenu(Words("Full Screen &Display")), window);
    QAction* const secondP = menu.addAction(Words("&Second Video Window"));
    secondP->setCheckable(true);
    secondP->setChecked(windows.IsOpen(PREF_Wind_VIDEO2));
    QObject::connect(secondP, &QAction::triggered, &window,
                     [&windows](bool onB) { onB ? windows.Show(PREF_Wind_VIDEO2) : windows.Close(PREF_Wind_VIDEO2); });
    menu.addSeparator();
    AddSwitch(menu, "Full Screen During &Play", "Auto Full Screen During Play");
    AddSwitch(menu, "&Hide on Pause", "Hide on pause");
    AddSwitch(menu, "Always on &Top", "Always on top", abilities.onTopB).setToolTip(abilities.why);
    AddSwitch(menu, "To the &Front When Playing", "Bring Video Window to front when playing");
    AddSwitch(menu, "&Transparent", "Transparent Video Window", abilities.transparentB).setToolTip(abilities.why);
    AddShapes(menu);
    AddBreakPicture(menu, window);
    if (!abilities.why.isEmpty()) menu.addAction(abilities.why)->setEnabled(false);
    menu.exec(global);
}
