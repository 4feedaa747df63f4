#include "SongFiles/CT_OnceSorted.h"

#include <algorithm>

#include "Core/Localize.h"
#include "Library/CSongDatabase.h"

namespace {

constexpr double kLook_T = 0.05;

bool IsSorting(const CSongDatabase& database) {
    return std::ranges::any_of(database.PlayLists(), &CPlayList::IsSorting);
}

}   // namespace

void CT_OnceSorted::Do(CSongDatabase& database, std::function<void()> work) {
    if (IsSorting(database))
        new CT_OnceSorted(database, std::move(work));   // the map of forks owns it
    else
        work();
}

CT_OnceSorted::CT_OnceSorted(CSongDatabase& database, std::function<void()> work)
    : CT_Timer("once sorted", kLook_T), i_databaseRef(database.Self()), i_work(std::move(work)) {
    (void)CThreadHost::With([&](CThreadHost& host) { i_viewP = host.OpenTask(Localize("Waiting for sort tasks…")); });
}

OSErr CT_OnceSorted::Timer() {
    const CSongDatabase* const databaseP = i_databaseRef.Get();
    if (databaseP == nullptr || (i_viewP != nullptr && i_viewP->IsCancelled())) return timerDisposeErr;
    if (IsSorting(*databaseP)) return noErr;
    i_viewP.reset();
    i_work();
    return timerDisposeErr;
}
