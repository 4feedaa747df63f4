#include "SongFiles/CBusySongs.h"

#include "Core/AlertHook.h"
#include "Core/Localize.h"

CBusySongs::Hold::Hold(std::shared_ptr<CBusySongs> busyRef, SongID song)
    : i_busyRef(std::move(busyRef)),
      i_song(song),
      i_heldB(i_busyRef->i_songs.With([&](auto& songs) { return songs.insert(Number(song)).second; })) {}

CBusySongs::Hold::~Hold() {
    if (i_heldB) i_busyRef->i_songs.With([this](auto& songs) { songs.erase(Number(i_song)); });
}

bool CBusySongs::IsBusy(SongID song) const {
    return i_songs.With([&](const auto& songs) { return songs.contains(Number(song)); });
}

void TellSongBusy(const std::string& name) {
    ShowAlert(
        Localize("There is some other process that is busy with the zip file for the song “%1”, please try again.",
                 {name}),
        "");
}
