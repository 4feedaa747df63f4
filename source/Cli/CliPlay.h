#pragma once

struct CliCall;

/** `play`: one file after the other, with a line of its state every quarter of a second and one with the totals.
    "audio300" is what was heard and "time300" the song's clock, in 300ths of a second; "packets" are the graphics
    disc's that were drawn, 0 where there is none; a video song has "pictures" (shown) and "dropped" beside them. */
int PlaySongs(const CliCall& call);
