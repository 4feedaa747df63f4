#pragma once
#include <string>

struct ForkRecord;

/** A line about a thread, while "Log Threads" is on. Any thread. */
void LogThread(const char* textZ, const std::string& name);
/** "No Kill: " may be put in front of it at any time. Any thread, without the lock of the map of forks. */
[[nodiscard]] std::string NameOf(const ForkRecord& fork);
