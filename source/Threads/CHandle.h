#pragma once
#include <memory>

#include "Core/Assertions.h"
#include "Threads/ThreadInfo.h"

/** Leads to an object of the main thread, and nowhere once that has gone: for tasks, timers and answers that may outlive
    what they are about.
    Threads  any may keep, copy and drop one; Get main. */
template <class T>
class CHandle {
public:
    CHandle() = default;
    /** Null once the object has gone, and, with an assertion, on another thread: there it could go under the caller. */
    [[nodiscard]] T* Get() const noexcept {
        return i_objectRef != nullptr && Assert(IsMainThread()) ? *i_objectRef : nullptr;
    }

private:
    template <class>
    friend class CHandled;
    explicit CHandle(std::shared_ptr<T*> objectRef) noexcept : i_objectRef(std::move(objectRef)) {}
    std::shared_ptr<T*> i_objectRef;
};

/** Member of an object that gives handles to itself; they lead nowhere when this goes. */
template <class T>
class CHandled {
public:
    explicit CHandled(T* objectP) : i_objectRef(std::make_shared<T*>(objectP)) {}
    ~CHandled() { Empty(); }
    CHandled(const CHandled&) = delete;
    CHandled& operator=(const CHandled&) = delete;

    [[nodiscard]] CHandle<T> Handle() const noexcept { return CHandle<T>(i_objectRef); }
    /** For an object whose end takes its time: from now on nobody comes any more. Main thread. */
    void Empty() noexcept { *i_objectRef = nullptr; }

private:
    const std::shared_ptr<T*> i_objectRef;
};
