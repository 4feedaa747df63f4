#pragma once

/** Has all threads take memory from two heaps. By itself the C library gives each thread that meets another one a heap of
    its own, up to eight a core, and what a song's threads leave free in theirs is not used by the next song's: an evening
    took twice the memory, and more with each song. Once, at the start of a program, before there are threads. */
void ShareHeaps();
