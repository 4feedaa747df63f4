#pragma once
#include "Play/CPlayControl.h"
#include "Threads/CHandle.h"
#include "Threads/CMainThreadProc.h"

/** A wish to play from another thread. fnfErr when the row is gone by then, abortErr without an application. */
class CMainThreadProc_Play final : public CMainThreadProc {
public:
    CMainThreadProc_Play(CHandle<CPlayControl> controlRef, PlaylistID list, PLItemID item,
                         StackHeld held = StackHeld::kNo)
        : CMainThreadProc("play", held), i_controlRef(std::move(controlRef)), i_list(list), i_item(item) {}

protected:
    OSErr Operate() override {
        CPlayControl* const controlP = i_controlRef.Get();
        return controlP == nullptr ? abortErr : controlP->Play(i_list, i_item);
    }

private:
    const CHandle<CPlayControl> i_controlRef;
    const PlaylistID i_list;
    const PLItemID i_item;
};
