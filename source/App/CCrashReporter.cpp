#include "App/CCrashReporter.h"

#include "Files/FSError.h"

#include <execinfo.h>
#include <fcntl.h>
#include <unistd.h>
#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

namespace {

constexpr std::array kCrash_Signals{SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT};
constexpr std::size_t kCrash_StackBytes = 64 * 1024;
constexpr const char* kLog_QuitWords = "Quit Successful";
constexpr const char* kLog_HeadlineWords = "-------------------- New Vopla";

// Written before the handlers are installed, read inside them: nothing there may allocate.
std::array<char, 4096> s_crashFileZ{};

void WriteText(int handle, const char* textZ) {
    const ssize_t ignored = ::write(handle, textZ, std::strlen(textZ));   // nothing is left to do about a failure
    static_cast<void>(ignored);
}

void OnCrash(int signalL) {
    std::array<void*, 64> frames{};
    const int countL = ::backtrace(frames.data(), static_cast<int>(frames.size()));
    const int handle = ::open(s_crashFileZ.data(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    for (const int out : {handle, STDERR_FILENO}) {
        if (out < 0) continue;
        WriteText(out, "Vopla crashed: ");
        WriteText(out, ::sigabbrev_np(signalL));
        WriteText(out, "\n");
        ::backtrace_symbols_fd(frames.data(), countL, out);
    }
    ::raise(signalL);   // SA_RESETHAND: now the system's own action, with its core file
}

}   // namespace

CCrashReporter::CCrashReporter(const std::filesystem::path& folder) {
    std::error_code ignored;   // a crash then reports on the error stream alone
    std::filesystem::create_directories(folder, ignored);
    const std::string file = (folder / ("Vopla Crash " + std::to_string(::getpid()) + ".txt")).string();
    if (file.size() >= s_crashFileZ.size()) return;
    std::strcpy(s_crashFileZ.data(), file.c_str());

    std::array<void*, 1> once{};
    ::backtrace(once.data(), 1);   // loads the unwinder now, since loading allocates

    struct sigaction action {};
    action.sa_handler = &OnCrash;
    action.sa_flags = static_cast<int>(SA_RESETHAND | SA_ONSTACK);
    for (const int signalL : kCrash_Signals) ::sigaction(signalL, &action, nullptr);
}

CCrashReporter::~CCrashReporter() {
    for (const int signalL : kCrash_Signals) std::signal(signalL, SIG_DFL);
}

OSErr CCrashReporter::KeepLog(const std::filesystem::path& logFile) {
    std::error_code err;
    std::filesystem::copy_file(logFile, logFile.parent_path() / "Vopla Log for report.txt",
                               std::filesystem::copy_options::overwrite_existing, err);
    return MapErrno(err.value());
}

bool CCrashReporter::LastQuitWasClean(const std::filesystem::path& logFile) {
    constexpr std::streamoff kTailBytes = 256 * 1024;
    std::ifstream in(logFile, std::ios::binary | std::ios::ate);
    if (!in) return true;
    const std::streamoff size = in.tellg();
    in.seekg(std::max<std::streamoff>(0, size - kTailBytes));
    std::string tail(static_cast<std::size_t>(std::min(size, kTailBytes)), '\0');
    in.read(tail.data(), static_cast<std::streamsize>(tail.size()));
    const std::size_t quit = tail.rfind(kLog_QuitWords);
    const std::size_t headline = tail.rfind(kLog_HeadlineWords);
    if (headline == std::string::npos) return quit != std::string::npos || size < kTailBytes;
    return quit != std::string::npos && quit > headline;
}

CScopedSignalStack::CScopedSignalStack() : i_stackP(std::malloc(kCrash_StackBytes)) {
    if (i_stackP == nullptr) return;
    stack_t stack{};
    stack.ss_sp = i_stackP;
    stack.ss_size = kCrash_StackBytes;
    ::sigaltstack(&stack, nullptr);
}

CScopedSignalStack::~CScopedSignalStack() {
    stack_t off{};
    off.ss_flags = SS_DISABLE;
    ::sigaltstack(&off, nullptr);
    std::free(i_stackP);
}
