#pragma once
#include "Platform/OSErr.h"

/** What the save timer and the quit save: the library, as the application sees it.
    Threads  main. */
class CSaveTarget {
public:
    virtual ~CSaveTarget() = default;
    [[nodiscard]] virtual bool IsDirty() const = 0;
    virtual void SetDirty(bool dirtyB) = 0;
    [[nodiscard]] virtual bool IsAddingToLibrary() const { return false; }
    /** True while a worker still writes; the quit waits for it. */
    [[nodiscard]] virtual bool IsSaving() const { return false; }
    /** Writes what has changed, on a worker. `lastB`: now, whatever failed a moment ago. */
    virtual OSErr Save(bool lastB) = 0;
};
