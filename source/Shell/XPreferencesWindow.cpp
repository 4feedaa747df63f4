#include "Shell/XPreferencesWindow.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTabWidget>
#include <QVBoxLayout>

#include "App/CBreakScreen.h"
#include "Core/Localize.h"
#include "Play/CPlayControl.h"
#include "Shell/FrameShapeChoice.h"
#include "Shell/VideoWindowMenu.h"
#include "Shell/XActions.h"
#include "Shell/XKeysPage.h"
#include "Shell/XOutputPanel.h"
#include "Shell/XPreferencePage.h"
#include "Values/CPreferences.h"
#include "Widgets/CGraphicsCard.h"
#include "Widgets/CWindowPlace.h"
#include "Widgets/DisplayAbilities.h"
#include "Widgets/QtText.h"
#include "Widgets/XElidedLabel.h"
#include "Widgets/XLook.h"

namespace {

constexpr PreferenceRow kDuringPlay[] = {
    {.labelZ = N_("At the end of a song")},
    {"Pause between tracks", N_("Pause between tracks"), N_("The next song is ready, and waits for Space.")},
    {"Stop between tracks", N_("Stop between tracks"), N_("Nothing follows by itself.")},
    {"Stop at playlist end", N_("Stop at playlist end"), N_("The list does not begin again.")},
    {"pre-cache next song", N_("Load the next song while one plays"),
     N_("It begins at once, and a slow disk is not heard.")},
    {.labelZ = N_("At the start of a song")},
    {"Auto-cue", N_("Auto-cue"), N_("Skips the silence before the music.")},
    {"Remember pitch / tempo in all playlists", N_("Remember pitch / tempo in all playlists"),
     N_("Off: each row of a list has its own.")},
    {"Require Audio (no naked CDG files)", N_("Require Audio (no naked CDG files)"),
     N_("Off: a CD+G file without its sound can be played, too.")},
    {"Delay start of song playback until unpacked", N_("Wait for a song that is being unpacked"),
     N_("It stands paused, and begins by itself; Space lets it go at once.")},
    {"Launch Midi Files", N_("Launch Midi Files"),
     N_("MIDI files are handed to the program that the desktop has for them.")},
    {.labelZ = N_("By hand")},
    {"Always confirm manual song changes", N_("Always confirm manual song changes"),
     N_("Asks before another song ends the one that plays.")},
    {"Always confirm manual song changes (transport buttons)",
     N_("Always confirm manual song changes (transport buttons)"), N_("Also for Stop, Next and Previous.")},
    {"Auto-play when you add single song to Library", N_("Auto-play when you add single song to Library")},
    {"Single-key commands", N_("Single-key commands"),
     N_("Letters, arrows and signs are commands in every window, not in the video windows alone; off, letters "
        "search.")},
    {"Sync Slip increment (300ths)", N_("Step of the sync slip"),
     N_("How far one press moves the picture against the sound."), 0.01, 5, 0.1, 1.0 / 300, 2, " s"},
    {"Tempo change increment (percent)", N_("Step of the tempo"), nullptr, 0.1, 25, 0.5, 1, 1, " %"},
};

constexpr PreferenceRow kVideoDuring[] = {
    {.labelZ = N_("While a song plays")},
    {"Auto Full Screen During Play", N_("Auto Full Screen During Play"),
     N_("The video window fills its display when a song begins.")},
    {"Bring Video Window to front when playing", N_("Bring Video Window to front when playing")},
    {"Hide on pause", N_("Hide on pause")},
};
constexpr const char* kDrawings[] = {N_("The graphics card, if there is one"), N_("The processor"), N_("OpenGL")};
constexpr PreferenceRow kVideoPicture[] = {
    {"Use hq4x upscaling (fast computers only)", N_("Use hq4x upscaling (fast computers only)"),
     N_("Smooth letters on a large screen; from the next song on.")},
    {.pref = "Video Drawing (0=automatic, 1=processor, 2=OpenGL)",
     .labelZ = N_("Drawn by"),
     .wordsZ = N_("From the next start on."),
     .choices = kDrawings},
};

constexpr PreferenceRow kOneLevel = {"Play all songs at one level", N_("Play all songs at one level"),
                                     N_("A song is measured when it comes next, or plays for the first time.")};
constexpr PreferenceRow kSound[] = {
    {.labelZ = N_("Auto-cue")},
    {"Auto Cue Threshold (0..1) (smaller is more sensitive)", N_("Music begins at"),
     N_("Of the full level; smaller is earlier."), 0.0001, 0.5, 0.001, 1, 4},
    {"Auto Cue rollback (seconds)", N_("Start before it by"), nullptr, 0, 5, 0.1, 1, 2, " s"},
    {.labelZ = N_("Output")},
    {"Pre-Fetched Audio Blocks (must be > 2)", N_("Blocks ahead of the device"),
     N_("More survive a busy machine, fewer answer faster; from the next song on."), 2, 25},
};

constexpr PreferenceRow kLibrary[] = {
    {.labelZ = N_("File names")},
    {"Conform Song Names", N_("Conform Song Names"),
     N_("Files in the music folder are named after their songs when those are edited.")},
    {"Conform song name template", N_("Template"),
     N_("L label, T track, S song, R artist; between them - ( ) / . and blanks.")},
    {"Seconds to wait after edit to push meta", N_("Wait after an edit"), nullptr, 0, 600, 1, 1, 0, " s"},
    {.labelZ = N_("Names")},
    {"Move 'The' to end of Artits title", N_("Sort artists without “The”")},
    {"Diacritic Insensitive Searching", N_("Find “é” with “e”")},
    {"Allow Name Editing", N_("Names can be edited in the lists"),
     N_("Off: of songs and of lists, whoever clicks on them.")},
    {"Seconds to wait after click to edit", N_("A second, slow click edits after"), nullptr, 0.5, 10, 0.25, 1, 2, " s"},
    {.labelZ = N_("Warnings")},
    {"Warn if there is a problem updating meta", N_("Warn if there is a problem updating meta")},
    {"Warn if there is a possibly corrupted MP3", N_("Warn if there is a possibly corrupted MP3")},
    {"warn about deleting last song", N_("Warn before a list gets empty")},
    {.labelZ = N_("Cache")},
    {"Number of cached songs", N_("Songs kept at hand"), N_("Their graphics lie unpacked in the cache folder."), 0,
     10000},
};

constexpr LongPref kPref_Look = "Look (0=desktop, 1=dark, 2=light)";
constexpr const char* kLooks[] = {N_("Like the desktop"), N_("Dark"), N_("Light")};
constexpr const char* kTimes[] = {N_("How long the song has played"), N_("What is left of it")};
constexpr PreferenceRow kLook[] = {
    {.pref = "Look (0=desktop, 1=dark, 2=light)",
     .labelZ = N_("Look"),
     .wordsZ = N_("Of the windows; not of the pictures."),
     .choices = kLooks},
    {"Show Artwork Panel", N_("Preview"), N_("In the main window: what the room sees, or the cover of the song.")},
    {.pref = "Time display: (0=elapsed, 1=remain)", .labelZ = N_("The time that stands out"), .choices = kTimes},
    {"Browser Font Size", N_("Text of the lists"), N_("In points."), 8, 32, 1, 1, 0, " pt"},
};

constexpr LongPref kPref_Page = "Selected Pref Resource ID";

}   // namespace

