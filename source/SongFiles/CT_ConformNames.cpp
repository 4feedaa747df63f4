#include "SongFiles/CT_ConformNames.h"

#include "Core/AlertHook.h"
#include "Core/CLog.h"
#include "Core/Localize.h"
#include "Library/FileSystemName.h"
#include "SongFiles/CSongFileWork.h"
#include "SongFiles/SongRename.h"

OSErr CT_ConformNames::Start(CSongDatabase& database, std::vector<SongID> songs, Done done) {
    if (!database.Settings()->conformNamesB) {
        if (done) done(noErr);
        return noErr;
    }
    std::unique_ptr<CT_Preemptive> taskP(new CT_ConformNames(database, std::move(songs), std::move(done)));
    return CT_Preemptive::Start(std::move(taskP)) == 0 ? abortErr : noErr;
}

CT_ConformNames::CT_ConformNames(CSongDatabase& database, std::vector<SongID> songs, Done done)
    : CT_OnSongs(N_("conform names"), database, std::move(songs), std::move(done)),
      i_keeperRef(CSongFileWork::Of(database).Keeper()) {}

OSErr CT_ConformNames::OnSong(CSongFiles& files) {
    const SongID id = files.Song();
    std::optional<BuiltName> name;
    bool playsB = false;
    OSErr err = OnMain("conformed name", [&](CSongDatabase& database) {
        const CSong* const songP = database.GetSong(id);
        if (songP == nullptr) return fnfErr;
        playsB = database.PlayingSong() == id;
        if (playsB) CSongFileWork::Of(database).RenameLater(id);
        name = ConformedName(songP->Meta(), Settings().nameTemplate);
        return noErr;
    });
    if (err == fnfErr || playsB) return noErr;
    if (Failed(err)) return err;
    if (!name) {
        ShowAlert(Localize(kName_IllegalZ), "");
        return paramErr;   // the same for every song
    }
    if (name->unknownsB) {
        Log("$$ contains unknowns");
        return noErr;
    }
    const SongRename renamed = SongRename::Run(*i_keeperRef, files, FileSystemName(name->text));
    if (Failed(renamed.err)) LogF("could not rename song: %s\n", files.Name().c_str());
    if (!Failed(renamed.err) && renamed.moved.empty()) return noErr;
    return OnMain("renamed song", [&](CSongDatabase& database) {
        CSong* const songP = database.GetSong(id);
        if (songP == nullptr) return noErr;   // its files have good names all the same
        for (const auto& [type, file] : renamed.moved) (void)songP->SetFile(type, file);
        if (Failed(renamed.err)) CSongFileWork::Of(database).Warnings().Add(SongWarning::kNotRenamed, id);
        return noErr;
    });
}
