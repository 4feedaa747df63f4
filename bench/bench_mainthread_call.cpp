// A main-thread call from a worker and back, with the plain loop and with the desktop's: median and 99th percentile.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <QApplication>
#include <thread>
#include <vector>

#include "Platform/CMainLoop_Plain.h"
#include "Threads/CMainThreadProc.h"
#include "Threads/CThreadHost.h"
#include "Threads/CThreadManager.h"
#include "Threads/ThreadInfo.h"
#include "Widgets/CMainLoop_Qt.h"

namespace {

constexpr std::size_t kCalls = 20000, kWarmUp = 500;

/** The least that the thread layer wants of an application. */
class Host final : public CThreadHost {
public:
    explicit Host(CMainLoop& loop) : i_loop(loop) { Install(this); }
    ~Host() override { Install(nullptr); }
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

void Measure(const char* nameZ, CMainLoop& loop) {
    const Host host(loop);
    TagThread(0, false);
    std::vector<double> microseconds;
    microseconds.reserve(kCalls);
    std::atomic<bool> doneB{false};
    std::jthread worker([&] {
        TagThread(NextThreadIndex(), true);
        for (std::size_t n = 0; n < kCalls + kWarmUp; ++n) {
            const auto began = std::chrono::steady_clock::now();
            MT_Nothing call;
            if (Failed(call.Call(CallMode::kWait))) break;
            const std::chrono::duration<double, std::micro> taken = std::chrono::steady_clock::now() - began;
            if (n >= kWarmUp) microseconds.push_back(taken.count());
        }
        doneB = true;
        loop.Wake();
    });
    while (!doneB) {
        loop.Wait(0.05);
        loop.PumpOne(kMessage_All);
    }
    worker.join();
    if (microseconds.size() != kCalls) {
        std::printf("%-6s a call failed\n", nameZ);
        return;
    }
    std::ranges::sort(microseconds);
    std::printf("%-6s median %6.1f us, 99 %% under %6.1f us, %zu calls\n", nameZ, microseconds[kCalls / 2],
                microseconds[kCalls * 99 / 100], kCalls);
}

}   // namespace

int main(int countL, char** wordsZ) {
    {
        CMainLoop_Plain loop;
        Measure("plain", loop);
    }
    const QApplication qt(countL, wordsZ);
    CMainLoop_Qt loop;
    Measure("Qt", loop);
    return 0;
}
