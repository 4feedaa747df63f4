#include "Threads/CMutex_ThreadQue.h"

#include <algorithm>
#include <utility>

#include "Core/Assertions.h"
#include "Core/CLog.h"
#include "Core/Localize.h"
#include "Threads/CT_QueMainThread.h"
#include "Threads/CThreadHost.h"
#include "Threads/CThreadManager.h"
#include "Threads/ThreadInfo.h"

namespace {
constexpr std::uint32_t kQue_RefreshMilliseconds = 250;   // how often a task on view is drawn anew
constexpr std::uint32_t kQue_ReadyMilliseconds = 1000;    // how often an early element asks for the application
}   // namespace

CMutex_ThreadQue::CMutex_ThreadQue(const QueTraits& traits, short limitS)
    : i_limitS(limitS),
      i_name(traits.nameZ),
      i_mainThreadB(traits.mainThreadB),
      i_showTaskB(traits.showTaskB),
      i_waitsForReadyB(traits.waitsForReadyB) {
    i_anchorP->queP = this;
    LogF("\n--------------\nCreating Que: %s\n", i_name.c_str());
}

CMutex_ThreadQue::~CMutex_ThreadQue() { Shut(); }

void CMutex_ThreadQue::Shut() {
    if (std::exchange(i_shutB, true)) return;
    i_deletingB.Set(true);
    LogF("\nv--------------\nDeleting Que: %s\n", i_name.c_str());
    Quit(true);
    const auto usedB = [this] {
        const std::scoped_lock guard(i_anchorP->lock);
        i_anchorP->queP = nullptr;   // an element that finishes itself later finds nobody
        return i_anchorP->usersL > 0;
    };
    while (usedB()) WaitOneTurn();
    LogF("Successfully Deleted: %s\n^--------------\n", i_name.c_str());
}

void CMutex_ThreadQue::MarkSpawned() {
    i_quitB.Set(false);
    i_abortB.Set(false);
    i_finishedFlagB.Set(false);
    i_finishedB.Reset();
    i_threadB = true;
}

OSErr CMutex_ThreadQue::Spawn() {
    LogF("Spawning new Que: %s\n", i_name.c_str());
    const ForkID id = CThreadManager::Fork(
        ForkKind::kPreemptive,
        [this](void*) {
            i_thread.store(std::this_thread::get_id());
            return Run();
        },
        {}, nullptr, i_name.c_str());
    if (id != 0) return noErr;
    std::deque<CT_QueElement> refused;
    {
        const Scope guard(*this);
        i_quitB.Set(true);
        i_finishedFlagB.Set(true);
        i_threadB = false;
        refused.swap(i_elements);   // also those of others, who were told that they are on their way
    }
    i_finishedB.Signal();
    for (CT_QueElement& element : refused) {
        const OSErr told = element.Complete(abortErr);
        static_cast<void>(told);   // nobody is left to tell
    }
    return abortErr;
}

void CMutex_ThreadQue::SpawnAtOnce() {
    {
        const Scope guard(*this);
        if (i_threadB) return;
        ++i_runningS;
        MarkSpawned();
    }
    if (!Failed(Spawn())) return;
    const Scope guard(*this);
    --i_runningS;   // logged; the next Add tries again
}

OSErr CMutex_ThreadQue::Add(CT_QueElement element) {
    std::vector<CT_QueElement> one;
    one.push_back(std::move(element));
    return AddVec(std::move(one));
}

OSErr CMutex_ThreadQue::AddVec(std::vector<CT_QueElement> elements) {
    if (elements.empty()) return noErr;
    bool spawnB = false;
    {
        const Scope guard(*this);   // left before a refused element, and all that it holds, dies
        if (i_deletingB.Get()) return abortErr;
        i_abortB.Set(false);
        // A thread that is still on its way out takes the new elements as well.
        spawnB = !i_threadB;
        if (spawnB)
            MarkSpawned();
        else
            i_quitB.Set(false);
        for (CT_QueElement& element : elements) {
            element.i_queP = this;
            i_elements.push_back(std::move(element));
        }
    }
    // Without the lock: a thread is started and a line is written, and both may take their time.
    if (spawnB)
        if (const OSErr err = Spawn(); Failed(err)) return err;
    i_wakeUp.Signal();
    return noErr;
}

