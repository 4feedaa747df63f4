#pragma once
#include "Graphics/CPlayWindowRule.h"
#include "Platform/OSErr.h"

/** A video window, as far as its port and the playing of a song move it.
    Threads  main.
    Owner    the window. */
class CPortWindow : public CPlayWindow {
public:
    /** Fades the whole window, 0.0 to 1.0. paramErr where the display system cannot; the window stays as it is then. */
    virtual OSErr SetOpacity(float opacity) = 0;
    /** Parts that are filled clear let the desktop shine through, or no longer. paramErr where the display system
        cannot: what is clear is black then. */
    virtual OSErr SetTransparent(bool transparentB) = 0;
};
