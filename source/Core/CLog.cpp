#include "Core/CLog.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <memory>
#include <mutex>

namespace {

constexpr off_t kLog_RotateBytes = 10 * 1024 * 1024;
constexpr int kLog_Kept = 3;

/** Moves the file and its elders one number up; the eldest goes. */
void Rotate(const std::filesystem::path& file) {
    const auto numbered = [&](int n) { return std::filesystem::path{file.string() + "." + std::to_string(n)}; };
    std::error_code ignored;   // a log that cannot be rotated is still written
    for (int n = kLog_Kept; n > 1; --n) std::filesystem::rename(numbered(n - 1), numbered(n), ignored);
    std::filesystem::rename(file, numbered(1), ignored);
}

}   // namespace

struct CLog::File_ {
    std::mutex lock;   // guards all below; held over the write, since lines must not mix
    std::filesystem::path path;
    int handle = -1;
    bool failedB = false;   // the last opening failed: stay quiet until SetFile or Close

    bool Open() {
        if (handle >= 0) return true;
        if (failedB || path.empty()) return false;
        std::error_code ignored;   // the open below tells
        std::filesystem::create_directories(path.parent_path(), ignored);
        struct stat info {};
        if (::stat(path.c_str(), &info) == 0 && info.st_size > kLog_RotateBytes) Rotate(path);
        for (int tries = 0; tries < 2 && handle < 0; ++tries)
            handle = ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
        if (handle < 0) {
            failedB = true;
            std::fprintf(stderr, "Failed to open log file (last err: %d) (errno: %d): <%s>\n", Number(fnfErr), errno,
                         path.c_str());
            return false;
        }
        Write("opened log file at <" + path.string() + ">\n");
        return true;
    }
    void Write(std::string_view line) const {
        while (!line.empty()) {
            const ssize_t written = ::write(handle, line.data(), line.size());
            if (written <= 0) return;   // a full disk: the line is lost, the show goes on
            line.remove_prefix(static_cast<std::size_t>(written));
        }
    }
    void Close() {
        if (handle >= 0) ::close(handle);
        handle = -1;
        failedB = false;
    }
};

CLog::CLog() : i_fileP(new File_) { SetSwitch(LogSwitch::kLogging, true); }

CLog& CLog::Get() {
    static CLog* const s_logP = new CLog;
    return *s_logP;
}

void CLog::SetFile(std::filesystem::path file) {
    const std::scoped_lock guard(i_fileP->lock);
    i_fileP->Close();
    i_fileP->path = std::move(file);
}

std::filesystem::path CLog::File() const {
    const std::scoped_lock guard(i_fileP->lock);
    return i_fileP->path;
}

void CLog::SetSwitch(LogSwitch which, bool onB) {
    i_switchesB[static_cast<unsigned>(which)].store(onB, std::memory_order_relaxed);
}

bool CLog::IsOn(LogSwitch which) const {
    return i_switchesB[0].load(std::memory_order_relaxed) &&
           i_switchesB[static_cast<unsigned>(which)].load(std::memory_order_relaxed);
}

void CLog::Line(std::string_view text) {
    if (!i_liveB.load(std::memory_order_relaxed) || !IsOn(LogSwitch::kLogging)) return;
    const std::scoped_lock guard(i_fileP->lock);
    std::string line(text);
    if (line.empty() || line.back() != '\n') line += '\n';
    if (i_fileP->Open()) i_fileP->Write(line);
}

void CLog::Close() {
    const std::scoped_lock guard(i_fileP->lock);
    i_fileP->Close();
}

void Log(std::string_view text) { CLog::Get().Line(text); }

void LogF(const char* formatZ, ...) {
    if (!CLog::Get().IsOn(LogSwitch::kLogging)) return;
    std::va_list arguments;
    va_start(arguments, formatZ);
    // Numbers stand in the log with a point, whatever the user's language; the toolkit has set that one for the
    // process.
    static const locale_t s_plain = ::newlocale(LC_NUMERIC_MASK, "C", nullptr);
    const locale_t before = ::uselocale(s_plain);
    char* textZ = nullptr;
    const int lengthL = ::vasprintf(&textZ, formatZ, arguments);
    ::uselocale(before);
    va_end(arguments);
    if (lengthL < 0) return;
    const std::unique_ptr<char, decltype(&std::free)> owner(textZ, &std::free);
    Log({textZ, static_cast<std::size_t>(lengthL)});
}

void LogIf(LogSwitch which, std::string_view text) {
    if (CLog::Get().IsOn(which)) Log(text);
}

OSErr LogStep(OSErr err, std::string_view step) {
    if (Failed(err))
        LogF("### Error %.*s: %d (%s)", static_cast<int>(step.size()), step.data(), Number(err),
             ErrorText(err).c_str());
    return err;
}

OSErr LogStep(OSErr err, std::string_view step, const std::filesystem::path& file) {
    if (Failed(err))
        LogF("### Error %.*s: %d (%s): <%s>", static_cast<int>(step.size()), step.data(), Number(err),
             ErrorText(err).c_str(), file.c_str());
    return err;
}
