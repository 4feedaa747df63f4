#pragma once
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "SongFiles/CSongZip.h"
#include "Threads/CT_Preemptive.h"

/** Deletes the oldest of the cache folder: what is above "Number of cached songs", and disc images above "Max Cache
    Burn Images". The files of one song are one, as are a bin and its cue. A song that plays, or is being worked on,
    stays, and so does what the program does not know.
    Threads  started on the main thread. The work on the disc is the task's. */
class CT_PurgeCache final : public CT_Preemptive {
public:
    /** `done` runs on the main thread, unless the database has gone. abortErr when there is no thread. */
    static OSErr Start(CSongDatabase& database, std::shared_ptr<CBusySongs> busyRef,
                       std::function<void(OSErr err)> done = {});

private:
    /** The files of one song, or of one image. */
    struct Item {
        std::string base;
        SongID song;
        std::int64_t newestL = 0;   // time of change
        std::vector<CFileRef> files;
    };
    explicit CT_PurgeCache(SongFileWorld world, SongID playing, std::function<void(OSErr err)> done);
    OSErr Operate(OSErr err) override;
    OSErr Completion(OSErr err) override;
    /** The songs that are being written name files of the cache. abortErr when the database has gone. */
    [[nodiscard]] OSErr WaitForSaves() const;
    OSErr List(std::vector<Item>& songs, std::vector<Item>& images, std::size_t& filesL) const;
    /** The oldest above the limit. */
    [[nodiscard]] std::vector<Item> Over(std::vector<Item> items, long allowedL) const;
    OSErr Delete(const std::vector<Item>& items);
    /** Songs of which the cache alone has files: what is gone leaves their places. */
    void CleanOrphans();

    const SongFileWorld i_world;
    const SongID i_playing;
    std::function<void(OSErr err)> i_done;
};
