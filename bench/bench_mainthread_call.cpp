// A main-thread call from a worker and back, with the plain loop and with Qt's: the median of many, in microseconds.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <QtWidgets/QApplication>
#include <string>
#include <vector>

#include "Core/CMainThreadProc.h"
#include "Core/CThreadHost.h"
#include "Core/CThreadManager.h"
#include "Platform/CMainLoop_Plain.h"
#include "Shell/CMainLoop_Qt.h"

namespace {

class BenchHost final : public CThreadHost {
public:
    explicit BenchHost(CMainLoop& loop) : i_loop(loop) { Install(this); }
    ~BenchHost() override { Install(nullptr); }
    CMainLoop& MainLoop() override { return i_loop; }
    bool HasMainWindow() const override { return true; }
    bool IsAppReady() const override { return true; }

private:
    CMainLoop& i_loop;
};

class MT_Nothing final : public CMainThreadProc {
public:
    MT_Nothing() : CMainThreadProc("nothing", StackHeld::kYes) {}

protected:
    OSErr Operate() override { return noErr; }
};

using Clock = std::chrono::steady_clock;

/** Microseconds of each of `callsL` calls, sorted; made on a worker while this thread runs the run loop. */
std::vector<double> Measure(CMainLoop& loop, int callsL) {
    BenchHost host(loop);
    const CThreadManager manager;
    std::vector<double> times;
    bool doneB = false;
    const ForkID fork = CThreadManager::Fork(
        ForkKind::kPreemptive,
        [&](void*) {
            for (int n = 0; n < callsL; ++n) {
                const auto before = Clock::now();
                if (Failed(MT_Nothing().Call(CallMode::kWait))) return abortErr;
                times.push_back(std::chrono::duration<double, std::micro>(Clock::now() - before).count());
            }
            return noErr;
        },
        [&](void*, OSErr err) {   // on this thread
            doneB = true;
            return err;
        },
        nullptr, "bench worker");
    while (fork != 0 && !doneB) host.RunLoopPass();
    std::ranges::sort(times);
    return times;
}

void Print(const char* nameZ, const std::vector<double>& times) {
    if (times.empty()) return;
    std::printf("%-6s calls %zu  median %.1f us  99%% %.1f us  worst %.1f us\n", nameZ, times.size(),
                times[times.size() / 2], times[times.size() * 99 / 100], times.back());
}

}   // namespace

int main(int countL, char** argumentsZ) {
    const int callsL = countL > 1 ? std::clamp(std::atoi(argumentsZ[1]), 1, 10'000'000) : 20'000;
    {
        CMainLoop_Plain plain;
        Print("plain", Measure(plain, callsL));
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication app(countL, argumentsZ);
    CMainLoop_Qt qt;
    Print("qt", Measure(qt, callsL));
}
