#pragma once
#include <memory>

#include "Platform/CMainLoop.h"

/** The main loop of the desktop: calls are events posted to the application object, timers are driven by one QTimer.
    It works both when this interface pumps and when Qt runs its own loop (a modal dialog, QApplication::exec).
    Threads  Post and Wake from any; all else on the main thread. Lives between the making of the application object and
             its end.
    Errors   a proc that was never run is destroyed with the loop. */
class CMainLoop_Qt final : public CMainLoop {
public:
    CMainLoop_Qt();
    ~CMainLoop_Qt() override;
    CMainLoop_Qt(const CMainLoop_Qt&) = delete;
    CMainLoop_Qt& operator=(const CMainLoop_Qt&) = delete;

    void Post(Proc proc) override;
    void Wake() override;
    TimerID SetTimer(TimerID existing, std::uint32_t milliseconds, Proc proc) override;
    void KillTimer(TimerID timer) override;
    bool PumpOne(MessageKinds kinds) override;
    void Wait(double seconds, MessageKinds kinds = kMessage_All) override;
    [[nodiscard]] bool InputWaits() const override;
    void FlushInput() override;
    /** From the last key, mouse, wheel, touch or tablet event; since the start before the first one. */
    [[nodiscard]] double IdleSeconds() const override;

private:
    class Receiver;
    std::unique_ptr<Receiver> i_receiverP;
};
