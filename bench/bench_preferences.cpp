// What a hundred changes of preferences cost the main thread of an application without windows, as a volume that is dragged
// makes them, and as changes that the library follows: bench_preferences, in the folder of the sources. Processor time of the
// main thread, beside that of as many passes of the run loop without a change.
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <functional>

#include "App/CApp.h"
#include "App/CAppWindows_None.h"
#include "Core/CLog.h"
#include "Platform/CFolders.h"
#include "Platform/CMainLoop_Plain.h"
#include "Platform/CUserInterface_Scripted.h"

namespace {

constexpr int kChanges = 100;

double ThreadMilliseconds() {
    timespec now{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

double Cost(CApp& app, const std::function<void(int n)>& change) {
    const double began = ThreadMilliseconds();
    for (int n = 0; n < kChanges; ++n) {
        change(n);
        app.MainLoop().Wake();
        app.RunLoopPass();
    }
    return ThreadMilliseconds() - began;
}

}   // namespace

int main() {
    std::string pattern = (std::filesystem::temp_directory_path() / "bench-prefs-XXXXXX").string();
    const std::filesystem::path root = ::mkdtemp(pattern.data());
    CFolders::SetRoot(root);
    CLog::Get().SetFile(root / "log.txt");
    {
        CMainLoop_Plain loop;
        CUserInterface_Scripted user;
        CAppWindows_None windows;
        CApp app({.loop = loop,
                  .ui = user,
                  .windows = windows,
                  .resources = std::filesystem::absolute("resources"),
                  .prefs = PrefsFilesFor(root / "config")});
        const double empty = Cost(app, [](int) {});
        const double volume = Cost(app, [&](int n) { app.Prefs().SetLong("Current Volume (0-100)", n); });
        const double library = Cost(app, [&](int n) { app.Prefs().SetLong("Number of cached songs", n); });
        std::printf("%d passes without a change: %.1f ms\n", kChanges, empty);
        std::printf("%d changes of the volume: %.1f ms\n", kChanges, volume);
        std::printf("%d changes that the library follows: %.1f ms\n", kChanges, library);
    }
    CFolders::SetRoot({});
    std::filesystem::remove_all(root);
}
