#include "App/CAppPlay.h"

#include "App/CAppWindows.h"
#include "SongFiles/CLibraryCommands.h"

CAppPlay::CAppPlay(CApp& app) : i_app(app), i_prefs(app.Prefs()), i_control(static_cast<CPlayHost&>(*this)) {
    i_app.SetCurrentSong(&i_control);
    i_control.AddWatcher(*this);
    i_follower = i_prefs.Follow([this] { Show()->globalSlip300 = i_prefs.GetLong("Global Song Sync Slip (300ths)"); });
}

void CAppPlay::Stop() {
    Show()->quittingB = true;
    i_app.StopCurrentSong();
}

CAppPlay::~CAppPlay() {
    i_control.RemoveWatcher(*this);
    i_app.ClearCurrentSong(i_control);
    i_app.Database().SetPlayingSong(SongID{0});
}

CSongDatabase& CAppPlay::Database() { return i_app.Database(); }
CCFPrefDictionary& CAppPlay::Preferences() { return i_prefs; }
CUserInterface& CAppPlay::Ui() { return i_app.Ui(); }
CGraphicsPorts& CAppPlay::Ports() { return i_app.Windows().Ports(); }
bool CAppPlay::IsUnpacking(SongID song) { return i_app.LibraryCommands().Unpacker().IsUnpacking(song); }
void CAppPlay::ShowMessage(std::string_view text) { i_app.SetStatus(text); }
void CAppPlay::Deselect() { i_app.Windows().DeselectSongs(); }

void CAppPlay::PlayChanged() {
    const SongID song = i_control.CurrentSong();
    i_app.Database().SetPlayingSong(Number(song) > 0 ? song : SongID{0});
}
