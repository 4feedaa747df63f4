#include "Threads/LogThread.h"

#include "Core/CLog.h"
#include "Threads/CForkMap.h"
#include "Threads/ForkRecord.h"

void LogThread(const char* textZ, const std::string& name) {
    if (CLog::Get().IsOn(LogSwitch::kThreads)) Log(textZ + name);
}

std::string NameOf(const ForkRecord& fork) {
    const CMutex::Scope guard(*fork.mapP);
    return fork.name;
}
