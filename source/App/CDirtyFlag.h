#pragma once
#include "App/CSaveTarget.h"

/** The save target of an application without a library: it only remembers that something changed, so that the
    preferences are saved by the same timer under the same rules. */
class CDirtyFlag final : public CSaveTarget {
public:
    bool IsDirty() const override { return i_dirtyB; }
    void SetDirty(bool dirtyB) override { i_dirtyB = dirtyB; }
    OSErr Save(bool /*fullB*/) override {
        i_dirtyB = false;
        return noErr;
    }

private:
    bool i_dirtyB = false;
};
