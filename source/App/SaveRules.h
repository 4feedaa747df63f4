#pragma once
#include <optional>

/** All that decides whether the save timer may save now. */
struct SaveState {
    bool databaseDirtyB = false;
    bool addingToLibraryB = false;
    bool initializingB = false;
    bool idleGraphicsB = true;
    bool resizingWindowB = false;
    bool shutdownB = false;
    bool lateB = false;   // a change has waited for seconds
};

/** Why not: the condition and its value, as the log names them. */
struct SaveRefusal {
    const char* nameZ;
    const char* valueZ;
};

/** Nothing when the save may happen. A reason that only makes a later moment the better one does not stop a late
    save. */
[[nodiscard]] std::optional<SaveRefusal> RefuseSave(const SaveState& state);
