#pragma once
#include <functional>
#include <utility>

#include "Platform/OSErr.h"
#include "Threads/CHandle.h"

// Calls to the main thread that are a function. From any thread, with no lock of this layer held; `nameZ` is for logs and must
// stay. An object of the main thread is reached by its handle, and not at all once it has gone.

/** Runs `work` on the main thread and waits for its status; in place when the caller is there already. abortErr when there is
    no application to run it (any more), or it throws. */
[[nodiscard]] OSErr CallOnMain(const char* nameZ, const std::function<OSErr()>& work);

/** Has `work` run on the main thread later, after what was posted before. False when there is no application to run it; a
    work that is dropped on its way is destroyed, wherever that happens. */
bool PostToMain(const char* nameZ, std::function<void()> work);

/** As above, with the object; abortErr when that has gone. */
template <class T, class Work>
[[nodiscard]] OSErr CallOnMain(const char* nameZ, const CHandle<T>& handle, const Work& work) {
    return CallOnMain(nameZ, [&] {
        T* const objectP = handle.Get();
        return objectP == nullptr ? abortErr : work(*objectP);
    });
}

/** As above, with the object; nothing happens when that has gone by then. */
template <class T, class Work>
bool PostToMain(const char* nameZ, CHandle<T> handle, Work work) {
    return PostToMain(nameZ, [handle = std::move(handle), work = std::move(work)] {
        if (T* const objectP = handle.Get(); objectP != nullptr) work(*objectP);
    });
}
