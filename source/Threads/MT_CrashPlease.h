#pragma once
#include "Threads/CMainThreadProc.h"

/** The guard of a routine that finds itself on the wrong thread: the assertion is reported on the main thread, where it
    can be shown. Any thread. */
class MT_CrashPlease final : public CMainThreadProc {
public:
    /** Reports `expressionZ`, which must stay. */
    static void Now(const char* expressionZ, const char* fileZ, long lineL);
    /** Reports it when called on a preemptive thread; true when the thread was right. */
    static bool Check(const char* expressionZ, const char* fileZ, long lineL);

protected:
    OSErr Operate() override;

private:
    MT_CrashPlease(const char* expressionZ, const char* fileZ, long lineL)
        : CMainThreadProc("crash please"), i_expressionZ(expressionZ), i_fileZ(fileZ), i_lineL(lineL) {}

    const char* const i_expressionZ;
    const char* const i_fileZ;
    const long i_lineL;
};
