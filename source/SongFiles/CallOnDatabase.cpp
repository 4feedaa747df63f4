#include "SongFiles/CallOnDatabase.h"

#include "Threads/CMainThreadProc.h"

namespace {

class CMainThread_OnDatabase final : public CMainThreadProc {
public:
    using Work = std::function<OSErr(CSongDatabase& database)>;
    CMainThread_OnDatabase(const char* nameZ, const std::weak_ptr<CSongDatabase*>& databaseRef, const Work& work)
        : CMainThreadProc(nameZ, StackHeld::kYes), i_databaseRef(databaseRef), i_work(work) {}

protected:
    OSErr Operate() override {
        const auto databaseRef = i_databaseRef.lock();
        return databaseRef == nullptr || *databaseRef == nullptr ? abortErr : i_work(**databaseRef);
    }

private:
    const std::weak_ptr<CSongDatabase*>& i_databaseRef;
    const Work& i_work;
};

}   // namespace

OSErr CallOnDatabase(const char* nameZ, const std::weak_ptr<CSongDatabase*>& databaseRef,
                     const std::function<OSErr(CSongDatabase& database)>& work) {
    return CMainThread_OnDatabase(nameZ, databaseRef, work).Call(CallMode::kWait);
}