void CMutex_ThreadQue::Abort() {
    {
        const Scope guard(*this);
        i_abortB.Set(true);
        ++i_abortsL;
        for (CT_QueElement& element : i_elements) element.i_droppedB = true;   // also when an Add takes the flag back
    }
    i_wakeUp.Signal();
}

std::size_t CMutex_ThreadQue::Remove(long id) {
    std::vector<CT_QueElement> taken;   // dies after the lock is left
    const Scope guard(*this);
    std::erase_if(i_elements, [&](CT_QueElement& element) {
        if (element.i_dataL != id) return false;
        taken.push_back(std::move(element));
        return true;
    });
    return taken.size();
}

void CMutex_ThreadQue::Quit(bool waitB) {
    if (waitB) i_deletingB.Set(true);
    {
        const Scope guard(*this);
        i_quitB.Set(true);
        i_abortB.Set(true);
        ++i_abortsL;
        for (CT_QueElement& element : i_elements) element.i_droppedB = true;
    }
    i_wakeUp.Signal();
    if (!waitB || !AssertWords(!OnOwnThread(), "a queue waits for its own end")) return;
    WaitFinished();
    if (!IsLoopThread()) return;
    // The end of what finishes itself later may lie ready for this thread; nobody waits for more.
    for (int passes = 2 * Running(); passes > 0 && Running() > 0; --passes) (void)PumpLimited();
}

void CMutex_ThreadQue::WaitFinished() {
    for (;;) {
        {
            const Scope guard(*this);   // the thread sets it under the lock, and does not touch the queue after that
            if (!i_threadB) break;
        }
        if (Failed(i_finishedB.Wait(IsMainThread() ? WaitMode::kForever : WaitMode::kMain_TimersPaint))) break;
    }
    i_finishedB.Signal();   // for another that waits as well
}

void CMutex_ThreadQue::SetLimit(short limitS) {
    {
        const Scope guard(*this);
        i_limitS = std::max<short>(limitS, 0);
    }
    i_wakeUp.Signal();
}

void CMutex_ThreadQue::Allow(short id, bool allowB) {
    i_allowSet.With([&](std::set<short>& ids) {
        if (allowB)
            ids.insert(id);
        else
            ids.erase(id);
    });
    i_wakeUp.Signal();
}

void CMutex_ThreadQue::SetAutoDispose(OwnerProc owner) {
    const Scope guard(*this);
    i_owner = std::move(owner);
    i_autoDisposeB.Set(true);
}

std::size_t CMutex_ThreadQue::Waiting() const {
    const Scope guard(*this);
    return i_elements.size();
}

short CMutex_ThreadQue::Running() const {
    const Scope guard(*this);
    return i_runningS;
}

bool CMutex_ThreadQue::OnOwnThread() const { return i_thread.load() == std::this_thread::get_id(); }

