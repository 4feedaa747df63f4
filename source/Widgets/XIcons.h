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
    kOneLevel,
    kFullScreen,
    kOutput,
    kColumns,
    kPicture,
    kSearch,
    kList,
    kLibrary
};

/** On which ground it stands. */
enum class IconInk { kText, kOnAccent, kPlaying };

/** A picture that is drawn, not loaded: sharp at every scale, in the colours of the look of now. */
[[nodiscard]] QIcon Icon(IconKind kind, IconInk ink = IconInk::kText);
