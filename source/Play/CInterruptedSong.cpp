#include "Play/CInterruptedSong.h"

#include <utility>

#include "Platform/CClock.h"

void CInterruptedSong::Keep(Song song) {
    i_song = std::move(song);
    i_untilT = CClock::Get().SteadyT() + kKept_T;
}

void CInterruptedSong::NoteCounted(SongID song) {
    if (i_song && i_song->spec.song == song) i_song->countedB = true;
}

std::optional<CInterruptedSong::Song> CInterruptedSong::Take() {
    std::optional<Song> song = std::exchange(i_song, {});
    return CClock::Get().SteadyT() < i_untilT ? std::move(song) : std::nullopt;
}

bool CInterruptedSong::IsKept() const { return i_song && CClock::Get().SteadyT() < i_untilT; }

std::optional<GoBackOffer> CInterruptedSong::Offer() const {
    if (!IsKept()) return {};
    return GoBackOffer{.name = i_song->spec.name, .place300 = i_song->at300};
}

bool CInterruptedSong::HasRunOut() {
    if (!i_song || IsKept()) return false;
    i_song.reset();
    return true;
}

void CInterruptedSong::RowsLeave(PlaylistID list, std::span<const PLItemID> items) {
    if (i_song) i_song->order->RowsLeave(list, items);
}
