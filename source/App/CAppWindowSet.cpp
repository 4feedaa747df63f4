#include "App/CAppWindowSet.h"

#include "App/CApp.h"
#include "App/CBreakScreen.h"
#include "App/CCoverArt.h"
#include "App/CGoBackNotice.h"

CAppWindowSet::CAppWindowSet(CApp& app) : i_app(app), i_windows(app.Windows()), i_rows(i_windows.Rows()) {
    for (const WindowRow& row : i_rows) i_windows.Create(row.kind);
    i_break = std::make_unique<CBreakScreen>(i_windows.Ports(), app.MainLoop());
    i_goBack = std::make_unique<CGoBackNotice>(app.Play(), app.Notices());
    i_covers = std::make_unique<CCoverArt>(app.Play(), i_windows.Ports());
    CPreferences& prefs = app.Prefs();
    i_followers.push_back(prefs.Follow([this, &prefs] { i_windows.FollowPreferences(prefs); }));
    i_followers.push_back(prefs.Follow([this, &prefs] { i_break->Follow(prefs); }));
    app.State().SetMainWindow(true);
}

CAppWindowSet::~CAppWindowSet() = default;

void CAppWindowSet::Show() {
    if (!i_app.IsLibraryLoaded()) return;
    const CPreferences& prefs = i_app.Prefs();
    for (const WindowRow& row : i_rows) {
        const auto record = prefs.Window(row.nameZ);
        if (record) {
            CAppWindows::Place place{record->topS, record->leftS, record->bottomS, record->rightS, record->visibleB};
            if (row.fullScreen) {
                place.fullScreenB = prefs.GetBool(row.fullScreen->onB);
                place.display = prefs.GetString(row.fullScreen->display).UTF8();
            }
            i_windows.SetPlace(row.kind, place);
        }
        if (record ? record->visibleB : row.shownFirstB) i_windows.Show(row.kind);
    }
    i_windows.Select(PREF_Wind_VIDEO);
    i_windows.Select(PREF_Wind_BROWSER);   // last, so that it ends in front
}

std::vector<WindowRecord> CAppWindowSet::Records() const {
    if (i_lastRecords) return *i_lastRecords;
    std::vector<WindowRecord> records;
    for (const WindowRow& row : i_rows)
        if (const auto place = i_windows.PlaceOf(row.kind); place.has_value())
            records.push_back({row.nameZ, place->top, place->left, place->bottom, place->right, place->visibleB});
    return records;
}

CCFDictionary CAppWindowSet::FullScreenKeys() const {
    if (i_lastRecords) return i_lastFullScreen;
    CCFDictionary keys;
    for (const WindowRow& row : i_rows)
        if (const auto place = i_windows.PlaceOf(row.kind); place.has_value() && row.fullScreen) {
            keys.Set(row.fullScreen->onB.Key(), place->fullScreenB);
            keys.Set(row.fullScreen->display.Key(), SuperString(place->display));
        }
    return keys;
}

void CAppWindowSet::Hide() {
    i_lastFullScreen = FullScreenKeys();   // the preferences are saved later and want the windows as they were
    i_lastRecords = Records();
    i_followers.clear();
    // They end behind the last window, since the room sees them until then; and even if one throws, since the movie of the break
    // has a thread.
    const auto breakP = std::move(i_break);
    const auto goBackP = std::move(i_goBack);
    const auto coversP = std::move(i_covers);
    for (auto row = i_rows.rbegin(); row != i_rows.rend(); ++row) i_windows.Hide(row->kind);
}

void CAppWindowSet::DisposeOthers() {
    for (auto row = i_rows.rbegin(); row != i_rows.rend(); ++row)
        if (!row->fullScreen && row->kind != PREF_Wind_BROWSER) i_windows.Dispose(row->kind);
}

void CAppWindowSet::DisposeVideo() {
    for (auto row = i_rows.rbegin(); row != i_rows.rend(); ++row)
        if (row->fullScreen) i_windows.Dispose(row->kind);
    i_app.State().SetMainWindow(false);
}

void CAppWindowSet::DisposeBrowser() { i_windows.Dispose(PREF_Wind_BROWSER); }

void CAppWindowSet::Idle() {
    if (const bool playingB = i_app.IsSongPlaying(); std::exchange(i_displayOnB, playingB) != playingB)
        i_windows.KeepDisplayOn(playingB);
}

void CAppWindowSet::KeepAwake() {
    if (i_app.IsSongPlaying()) i_windows.KeepDisplayOn(true);
}
