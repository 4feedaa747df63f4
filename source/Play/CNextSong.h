#pragma once
#include <memory>

#include "Play/CSongLoad.h"

/** The song that plays next, held ready while another one plays: its ring is full and its graphics lie in memory.
    Threads  main; CT_Cache loads.
    Owner    CPlayControl. The end of it, and each other song, aborts what is held. */
class CNextSong {
public:
    CNextSong() = default;
    ~CNextSong() { Drop(); }
    CNextSong(const CNextSong&) = delete;
    CNextSong& operator=(const CNextSong&) = delete;

    /** Begins to load it, unless it is held already. */
    void Hold(SongPlaySpec spec);
    /** What is held of it, perhaps still being loaded; else a fresh one. Nothing is held afterwards. */
    [[nodiscard]] Ref<CSongLoad> Take(const SongPlaySpec& spec);
    void Drop();
    [[nodiscard]] bool Holds(const SongPlaySpec& spec) const;
    /** It is loaded, all of it that Load waits for. */
    [[nodiscard]] bool IsReady() const;

private:
    Ref<CSongLoad> i_loadP;
};
