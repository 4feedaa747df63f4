#include "Threads/CMutex.h"

#include <cerrno>

#include "Core/Assertions.h"
#include "Core/CLog.h"
#include "Threads/MT_CrashPlease.h"

void NumberedReport(const char* messageZ, OSErr err) {
    const std::string text = ErrorText(err);
    LogF("%s: %s", messageZ, text == "Unknown error" ? "Unknown" : text.c_str());
}

CMutex::CMutex() {
    pthread_mutexattr_t kind;
    pthread_mutexattr_init(&kind);
    pthread_mutexattr_settype(&kind, PTHREAD_MUTEX_ERRORCHECK);
    const int errL = pthread_mutex_init(&i_platform, &kind);
    pthread_mutexattr_destroy(&kind);
    if (errL == 0) return;
    i_offL.store(1, std::memory_order_relaxed);   // there is nothing to lock
    if (Failed(Report("Super icky juju creating a mutex", errL))) return;
}

CMutex::~CMutex() {
    Assert(i_countS == 0);
    pthread_mutex_destroy(&i_platform);
}

OSErr CMutex::Report(const char* messageZ, int errL) const {
    i_errL.store(errL, std::memory_order_relaxed);
    const OSErr err = static_cast<OSErr>(errL);
    NumberedReport(messageZ, err);
    return err;
}

OSErr CMutex::Enter() const {
    if (i_offL.load(std::memory_order_relaxed) != 0) return noErr;
    if (const int errL = pthread_mutex_lock(&i_platform); errL != 0) {
        const OSErr err = Report("Very bad juju entering a critical region", errL);
        MT_CrashPlease::Now("entering a critical region", __FILE__, __LINE__);
        return err;
    }
    i_holder.store(pthread_self(), std::memory_order_relaxed);
    i_countS.fetch_add(1, std::memory_order_relaxed);
    return noErr;
}

OSErr CMutex::Leave() const {
    if (i_offL.load(std::memory_order_relaxed) != 0) return noErr;
    if (Holders() > 0 && pthread_equal(i_holder.load(std::memory_order_relaxed), pthread_self()) == 0)
        return Report("Mostly bad juju exiting a critical region", EPERM);   // another thread holds it
    // Taken off before the unlock: afterwards the next holder may already destroy this object.
    if (!Assert(i_countS > 0)) return Report("Mostly bad juju exiting a critical region", EPERM);
    i_countS.fetch_sub(1, std::memory_order_relaxed);
    const int errL = pthread_mutex_unlock(&i_platform);
    if (errL == 0) return noErr;
    i_countS.fetch_add(1, std::memory_order_relaxed);   // refused: another thread holds it still
    return Report("Mostly bad juju exiting a critical region", errL);
}
