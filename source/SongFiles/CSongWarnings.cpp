#include "SongFiles/CSongWarnings.h"

#include <algorithm>

#include "Core/Assertions.h"
#include "Core/Localize.h"
#include "Library/CSongDatabase.h"
#include "Platform/CClock.h"
#include "Platform/CUserInterface.h"
#include "Threads/ThreadInfo.h"
#include "Values/PreferenceTable.h"

namespace {

struct WarningRow {
    const char *listZ, *titleZ, *textZ;
    BoolPref preference;
    bool LibrarySettings::*onB;
};
constexpr WarningRow kWarnings[] = {
    {"* Songs Not Renamed", N_("Error Renaming Songs"),
     N_("One or more of your song files could not be renamed after their songs.  The songs still play: only the names "
        "on "
        "your disk are the old ones.  Perhaps the disk is full or write protected, another program holds the files, or "
        "another song uses them too.  The songs are in the playlist “* Songs Not Renamed”."),
     "Warn if there is a problem updating meta", &LibrarySettings::warnNamesB},
    {"* Possibly Corrupted MP3", N_("Corrupted MP3 File"),
     N_("One or more of your MP3 files may be corrupted.  For each one, try to play it.  If it does not play, then "
        "delete "
        "it by selecting it and choosing the menu command: “Songs->Move Files to Trash…”."),
     "Warn if there is a possibly corrupted MP3", &LibrarySettings::warnMP3B},
};
const WarningRow& RowOf(SongWarning kind) { return kWarnings[static_cast<std::size_t>(kind)]; }

}   // namespace

CPlayList& CSongWarnings::List(SongWarning kind) const {
    const SuperString name(RowOf(kind).listZ);
    for (CPlayList* const listP : i_database.PlayLists())
        if (listP->Type() == kSourceDB_PLAYLIST && listP->Name() == name) return *listP;
    return i_database.AddPlaylist(kSourceDB_PLAYLIST, name);
}

void CSongWarnings::Add(SongWarning kind, SongID song) {
    (void)Assert(IsMainThread());
    CPlayList& list = List(kind);
    const bool thereB = list.Items()->Find(PLTarget(song)) != SDB_kNoItem;
    if (!thereB) (void)list.AddItem({song});
    Warn(kind);
}

void CSongWarnings::Warn(SongWarning kind) {
    const WarningRow& row = RowOf(kind);
    if (!((*i_database.Settings()).*row.onB)) return;
    std::optional<double>& warnedT = i_warnedT[static_cast<std::size_t>(kind)];
    const double nowT = CClock::Get().SteadyT();
    if (warnedT && nowT - *warnedT <= kWarnAgain_T) return;
    warnedT = nowT;
    CSongDatabaseHost& host = i_database.Host();   // which outlives the database
    host.Notify(Localize(row.titleZ), Localize(row.textZ), Localize("Do Not Warn Again"),
                [&host, &row] { host.StopWarning(row.preference); });
}
