#pragma once
/** What the end of a song asks the database for; the numbers are its commands. */
enum class PlayNextCommand : short { kSongEndCheck = 1, kNext = 2, kStop = 24 };

/** What "PlayNext" finds on the main thread. */
struct PlayNextState {
    bool songSaysEndB = false;         // the song's own end check
    bool stopBetweenTracksB = false;   // "Stop between tracks"
    bool hasPlaylistB = true;
    bool playlistRefusesB = false;
    bool stopAtPlaylistEndB = false;   // "Stop at playlist end"
    bool lastOfSelectionB = false;     // the song is the last item of the current selection
};
/** The rule of the end of a song; the state of the database is refreshed after its command. */
[[nodiscard]] constexpr PlayNextCommand ChoosePlayNext(const PlayNextState& state) noexcept {
    if (state.songSaysEndB) return PlayNextCommand::kSongEndCheck;
    if (state.stopBetweenTracksB || !state.hasPlaylistB || state.playlistRefusesB) return PlayNextCommand::kStop;
    if (state.stopAtPlaylistEndB && state.lastOfSelectionB) return PlayNextCommand::kStop;
    return PlayNextCommand::kNext;
}
