#include "Threads/ThreadInfo.h"

#include <utility>

#include "Threads/CMutex.h"

thread_local std::unique_ptr<std::int32_t> g_threadIndexL;
thread_local std::unique_ptr<bool> g_preemptiveB;

bool IsPreemptiveThread() noexcept { return g_preemptiveB != nullptr && *g_preemptiveB; }
bool IsMainThread() noexcept { return !IsPreemptiveThread(); }

void TagThread(std::int32_t indexL, bool preemptiveB) {
    g_threadIndexL = std::make_unique<std::int32_t>(indexL);
    g_preemptiveB = std::make_unique<bool>(preemptiveB);
}

std::int32_t NextThreadIndex() {
    static auto& s_lastL = *new CMutexT<std::int32_t>(0);   // never freed: threads outlive the statics
    return s_lastL.With([](std::int32_t& lastL) { return ++lastL; });
}

CScopedThreadIndex::CScopedThreadIndex(std::int32_t indexL) : i_beforeL(g_threadIndexL ? *g_threadIndexL : 0) {
    if (!g_threadIndexL) g_threadIndexL = std::make_unique<std::int32_t>(0);
    *g_threadIndexL = indexL;
}

CScopedThreadIndex::~CScopedThreadIndex() { *g_threadIndexL = i_beforeL; }
