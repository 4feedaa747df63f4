#pragma once
#include "SongFiles/CT_OnSongs.h"

/** Gives their length ("drtn") to those of some songs that have none. A song that has got one meanwhile keeps it; one
    whose length cannot be told stays without, until it was played. The lengths are told to the songs in steps that
    grow from half a second to half a minute, so that a slow disc with many songs does not have the library saved over
    and over. CSongLengths starts it. */
class CT_FindLengths final : public CT_OnSongs {
public:
    /** Main thread; abortErr when there is no thread. */
    static OSErr Start(CSongDatabase& database, std::vector<SongID> songs, Done done);

private:
    CT_FindLengths(CSongDatabase& database, std::vector<SongID> songs, Done done);
    [[nodiscard]] bool Wants(const CSong& song) const override;
    OSErr OnSong(CSongFiles& files) override;
    OSErr AtEnd(OSErr err) override;
    OSErr Tell();

    struct Found {
        SongID song;
        std::int32_t length300;
    };
    std::vector<Found> i_found;   // and not yet told
    std::size_t i_lookedL = 0, i_toldL = 0;
    double i_tellAtT, i_stepT;
};
