#pragma once
#include <functional>
#include <memory>

#include "Platform/OSErr.h"

class CMutex_ThreadQue;
struct QueLink;

/** An element of a queue. Its copies are one element: it is finished once. An entry routine that answers
    queueNotDoneErr keeps a copy and calls Finish later, from any thread; the queue may have gone by then.
    Threads  entry on the queue's thread, or on the main thread for a queue that runs its elements there; the completion
             on the queue's thread, or on the one that calls Finish. */
class CT_QueElement {
public:
    using Entry = std::function<OSErr(CT_QueElement& element)>;
    using Completion = std::function<OSErr(CT_QueElement& element, OSErr err)>;

    CT_QueElement() = default;
    CT_QueElement(Entry entry, Completion completion, void* dataP = nullptr, long dataL = 0)
        : i_entry(std::move(entry)), i_completion(std::move(completion)), i_dataP(dataP), i_dataL(dataL) {}

    [[nodiscard]] void* Data() const noexcept { return i_dataP; }
    /** What the allow set and Remove know it by. */
    [[nodiscard]] long Id() const noexcept { return i_dataL; }
    /** The queue it is on; null when it is on none. May have gone. */
    [[nodiscard]] CMutex_ThreadQue* Que() const noexcept { return i_queP; }
    /** Ends an element that answered queueNotDoneErr; a second call does nothing. */
    void Finish(OSErr err);

private:
    friend class CMutex_ThreadQue;
    friend class CT_QueMainThread;
    OSErr Run();
    OSErr Complete(OSErr err);

    CMutex_ThreadQue* i_queP = nullptr;
    Entry i_entry;
    Completion i_completion;
    void* i_dataP = nullptr;
    long i_dataL = 0;
    OSErr i_taskErr = noErr;
    bool i_droppedB = false;            // by an abort: it must not run, whatever the queue does next
    std::shared_ptr<QueLink> i_linkP;   // from the moment it is picked
};
