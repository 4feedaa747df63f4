#include "App/CHostRequests.h"

#include <chrono>
#include <utility>

#include "Platform/CMainLoop.h"

namespace {

/** A request on its way; guarded by the lock of the state. */
struct Request {
    enum class Stage { kWaiting, kUnderWay, kDone, kGivenUp } stage = Stage::kWaiting;
    std::string answer;
};

}   // namespace

std::string CHostRequests::Answer(Deed deed, std::string busy) {
    using enum Request::Stage;
    const auto requestRef = std::make_shared<Request>();
    std::unique_lock guard(i_stateRef->lock);
    if (i_stateRef->endedB) return busy;
    i_loop.Post([stateRef = i_stateRef, requestRef, deed = std::move(deed)] {
        {
            const std::scoped_lock own(stateRef->lock);
            if (requestRef->stage != kWaiting || stateRef->endedB) return;
            requestRef->stage = kUnderWay;
        }
        std::string answer = deed();
        const std::scoped_lock own(stateRef->lock);
        requestRef->answer = std::move(answer);
        requestRef->stage = kDone;
        stateRef->changed.notify_all();
    });
    const std::chrono::duration<double> mostT(kMost_Seconds);
    i_stateRef->changed.wait_for(guard, mostT, [&] { return requestRef->stage == kDone || i_stateRef->endedB; });
    if (requestRef->stage == kDone) return std::move(requestRef->answer);
    if (requestRef->stage == kWaiting) requestRef->stage = kGivenUp;
    return busy;
}

void CHostRequests::End() {
    const std::scoped_lock guard(i_stateRef->lock);
    i_stateRef->endedB = true;
    i_stateRef->changed.notify_all();
}
