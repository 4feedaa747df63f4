#pragma once
#include <chrono>

#include "Platform/CMainLoop_Plain.h"
#include "Threads/CThreadHost.h"

/** The least that the thread layer wants of an application. */
class BenchHost final : public CThreadHost {
public:
    BenchHost() { Install(this); }
    ~BenchHost() override { Install(nullptr); }
    CMainLoop& MainLoop() override { return i_loop; }
    bool HasMainWindow() const override { return true; }
    bool IsAppReady() const override { return true; }

private:
    CMainLoop_Plain i_loop;
};

template <class Work>
double Milliseconds(Work&& work) {
    const auto began = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - began).count();
}