CMutex_ThreadQue::Pick CMutex_ThreadQue::PickElement(CT_QueElement& element, long& abortsL) {
    const Scope guard(*this);
    const bool quitB = i_quitB.Get();
    if (i_elements.empty()) {
        if (!quitB) return Pick::kWait;
        i_thread.store(std::thread::id{});
        i_threadB = false;
        i_finishedFlagB.Set(true);
        i_finishedB.Signal();   // under the lock: whoever destroys the queue takes it once more before
        return Pick::kFinished;
    }
    const bool stopB = quitB || i_abortB.Get();
    auto it = i_elements.begin();
    if (!stopB && !it->i_droppedB && i_limitS > 0 && i_runningS >= i_limitS) {
        const std::set<short> allowed = i_allowSet.Get();
        if (allowed.empty()) return Pick::kWait;
        Assert(!allowed.empty());
        it = std::ranges::find_if(i_elements, [&](const CT_QueElement& waiting) {
            return waiting.i_droppedB ||
                   (std::in_range<short>(waiting.i_dataL) && allowed.contains(static_cast<short>(waiting.i_dataL)));
        });
        if (it == i_elements.end()) return Pick::kWait;   // started again by the next wake-up
    }
    element = std::move(*it);
    i_elements.erase(it);
    element.i_linkP = std::make_shared<QueLink>();
    element.i_linkP->anchorP = i_anchorP;
    abortsL = i_abortsL;
    ++i_runningS;
    return stopB || element.i_droppedB ? Pick::kDropped : Pick::kRun;
}

OSErr CMutex_ThreadQue::Run() {
    for (;;) {
        CT_QueElement element;
        long abortsL = 0;
        const Pick pick = PickElement(element, abortsL);
        if (pick == Pick::kFinished) return noErr;   // not one line more: the queue may be gone
        ShowTask();
        if (pick == Pick::kWait) {
            WaitForWork();
            continue;
        }
        OSErr err = abortErr;
        if (pick == Pick::kRun && WaitUntilReady(abortsL)) err = RunElement(element);
        if (err != queueNotDoneErr) element.Finish(err);
    }
}

bool CMutex_ThreadQue::WaitUntilReady(long abortsL) {
    if (!i_waitsForReadyB) return true;
    for (;;) {
        bool readyB = false;
        CThreadHost::With([&](const CThreadHost& host) { readyB = host.IsAppReady(); });
        {
            const Scope guard(*this);
            if (i_abortsL != abortsL) return false;
        }
        if (readyB) return true;
        if (const OSErr err = i_wakeUp.WaitPreemptive(kQue_ReadyMilliseconds);
            Failed(err) && err != semaphoreTimedOutErr)
            return false;
    }
}

OSErr CMutex_ThreadQue::RunElement(CT_QueElement& element) {
    OnElementRun(element);
    return i_mainThreadB ? CT_QueMainThread(element).Call(CallMode::kWait) : element.Run();
}

void CMutex_ThreadQue::WaitForWork() {
    // The results do not matter: the round that follows looks at everything again.
    if (i_taskRecP)
        (void)i_wakeUp.WaitPreemptive(kQue_RefreshMilliseconds);
    else
        (void)i_wakeUp.Wait(WaitMode::kForever);
}

void CMutex_ThreadQue::ElementDone(CT_QueElement& element) {
    OnElementComplete(element);
    OwnerProc owner;
    {
        const Scope guard(*this);
        if (Assert(i_runningS > 0)) --i_runningS;
        ++i_progP;
        if (i_runningS == 0 && i_elements.empty() && i_autoDisposeB.Get()) owner = std::exchange(i_owner, {});
    }
    i_wakeUp.Signal();
    if (owner) owner(this);
}

void CMutex_ThreadQue::ShowTask() {
    if (!i_showTaskB) return;
    long doneL = 0, totalL = 0;
    {
        const Scope guard(*this);
        doneL = i_progP;
        totalL = doneL + i_runningS + static_cast<long>(i_elements.size());
        if (doneL == totalL) i_progP = 0;
    }
    if (doneL == totalL) return i_taskRecP.reset();
    if (!i_taskRecP)
        CThreadHost::With([&](CThreadHost& host) { i_taskRecP = host.OpenTask(Localize(i_name.c_str())); });
    if (!i_taskRecP) return;
    i_taskRecP->SetText(Localize(i_name.c_str()) + ": " + std::to_string(doneL) + " / " + std::to_string(totalL));
    i_taskRecP->SetSteps(doneL, totalL);
    if (i_taskRecP->IsCancelled()) Abort();
}