XPreferencesWindow::XPreferencesWindow(CPreferences& prefs, CPlayControl& play, XActions& actions, QWidget* parentP)
    : QDialog(parentP), i_prefs(prefs), i_play(play), i_actions(actions), i_tabsP(new QTabWidget) {
    setWindowTitle(tr("Preferences"));
    setAccessibleName(windowTitle());
    i_tabsP->setDocumentMode(true);
    i_tabsP->setAccessibleName(tr("Pages"));
    i_tabsP->setAccessibleDescription(tr("The pages of the preferences"));
    MakePage(tr("During Play"))->Add(kDuringPlay);
    MakeVideo();
    MakeSound();
    MakePage(tr("Library"))->Add(kLibrary);
    MakeLook();
    MakeKeys();
    auto* const buttonsP = new QDialogButtonBox(QDialogButtonBox::Close);
    connect(buttonsP, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* const columnP = new QVBoxLayout(this);
    columnP->setContentsMargins(0, 6, 0, 12);
    columnP->addWidget(i_tabsP, 1);
    columnP->addWidget(buttonsP);
    buttonsP->setContentsMargins(0, 0, 16, 0);
    i_tabsP->setCurrentIndex(i_prefs.GetLong(kPref_Page));   // where the user was the last time
    connect(i_tabsP, &QTabWidget::currentChanged, this, [this](int page) { i_prefs.SetLong(kPref_Page, page); });
    resize(720, 640);
    (void)CWindowPlace::Of(*this);   // it fits the display with its frame
}

XPreferencePage* XPreferencesWindow::MakePage(const QString& title) {
    auto* const pageP = new XPreferencePage(i_prefs);
    pageP->setAccessibleName(title);
    i_tabsP->addTab(pageP, title);
    i_pages.push_back(pageP);
    return pageP;
}

void XPreferencesWindow::MakeVideo() {
    XPreferencePage& page = *MakePage(tr("Video Window"));
    page.Add(kVideoDuring);
    const DisplayAbilities abilities = AbilitiesOfDisplay();
    page.AddHeading(tr("The window"));
    const auto addIfAble = [&](const PreferenceRow& row, bool ableB) {
        page.Add({&row, 1});
        const PrefRow& pref = *row.pref.Row();
        // What is on can always be turned off.
        const bool onB = pref.type == CFType::kBool && i_prefs.GetBool(BoolPref(pref));
        if (auto* const controlP = page.findChild<QWidget*>(QtText(pref.key)); controlP != nullptr)
            controlP->setEnabled(ableB || onB);
    };
    addIfAble({"Always on top", N_("Always on top")}, abilities.onTopB);
    addIfAble({"Transparent Video Window", N_("Transparent Video Window"),
               N_("What is behind it shines through the colour of the border.")},
              abilities.transparentB);
    addIfAble({"Video Window Opacity", N_("Opacity"), nullptr, 10, 100, 5, 100, 0, " %"}, abilities.opacityB);
    if (!abilities.why.isEmpty()) page.AddWords(abilities.why, "warning");

    page.AddHeading(tr("The picture"));
    auto* const shapeP = new QComboBox;
    shapeP->addItems({tr("Its own"), "4:3", "16:9"});
    shapeP->setAccessibleDescription(tr("What the picture is drawn to, whatever its pixels say"));
    page.AddWidget(tr("Shape"), shapeP);
    page.OnShow([this, shapeP] {
        const QSignalBlocker quiet(shapeP);
        shapeP->setCurrentIndex(static_cast<int>(ReadFrameShape(i_prefs)));
    });
    connect(shapeP, &QComboBox::currentIndexChanged, this,
            [this](int shape) { KeepFrameShape(i_prefs, static_cast<FrameShape>(shape)); });
    page.Add(kVideoPicture);

    page.AddHeading(tr("Between songs"));
    auto* const nameP = new XElidedLabel;
    nameP->setFixedWidth(220);
    auto* const chooseP = new QPushButton(tr("Choose…"));
    chooseP->setAccessibleName(tr("Choose the picture between songs"));
    chooseP->setAccessibleDescription(tr("A picture, or a movie that begins again at its end"));
    auto* const noneP = new QPushButton(tr("None"));
    noneP->setAccessibleName(tr("No picture between songs"));
    noneP->setAccessibleDescription(tr("The video windows are black then"));
    auto* const rowP = new QWidget;
    rowP->setAccessibleName(tr("Picture"));
    auto* const boxP = new QHBoxLayout(rowP);
    boxP->setContentsMargins(0, 0, 0, 0);
    for (QWidget* const partP : std::initializer_list<QWidget*>{nameP, chooseP, noneP}) boxP->addWidget(partP);
    page.AddWidget(tr("Picture"), rowP);
    const auto show = [this, nameP, noneP] {
        const QString path = QtText(i_prefs.GetString(kPref_BreakPicture));
        nameP->SetText(path.isEmpty() ? tr("None: black") : path.section('/', -1));
        nameP->setToolTip(PlainToolTip(path));
        noneP->setEnabled(!path.isEmpty());
    };
    page.OnShow(show);
    for (QPushButton* const buttonP : {chooseP, noneP}) buttonP->setAutoDefault(false);
    connect(chooseP, &QPushButton::clicked, this, [this, show] {
        ChooseBreakPicture(*this, i_prefs, show);   // the dialog goes with this window
    });
    connect(noneP, &QPushButton::clicked, this, [this, show] {
        i_prefs.SetString(kPref_BreakPicture, SuperString());
        show();
    });
}

void XPreferencesWindow::MakeSound() {
    XPreferencePage& page = *MakePage(tr("Sound"));
    auto* const panelP = new XOutputPanel(i_play, i_prefs);
    panelP->setFixedWidth(380);
    page.AddWidget({}, panelP);
    page.AddHeading(tr("Level"));
    page.Add({&kOneLevel, 1});
    connect(page.findChild<QAbstractButton*>(QtText(kOneLevel.pref.Row()->key)), &QAbstractButton::toggled, this,
            [this](bool onB) { i_play.SetOneLevel(onB); });
    page.Add(kSound);
}

void XPreferencesWindow::MakeLook() {
    XPreferencePage& page = *MakePage(tr("Look"));
    page.Add(kLook);
    connect(page.findChild<QComboBox*>(QtText(kPref_Look.Key())), &QComboBox::currentIndexChanged, this,
            [](int choice) {
                if (XLook* const xP = XLook::Get(); xP != nullptr) xP->Choose(static_cast<XLook::Choice>(choice));
            });
}

void XPreferencesWindow::MakeKeys() {
    auto* const keysP = new XKeysPage(i_actions.Keys());
    keysP->setAccessibleName(tr("Keys"));
    i_tabsP->addTab(keysP, tr("Keys"));
    connect(keysP, &XKeysPage::MapChanged, this, [this, keysP] {
        i_actions.Keys() = keysP->Map();
        i_actions.KeysChanged();
        i_prefs.SetDictionary("Key Map", i_actions.Keys().ToDictionary());
    });
}

void XPreferencesWindow::changeEvent(QEvent* eventP) {
    QDialog::changeEvent(eventP);
    if (eventP->type() != QEvent::ActivationChange || !isActiveWindow()) return;
    for (XPreferencePage* const pageP : i_pages)
        pageP->ShowValues();   // the video window's menu sets some of them, too
}
