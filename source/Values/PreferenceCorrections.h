#pragma once
#include "Values/CCFDictionary.h"

/** What a preferences file needs after it was read and before defaults are stored: values of a wrong type go, the
    one-time corrections run (each leaves its mark), then defaults, fixed values and the repair of the messenger's
    template. Pure: no file, no lock. */
void CorrectPreferences(CCFDictionary& content);
