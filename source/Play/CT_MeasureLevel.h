#pragma once
#include "Library/CSongFiles.h"
#include "Play/CSongLevels.h"
#include "Threads/CHandle.h"
#include "Threads/CT_Preemptive.h"

/** Measures one song for CSongLevels, unless what is known of it still holds.
    Owner    the fork. */
class CT_MeasureLevel final : public CT_Preemptive {
public:
    CT_MeasureLevel(CHandle<CSongLevels> ownerRef, SongID song, CSongFiles files, std::optional<SongLevel> known,
                    std::shared_ptr<const std::atomic<bool>> stopRef)
        : CT_Preemptive("measure loudness"),
          i_ownerRef(std::move(ownerRef)),
          i_song(song),
          i_files(std::move(files)),
          i_known(std::move(known)),
          i_stopRef(std::move(stopRef)) {}

protected:
    OSErr Operate(OSErr) override;
    OSErr Completion(OSErr err) override;

private:
    OSErr Measure();

    const CHandle<CSongLevels> i_ownerRef;
    const SongID i_song;
    CSongFiles i_files;
    const std::optional<SongLevel> i_known;
    const std::shared_ptr<const std::atomic<bool>> i_stopRef;
    std::optional<SongLevel> i_found;   // anew
    double i_tookT = 0;
};
