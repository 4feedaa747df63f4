#pragma once
#include <atomic>
#include <cstddef>
#include <utility>

/** Base of what several owners share. It begins with no owner and is deleted by the last `Ref` that leaves, on that
    thread.
    Threads  any. */
class RefCounted {
public:
    RefCounted(const RefCounted&) = delete;
    RefCounted& operator=(const RefCounted&) = delete;
    /** Owners; exact only for one who knows that no other thread holds one. */
    [[nodiscard]] long RetainCount() const noexcept { return i_retainCountL.load(std::memory_order_acquire); }

protected:
    RefCounted() = default;
    virtual ~RefCounted() = default;
    /** One more owner, unless the last has left already; for a table of what lives, which does not own it. The caller
        hands the count to a `Ref` by Ref::Adopt. */
    [[nodiscard]] bool TryRetain() const noexcept {
        long countL = i_retainCountL.load(std::memory_order_relaxed);
        while (countL > 0)
            if (i_retainCountL.compare_exchange_weak(countL, countL + 1, std::memory_order_acquire)) return true;
        return false;
    }

private:
    template <class T>
    friend class Ref;
    void Retain() const noexcept { i_retainCountL.fetch_add(1, std::memory_order_relaxed); }
    void Release() const noexcept {
        if (i_retainCountL.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
    }

    mutable std::atomic<long> i_retainCountL{0};
};

/** One owner of a `RefCounted` object: retains it for as long as the handle lives. Null is fine. */
template <class T>
class Ref {
public:
    Ref() = default;
    Ref(std::nullptr_t) {}
    /** Takes over a count that was taken before. */
    [[nodiscard]] static Ref Adopt(T* objectP) noexcept {
        Ref adopted;
        adopted.i_objectP = objectP;
        return adopted;
    }
    explicit Ref(T* objectP) : i_objectP(objectP) { Retain(); }
    Ref(const Ref& other) : i_objectP(other.i_objectP) { Retain(); }
    Ref(Ref&& other) noexcept : i_objectP(std::exchange(other.i_objectP, nullptr)) {}
    template <class U>
    Ref(const Ref<U>& other) : i_objectP(other.Get()) {
        Retain();
    }
    ~Ref() {
        if (i_objectP != nullptr) static_cast<const RefCounted*>(i_objectP)->Release();
    }
    Ref& operator=(Ref other) noexcept {
        std::swap(i_objectP, other.i_objectP);
        return *this;
    }

    [[nodiscard]] T* Get() const noexcept { return i_objectP; }
    T* operator->() const noexcept { return i_objectP; }
    T& operator*() const noexcept { return *i_objectP; }
    explicit operator bool() const noexcept { return i_objectP != nullptr; }
    friend bool operator==(const Ref& a, const Ref& b) noexcept { return a.i_objectP == b.i_objectP; }

private:
    void Retain() const noexcept {
        if (i_objectP != nullptr) static_cast<const RefCounted*>(i_objectP)->Retain();
    }
    T* i_objectP = nullptr;
};

/** A new object with its first owner. */
template <class T, class... Args>
[[nodiscard]] Ref<T> MakeRef(Args&&... args) {
    return Ref<T>(new T(std::forward<Args>(args)...));
}
