#include "Threads/CallOnMain.h"

#include "Threads/CMainThreadProc.h"

namespace {

/** A call whose body is a function; `Function` is one, or a reference to the waiting caller's. */
template <class Function>
class CMainThread_Function final : public CMainThreadProc {
public:
    CMainThread_Function(const char* nameZ, Function work, StackHeld held)
        : CMainThreadProc(nameZ, held), i_work(std::forward<Function>(work)) {}

protected:
    OSErr Operate() override { return i_work(); }

private:
    const Function i_work;
};

}   // namespace

OSErr CallOnMain(const char* nameZ, const std::function<OSErr()>& work) {
    return CMainThread_Function<const std::function<OSErr()>&>(nameZ, work, StackHeld::kYes).Call(CallMode::kWait);
}

bool PostToMain(const char* nameZ, std::function<void()> work) {
    auto run = [work = std::move(work)] {
        work();
        return noErr;
    };
    auto* const callP = new CMainThread_Function(nameZ, std::move(run), StackHeld::kNo);   // its own owner
    return !Failed(callP->Call(CallMode::kPost));
}
