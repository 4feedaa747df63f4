#pragma once
#include <pthread.h>

#include <atomic>
#include <cstdint>
#include <deque>
#include <set>
#include <utility>

#include "Platform/OSErr.h"

/** Logs "%s: %s" with the message and the text of the status; "Unknown" for one without a text. */
void NumberedReport(const char* messageZ, OSErr err);

/** A lock that is not recursive: entering it twice on one thread, and leaving it on a thread that does not hold it, are
    refused and reported.
    Threads  any. Must not be held by anyone when it is destroyed.
    Errors   kept (Err) and reported; a caller that could not enter goes on without the lock, as in a teardown. */
class CMutex {
public:
    CMutex();
    virtual ~CMutex();
    CMutex(const CMutex&) = delete;
    CMutex& operator=(const CMutex&) = delete;

    OSErr Enter() const;
    OSErr Leave() const;
    /** With `offB` nothing is locked any more; for the teardown, when one thread is left. */
    void TurnOff(bool offB) { i_offL.store(offB ? 1 : 0, std::memory_order_relaxed); }
    /** The last failure of the lock. */
    OSErr Err() const noexcept { return static_cast<OSErr>(i_errL.load(std::memory_order_relaxed)); }
    /** Holders, 0 or 1. Exact only on the thread that holds the lock. */
    [[nodiscard]] short Holders() const noexcept { return i_countS.load(std::memory_order_relaxed); }

    /** The lock for as long as the object lives. */
    class Scope {
    public:
        explicit Scope(const CMutex& mutex) : i_mutex(mutex), i_enteredB(!Failed(mutex.Enter())) {}
        ~Scope() {
            if (i_enteredB && Failed(i_mutex.Leave())) return;   // reported where it happened
        }
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        const CMutex& i_mutex;
        const bool i_enteredB;
    };

protected:
    /** Called before each use by the value wrappers. */
    virtual void CheckValid() const {}

private:
    OSErr Report(const char* messageZ, int errL) const;

    mutable std::atomic<short> i_countS{0};      // stored under the lock only
    mutable std::atomic<pthread_t> i_holder{};   // meant only while i_countS is 1
    mutable pthread_mutex_t i_platform;
    std::atomic<std::uint32_t> i_offL{0};
    mutable std::atomic<std::int32_t> i_errL{0};
};

/** A value that threads share: each access is locked. A copy goes in, a copy comes out; With works on it in place.
    Threads  any. No other lock is taken, and no call made to another thread, inside With. */
template <class T>
class CMutexT : public CMutex {
public:
    CMutexT() = default;
    explicit CMutexT(T value) : i_value(std::move(value)) {}

    [[nodiscard]] T Get() const {
        CheckValid();
        const Scope guard(*this);
        return i_value;
    }
    void Set(T value) {
        CheckValid();
        const Scope guard(*this);
        std::swap(i_value, value);   // the old one dies after the lock is left: `value` outlives the guard
    }
    /** Stores `value`, answers what was there. */
    T Exchange(T value) {
        CheckValid();
        const Scope guard(*this);
        return std::exchange(i_value, std::move(value));
    }
    /** `work(value)` under the lock; short, no waits. */
    template <class Work>
    decltype(auto) With(Work&& work) {
        CheckValid();
        const Scope guard(*this);
        return std::forward<Work>(work)(i_value);
    }
    template <class Work>
    decltype(auto) With(Work&& work) const {
        CheckValid();
        const Scope guard(*this);
        return std::forward<Work>(work)(i_value);
    }

private:
    T i_value{};
};

class CMutex_long final : public CMutexT<long> {
    using CMutexT::CMutexT;
};
class CMutex_bool final : public CMutexT<bool> {
    using CMutexT::CMutexT;
};
class CMutex_ShortSet final : public CMutexT<std::set<short>> {
    using CMutexT::CMutexT;
};
class CMutex_UCharQue final : public CMutexT<std::deque<unsigned char>> {
    using CMutexT::CMutexT;
};
