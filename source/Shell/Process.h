#pragma once
#include "Shell/Options.h"

/** The process from its entry to its end: log, crash reporter, second instance, the application with or without windows.
    Returns the exit status. `countL` and `wordsZ` are main's, for the desktop's toolkit. */
int RunProcess(const Options& options, int& countL, char** wordsZ);
