#pragma once
#include <QIcon>

enum class IconKind {
    kPlay,
    kPause,
    kStop,
    kPrevious,
    kNext,
    kRewind,
    kPlus,
    kMinus,
    kVolume,
    kMuted,
    kFullScreen,
    kOutput,
    kColumns,
    kSearch,
    kList,
    kLibrary
};

/** A picture that is drawn, not loaded: sharp at every scale, in the text colour of the look of now. */
[[nodiscard]] QIcon Icon(IconKind kind);
/** The same on the accent colour. */
[[nodiscard]] QIcon IconOnAccent(IconKind kind);
