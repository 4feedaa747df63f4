#pragma once

struct CliCall;

// The work of a librarian without the desktop. Reading works beside a host that has the library; changing it is refused
// then. The root is a folder that holds a library itself, or one as the host takes it (ROOT/Music/Vopla).
// JSON  a song is one object keyed by its meta keys, one a line; `check` {"songs","playlists","singers","problems"};
//       `restore` without a name lists {"copy","bytes"}, with one {"restored"}; without --json lines for people.

/** `library list`: 1 when not all could be read, behind what could. */
int ListSongs(const CliCall& call);
/** `library show ID`. */
int ShowSong(const CliCall& call);
/** `library set ID KEY VALUE`. */
int SetSong(const CliCall& call);
/** `library check`. */
int CheckLibrary(const CliCall& call);
/** `library rebuild`: what can be read stays, ids and lists too; songs of the folders that it lacks come to it. */
int RebuildLibrary(const CliCall& call);
/** `library restore [COPY]`. */
int RestoreLibrary(const CliCall& call);
