#pragma once
#include <QString>

/** What the display system lets a window do. */
struct DisplayAbilities {
    bool opacityB = false;       // a window can be faded as a whole
    bool transparentB = false;   // the desktop shines through what is clear
    bool onTopB = false;         // a window can stay above the others
    QString why;                 // in the user's words, when something of it is missing
};
/** Asked each time: a compositor may come and go. Main thread. */
[[nodiscard]] DisplayAbilities AbilitiesOfDisplay();
