#pragma once
#include <array>
#include <atomic>
#include <filesystem>
#include <string>
#include <string_view>

#include "Platform/OSErr.h"

/** The four switches, in the order of their preferences. kLogging is the master: with it off the others read as off. */
enum class LogSwitch : unsigned { kLogging, kThreads, kNetworking, kMemory };

/** The log: one text file, one line a call, flushed at once, so that the last line before a crash is there.
    A line is written when the log is live (there is an application) and the master switch is on.
    Threads  any; lines do not mix. Never called by the render thread.
    Errors   a file that cannot be opened leaves the log off; nothing else notices. */
class CLog {
public:
    [[nodiscard]] static CLog& Get();

    /** Where the lines go. Closes an open file, rotates one over 10 MB (".1" to ".3" are kept) at its next opening. */
    void SetFile(std::filesystem::path file);
    [[nodiscard]] std::filesystem::path File() const;
    /** True from the birth of the application object to the end of the process. */
    void SetLive(bool liveB) { i_liveB.store(liveB, std::memory_order_relaxed); }
    void SetSwitch(LogSwitch which, bool onB);
    [[nodiscard]] bool IsOn(LogSwitch which) const;

    /** One line; a line end at the end of `text` is not doubled. */
    void Line(std::string_view text);
    /** Closes the file; the next line opens it again. */
    void Close();

    CLog(const CLog&) = delete;
    CLog& operator=(const CLog&) = delete;

private:
    CLog();
    ~CLog() = delete;   // lives as long as the process: threads that outlive the quit may still log

    struct File_;
    File_* i_fileP;   // guarded by its own lock; never freed
    std::atomic<bool> i_liveB{false};
    std::array<std::atomic<bool>, 4> i_switchesB;
};

void Log(std::string_view text);
/** printf's form. */
[[gnu::format(printf, 1, 2)]] void LogF(const char* formatZ, ...);
/** A line that belongs to one of the switches. */
void LogIf(LogSwitch which, std::string_view text);

/** Logs "### Error " and the step when `err` is a failure, and hands `err` on: the floor that knows the step logs it. */
OSErr LogStep(OSErr err, std::string_view step);
OSErr LogStep(OSErr err, std::string_view step, const std::filesystem::path& file);

/** The text of a status: the table of the file manager, strerror for positive values, "Unknown error" else. */
[[nodiscard]] std::string ErrorText(int codeL);
[[nodiscard]] inline std::string ErrorText(OSErr err) { return ErrorText(Number(err)); }
