#pragma once
#include <filesystem>

#include "Platform/OSErr.h"

/** The stack on which a crash of this thread is reported. One at the bottom of each thread. */
class CScopedSignalStack {
public:
    CScopedSignalStack();
    ~CScopedSignalStack();
    CScopedSignalStack(const CScopedSignalStack&) = delete;
    CScopedSignalStack& operator=(const CScopedSignalStack&) = delete;

private:
    void* i_stackP;
};

/** While one lives, a crash of the process leaves a stack trace: a file "Vopla Crash <process>.txt" in the folder given.
    One for the process; threads need none of their own, but may hold one for their alternate stack, so that a stack that
    overflowed is told too (CScopedSignalStack).
    Threads  made and destroyed on the main thread. */
class CCrashReporter {
public:
    explicit CCrashReporter(const std::filesystem::path& folder);
    ~CCrashReporter();
    CCrashReporter(const CCrashReporter&) = delete;
    CCrashReporter& operator=(const CCrashReporter&) = delete;

    /** Copies the log beside itself as "Vopla Log for report.txt", where no rotation takes it: an alert has asked the user
        for it. Replaces an older copy. */
    static OSErr KeepLog(const std::filesystem::path& logFile);
    /** False when the last session in `logFile` has no "Quit Successful"; true as well when there was no session.
        Call it before this session writes its first line. */
    [[nodiscard]] static bool LastQuitWasClean(const std::filesystem::path& logFile);

private:
    CScopedSignalStack i_stack;   // the main thread's
};
