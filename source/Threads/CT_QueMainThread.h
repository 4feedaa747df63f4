#pragma once
#include "Threads/CMainThreadProc.h"
#include "Threads/CT_QueElement.h"

/** Runs a queue element on the main thread while the queue's thread waits. */
class CT_QueMainThread final : public CMainThreadProc {
public:
    explicit CT_QueMainThread(CT_QueElement& element)
        : CMainThreadProc("CT_QueMainThread", StackHeld::kYes), i_element(element) {}

protected:
    OSErr Operate() override { return i_element.Run(); }

private:
    CT_QueElement& i_element;
};
