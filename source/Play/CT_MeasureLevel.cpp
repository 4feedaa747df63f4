#include "Play/CT_MeasureLevel.h"

#include "Audio/SongSource.h"
#include "Core/CLog.h"
#include "Platform/CClock.h"
#include "Platform/ThreadPriority.h"
#include "SongFiles/FindSongLength.h"

OSErr CT_MeasureLevel::Operate(OSErr) {
    LowerThreadPriority();
    const double startT = CClock::Get().SteadyT();
    const OSErr err = Measure();
    i_tookT = CClock::Get().SteadyT() - startT;
    return err;
}

OSErr CT_MeasureLevel::Measure() {
    CFileRef file;
    if (const OSErr err = FindPlayedFile(i_files, file); Failed(err)) return err;
    SongLevel level{.loudness = {}, .stamp = FileStamp::Of(file.GetPath())};
    if (i_known && i_known->stamp == level.stamp) return noErr;
    Ref<CSpooler> sourceP;
    if (const OSErr err = MakeSongSource(file, sourceP); Failed(err)) return err;
    sourceP->SetQuiet(true);   // its play will tell what is wrong with it
    if (const OSErr err = CLoudness::Measure(*sourceP, *i_stopRef, level.loudness); Failed(err)) return err;
    i_found = level;
    return noErr;
}

OSErr CT_MeasureLevel::Completion(OSErr err) {
    if (CSongLevels* const ownerP = i_ownerRef.Get(); ownerP != nullptr) ownerP->Measured(i_song, i_found, i_tookT);
    return err;
}
