#include "Threads/MT_CrashPlease.h"

#include "Core/Assertions.h"
#include "Threads/ThreadInfo.h"

OSErr MT_CrashPlease::Operate() {
    AssertFail(i_expressionZ, i_fileZ, i_lineL);
    return noErr;
}

void MT_CrashPlease::Now(const char* expressionZ, const char* fileZ, long lineL) {
    auto* const procP = new MT_CrashPlease(expressionZ, fileZ, lineL);                   // its own owner from here on
    if (Failed(procP->Call(CallMode::kNoWait))) AssertFail(expressionZ, fileZ, lineL);   // nobody to show it
}

bool MT_CrashPlease::Check(const char* expressionZ, const char* fileZ, long lineL) {
    if (!IsPreemptiveThread()) return true;
    Now(expressionZ, fileZ, lineL);
    return false;
}
