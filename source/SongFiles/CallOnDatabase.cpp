#include "SongFiles/CallOnDatabase.h"

#include "Threads/CHandle.h"
#include "Threads/CMainThreadProc.h"

namespace {

class CMainThread_OnDatabase final : public CMainThreadProc {
public:
    using Work = std::function<OSErr(CSongDatabase& database)>;
    CMainThread_OnDatabase(const char* nameZ, const CHandle<CSongDatabase>& databaseRef, const Work& work)
        : CMainThreadProc(nameZ, StackHeld::kYes), i_databaseRef(databaseRef), i_work(work) {}

protected:
    OSErr Operate() override {
        CSongDatabase* const databaseP = i_databaseRef.Get();
        return databaseP == nullptr ? abortErr : i_work(*databaseP);
    }

private:
    const CHandle<CSongDatabase>& i_databaseRef;
    const Work& i_work;
};

}   // namespace

OSErr CallOnDatabase(const char* nameZ, const CHandle<CSongDatabase>& databaseRef,
                     const std::function<OSErr(CSongDatabase& database)>& work) {
    return CMainThread_OnDatabase(nameZ, databaseRef, work).Call(CallMode::kWait);
}
