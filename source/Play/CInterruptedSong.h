#pragma once
#include <optional>

#include "Play/CPlayOrder.h"
#include "Play/SongPlaySpec.h"

/** What the operator is offered: the name of the song, and where it stood, in 300ths. */
struct GoBackOffer {
    std::string name;
    long place300 = 0;
};

/** The song that a hand has cut off, as it sounded then: a stray press takes it from its singer, and half a minute is
    there to give it back.
    Units    300ths of the song; the half minute is CClock's.
    Threads  main.
    Owner    CPlayControl. */
class CInterruptedSong {
public:
    static constexpr double kKept_T = 30;

    struct Song {
        SongPlaySpec spec;
        std::unique_ptr<CPlayOrder> order;   // and the place in it
        long at300 = 0;
        float levelF = 1;
        bool pausedB = false;
        bool countedB = false;   // as sung already
    };

    void Keep(Song song);
    /** If it is this one, it counts as sung, and will not again. */
    void NoteCounted(SongID song);
    /** Nothing is kept afterwards. */
    [[nodiscard]] std::optional<Song> Take();
    [[nodiscard]] bool IsKept() const;
    /** Nothing, once the time is over. */
    [[nodiscard]] std::optional<GoBackOffer> Offer() const;
    /** True once after the time has run out: the offer has gone. */
    [[nodiscard]] bool HasRunOut();
    /** Its row is about to leave the list, as one of those. */
    void RowsLeave(PlaylistID list, std::span<const PLItemID> items);

private:
    std::optional<Song> i_song;
    double i_untilT = 0;
};
