#include "Core/Assertions.h"

#include <atomic>

#include "Core/CLog.h"

namespace {

bool OnlyLog(const char* expressionZ, const char* fileZ, long lineL, bool /*continueB*/) {
    LogF("Assert Fail: %s, in file: '%s' at line %ld", expressionZ, fileZ, lineL);
    return true;
}

std::atomic<AssertHandler> s_handler{&OnlyLog};

}   // namespace

bool AssertFail(const char* expressionZ, const char* fileZ, long lineL, bool continueB) {
    return s_handler.load(std::memory_order_acquire)(expressionZ, fileZ, lineL, continueB);
}

void SetAssertHandler(AssertHandler handler) noexcept {
    s_handler.store(handler == nullptr ? &OnlyLog : handler, std::memory_order_release);
}
