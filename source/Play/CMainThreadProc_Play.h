#pragma once
#include "Threads/CMainThreadProc.h"
#include "Play/CPlayControl.h"

/** A wish to play from another thread. fnfErr when the row is gone by then, abortErr without an application. */
class CMainThreadProc_Play final : public CMainThreadProc {
public:
    CMainThreadProc_Play(std::weak_ptr<CPlayControl*> controlRef, PlaylistID list, PLItemID item,
                         StackHeld held = StackHeld::kNo)
        : CMainThreadProc("play", held), i_controlRef(std::move(controlRef)), i_list(list), i_item(item) {}

protected:
    OSErr Operate() override {
        const auto controlRef = i_controlRef.lock();
        if (!controlRef || *controlRef == nullptr) return abortErr;
        return (*controlRef)->Play(i_list, i_item);
    }

private:
    const std::weak_ptr<CPlayControl*> i_controlRef;
    const PlaylistID i_list;
    const PLItemID i_item;
};
