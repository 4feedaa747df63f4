"""A maker of CD+G sub-code streams, for the tests, the benchmarks and the demo song.

A stream is a row of 24-byte packets, 300 a second; packet n is shown at n / 300 seconds. Nothing in here shares code with
the decoder: a stream made by it is a witness from outside."""
