#pragma once
#include <atomic>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "Core/Localize.h"
#include "Threads/CMainThreadProc.h"
#include "Threads/CMutex.h"
#include "Threads/CSemaphore.h"
#include "Threads/CT_QueElement.h"

class CTaskView;

/** What one queue is like. */
struct QueTraits {
    const char* nameZ;
    bool mainThreadB;      // its elements run on the main thread
    bool showTaskB;        // shows a line in the task list
    bool waitsForReadyB;   // runs nothing before the application is ready
};
inline constexpr QueTraits kQue_MainThread{"Main Thread Que", true, false, false};
inline constexpr QueTraits kQue_Alert{"Alert Que", true, false, true};
inline constexpr QueTraits kQue_DiscEvent{"Disc Event Que", true, false, false};
inline constexpr QueTraits kQue_PushMeta{N_("Push Meta Que"), false, true, false};
inline constexpr QueTraits kQue_ReEncoder{"re-encoder pooler Que", false, false, false};
inline constexpr QueTraits kQue_Rip{"Rip Que", false, false, false};
inline constexpr QueTraits kQue_Encode{"Encode Que", false, false, false};
inline constexpr QueTraits kQue_Zip{"Zip Que", false, false, false};
inline constexpr QueTraits kQue_KCSync{N_("KCSync Que"), false, true, false};

/** From an element to its queue, which may go first. */
struct QueAnchor {
    std::mutex lock;   // guards the two; nothing else is locked under it
    CMutex_ThreadQue* queP = nullptr;
    long usersL = 0;   // elements that are telling the queue of their end: it waits for them
};
/** One picked element: its queue, and whether it was finished. */
struct QueLink {
    std::shared_ptr<QueAnchor> anchorP;
    std::atomic<bool> doneB{false};
};

/** A named work queue: runs its elements one after the other on a thread of its own, which starts when there is
    something to do after a Quit. Elements that finish themselves later run beside each other, as many as the limit
    allows. States   idle (no thread, quit flag set), working, quitting, finished, deleted.
    Threads  any. Not to be destroyed by one of its own elements. Locks    its own before those of its flags; none is
             held while an element runs.
    Errors   an element without a routine gives paramErr; one that is dropped by Quit or Abort gives abortErr. */
class CMutex_ThreadQue : public CMutex {
public:
    using OwnerProc = std::function<void(CMutex_ThreadQue* queP)>;

    explicit CMutex_ThreadQue(const QueTraits& traits, short limitS = 0);
    /** Quits and waits. Every subclass calls Shut in its own destructor, while its hooks still stand. */
    ~CMutex_ThreadQue() override;

    /** abortErr when the queue is being deleted: the element is not taken then. abortErr too when no thread can be had:
        its completion has been called with the same. */
    OSErr Add(CT_QueElement element);
    OSErr AddVec(std::vector<CT_QueElement> elements);
    /** Drops what waits and ends the thread. With `waitB` it comes back when that is done, and nothing is taken any
        more. */
    void Quit(bool waitB);
    /** Drops what waits; what is added afterwards runs. */
    void Abort();
    /** Takes out the waiting elements of this id, without completing them; how many. */
    std::size_t Remove(long id);
    /** How many elements may run beside each other; 0 is no limit. */
    void SetLimit(short limitS);
    /** An id whose elements run in spite of the limit. */
    void Allow(short id, bool allowB);
    /** Tells `owner` once, when the last element is done; on the thread of that element. The owner must not delete the
        queue on the spot, but may post a call that does. */
    void SetAutoDispose(OwnerProc owner);
    /** Looks again at what may run, for instance once the application is ready. */
    void WakeUp() { i_wakeUp.Signal(); }

    [[nodiscard]] std::size_t Waiting() const;
    [[nodiscard]] short Running() const;
    [[nodiscard]] bool IsFinished() const { return i_finishedFlagB.Get(); }
    /** For what an element of this queue has begun: it is to end now. True also while the queue has nothing to do. */
    [[nodiscard]] bool IsToldToStop() const { return i_quitB.Get() || i_abortB.Get(); }
    [[nodiscard]] const std::string& Name() const noexcept { return i_name; }

protected:
    /** The body of the thread. */
    virtual OSErr Run();
    virtual void OnElementRun(CT_QueElement& /*element*/) {}
    virtual void OnElementComplete(CT_QueElement& /*element*/) {}
    /** The spawner counts as one that runs. */
    void SpawnAtOnce();
    /** The whole deletion, but for the memory. Twice does nothing. */
    void Shut();

private:
    friend class CT_QueElement;
    enum class Pick { kWait, kDropped, kRun, kFinished };
    Pick PickElement(CT_QueElement& element, long& abortsL);   // one round of the thread
    OSErr RunElement(CT_QueElement& element);
    bool WaitUntilReady(long abortsL);
    void WaitForWork();
    void ElementDone(CT_QueElement& element);
    void MarkSpawned();   // under the lock, before Spawn
    OSErr Spawn();        // without it; on failure all that waits is completed with abortErr
    void WaitFinished();
    void ShowTask();
    bool OnOwnThread() const;

    CMutex_ShortSet i_allowSet;
    std::deque<CT_QueElement>
        i_elements;   // this, the next two, i_progP, i_threadB and i_owner under the lock of this object
    short i_runningS = 0;
    short i_limitS;
    CSemaphore i_wakeUp{"thread que i_wake_up"};
    CSemaphore i_finishedB{"thread que i_finishedB"};
    CMutex_bool i_deletingB;
    CMutex_bool i_quitB{true};
    CMutex_bool i_abortB;
    CMutex_bool i_finishedFlagB{true};
    CMutex_bool i_autoDisposeB;
    OwnerProc i_owner;
    const std::string i_name;
    const bool i_mainThreadB;
    const bool i_showTaskB;
    const bool i_waitsForReadyB;
    long i_progP = 0;                        // elements done since the queue was last empty
    std::unique_ptr<CTaskView> i_taskRecP;   // the queue's thread only
    long i_abortsL = 0;                      // how often everything was dropped; under the lock
    bool i_threadB = false;                  // the thread runs, or is about to
    bool i_shutB = false;                    // whoever destroys
    std::atomic<std::thread::id> i_thread{};
    const std::shared_ptr<QueAnchor> i_anchorP = std::make_shared<QueAnchor>();
};
