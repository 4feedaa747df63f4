#include "Widgets/CMainLoop_Qt.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <deque>
#include <mutex>
#include <QtCore/QAbstractEventDispatcher>
#include <QtCore/QCoreApplication>
#include <QtCore/QEvent>
#include <QtCore/QTimer>
#include <QtGui/QGuiApplication>
#include <utility>

#include "Platform/CClock.h"
#include "Platform/CTimerTable.h"

// Qt leaves user messages in this queue when it is asked to exclude them, but tells nobody that they are there: the
// header of this class comes with its platform plug-ins only. The two are exported; nothing else of the class is named
// here.
class QWindowSystemInterface {
public:
    static int windowSystemEventsQueued();
    static bool nonUserInputEventsQueued();
};

namespace {

constexpr double kWait_MostT = 3600.0;
constexpr int kNudge_Milliseconds = 10;
/** How soon a timer that came up while held is looked at again, in seconds. */
constexpr double kHeld_T = 0.005;

bool IsInput(QEvent::Type type) {
    switch (type) {
        case QEvent::KeyPress:
        case QEvent::KeyRelease:
        case QEvent::ShortcutOverride:
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
        case QEvent::MouseButtonDblClick:
        case QEvent::MouseMove:
        case QEvent::Wheel:
        case QEvent::TouchBegin:
        case QEvent::TouchUpdate:
        case QEvent::TouchEnd:
        case QEvent::TabletPress:
        case QEvent::TabletMove:
        case QEvent::TabletRelease:
            return true;
        default:
            return false;
    }
}

}   // namespace

/** Where the calls and the timer arrive, and the filter that sees every event of the application. */
class CMainLoop_Qt::Receiver final : public QObject {
public:
    Receiver() : i_callType(static_cast<QEvent::Type>(QEvent::registerEventType())) {
        i_timer.setSingleShot(true);
        i_timer.setTimerType(Qt::PreciseTimer);
        connect(&i_timer, &QTimer::timeout, this, &Receiver::OnTimer);
        i_nudge.setSingleShot(true);
        i_nudge.setInterval(kNudge_Milliseconds);
        connect(&i_nudge, &QTimer::timeout, this, [this] {
            if (!Held()) QCoreApplication::eventDispatcher()->wakeUp();   // else the end of the dispatch starts it anew
        });
        i_retry.setSingleShot(true);
        i_retry.setInterval(kNudge_Milliseconds);
        connect(&i_retry, &QTimer::timeout, this, [this] {
            // Nearly always held, since the application waits in a dispatch: without a call it must come to rest.
            if (!HasCall()) return;
            if (Held()) return i_retry.start();
            const std::scoped_lock guard(i_lock);
            Announce();
            // An event posted before the dialog's loop began is not looked at by it until something wakes it.
            QCoreApplication::eventDispatcher()->wakeUp();
        });
        QCoreApplication::instance()->installEventFilter(this);
    }
    ~Receiver() override {
        for (std::deque<Proc> dying;; dying.clear()) {   // a dying proc may post again
            const std::scoped_lock guard(i_lock);
            dying.swap(i_calls);
            if (dying.empty()) break;
        }
    }

    void Post(Proc proc) {
        const std::scoped_lock guard(i_lock);
        i_calls.push_back(std::move(proc));
        Announce();
    }
    void Wake() {
        i_wokenB.store(true, std::memory_order_release);
        if (QAbstractEventDispatcher* const dispatcherP = QCoreApplication::eventDispatcher()) dispatcherP->wakeUp();
    }
    bool RunCall() {
        Proc proc;
        {
            const std::scoped_lock guard(i_lock);
            if (i_calls.empty()) return false;
            proc = std::move(i_calls.front());
            i_calls.pop_front();
        }
        if (proc) proc();
        return true;
    }
    bool HasCall() const {
        const std::scoped_lock guard(i_lock);
        return !i_calls.empty();
    }
    bool FireTimer() {
        const bool firedB = i_timers.FireOne();
        if (firedB) Arm();
        return firedB;
    }
    /** Sets the QTimer to the next of the table. */
    void Arm() { ArmFor(i_timers.NextT()); }
    void ArmFor(std::optional<double> timeT) {
        if (!timeT) return i_timer.stop();
        i_timer.start(static_cast<int>(std::ceil(std::min(*timeT, kWait_MostT) * 1000.0)));
    }

    /** Lets Qt handle its own messages; ours and, unless `flags` let them in, those of the user stay waiting. */
    bool Dispatch(QEventLoop::ProcessEventsFlags flags) {
        QAbstractEventDispatcher* const dispatcherP = QCoreApplication::eventDispatcher();
        if (dispatcherP == nullptr) return false;
        const bool outerB = std::exchange(i_heldB, true);
        const int outerLevelL = std::exchange(i_heldLevelL, thread()->loopLevel());
        if (HasCall()) i_retry.start();
        // A message of the user that was left in the queue is not looked at again by itself.
        const bool userB = !flags.testFlag(QEventLoop::ExcludeUserInputEvents);
        // X11: what a limited dispatch passes over lies in a queue of the platform's own, which is counted nowhere and
        // looked at only after a wake-up.
        const bool hiddenB = std::exchange(i_hiddenB, !userB && i_x11B) && userB;
        if (userB && (hiddenB || QWindowSystemInterface::windowSystemEventsQueued() > 0)) dispatcherP->wakeUp();
        const bool doneB = dispatcherP->processEvents(flags);
        i_heldB = outerB;
        i_heldLevelL = outerLevelL;
        const std::scoped_lock guard(i_lock);
        if (!userB && QWindowSystemInterface::windowSystemEventsQueued() > 0) i_nudge.start();
        if (!i_calls.empty()) Announce();   // the event that was held is gone: Qt's own loop needs another
        return doneB;
    }
    bool TakeWoken() { return i_wokenB.exchange(false, std::memory_order_acq_rel); }
    double IdleSeconds() const { return std::max(0.0, CClock::Get().SteadyT() - i_inputT); }
    void SetEating(bool eatB) { i_eatB = eatB; }
    CTimerTable& Timers() { return i_timers; }

    bool eventFilter(QObject* /*watchedP*/, QEvent* eventP) override {
        if (!IsInput(eventP->type())) return false;
        i_inputT = CClock::Get().SteadyT();
        if (i_eatB) eventP->accept();   // an override that is accepted starts no shortcut
        return i_eatB;
    }

protected:
    bool event(QEvent* eventP) override {
        if (eventP->type() != i_callType) return QObject::event(eventP);
        bool moreB = false;
        {
            const std::scoped_lock guard(i_lock);
            i_announcedB = false;
            moreB = !Held() && i_calls.size() > 1;
            if (moreB) Announce();   // one call an event, so that painting and input come in between
        }
        if (Held())
            i_retry.start();   // a dialog may open under this very dispatch, and the call must reach it
        else
            RunCall();
        return true;
    }

private:
    /** Calls and timers wait while Qt dispatches for us, but not in a loop that one of Qt's messages has opened below: a
        dialog must not stop the picture. */
    bool Held() const { return i_heldB && thread()->loopLevel() == i_heldLevelL; }
    void Announce() {   // under i_lock
        if (std::exchange(i_announcedB, true)) return;
        QCoreApplication::postEvent(this, new QEvent(i_callType));
    }
    void OnTimer() {
        if (Held()) return ArmFor(kHeld_T);   // Dispatch's caller arms again, unless a dialog opens first
        // The one that fires may run a loop of its own (a dialog): the next must be on its way before.
        const auto nextT = i_timers.NextT();
        ArmFor(nextT && *nextT <= 0 ? std::optional(0.001) : nextT);
        FireTimer();
    }

    const QEvent::Type i_callType;
    mutable std::mutex i_lock;   // guards the next two; never held while a proc runs or dies
    std::deque<Proc> i_calls;
    bool i_announcedB = false;   // an event is on its way
    std::atomic<bool> i_wokenB{false};
    CTimerTable i_timers;
    QTimer i_timer;
    QTimer i_retry;   // announces again what came while held
    QTimer i_nudge;   // makes Qt's own loop see the user's messages that a limited pump left behind
    double i_inputT = CClock::Get().SteadyT();
    const bool i_x11B = QGuiApplication::platformName() == "xcb";
    bool i_hiddenB = false;   // a dispatch without the user's messages may have passed over some
    bool i_heldB = false;     // Qt dispatches for us
    int i_heldLevelL = 0;     // the depth of Qt's loops when it began to
    bool i_eatB = false;      // input is being flushed
};

CMainLoop_Qt::CMainLoop_Qt() : i_receiverP(std::make_unique<Receiver>()) {}
CMainLoop_Qt::~CMainLoop_Qt() = default;

void CMainLoop_Qt::Post(Proc proc) { i_receiverP->Post(std::move(proc)); }
void CMainLoop_Qt::Wake() { i_receiverP->Wake(); }

CMainLoop::TimerID CMainLoop_Qt::SetTimer(TimerID existing, std::uint32_t milliseconds, Proc proc) {
    const TimerID timer = i_receiverP->Timers().Set(existing, milliseconds, std::move(proc));
    i_receiverP->Arm();
    return timer;
}

void CMainLoop_Qt::KillTimer(TimerID timer) {
    i_receiverP->Timers().Kill(timer);
    i_receiverP->Arm();
}

bool CMainLoop_Qt::PumpOne(MessageKinds kinds) {
    const auto asked = [kinds](MessageKind kind) { return (kinds & static_cast<unsigned>(kind)) != 0; };
    bool doneB = false;
    if (asked(MessageKind::kCall)) doneB |= i_receiverP->RunCall();
    if (asked(MessageKind::kTimer)) doneB |= i_receiverP->FireTimer();
    if (asked(MessageKind::kInput))
        doneB |= i_receiverP->Dispatch(QEventLoop::AllEvents);
    else if (asked(MessageKind::kPaint))
        doneB |= i_receiverP->Dispatch(QEventLoop::ExcludeUserInputEvents | QEventLoop::ExcludeSocketNotifiers);
    if (asked(MessageKind::kInput) || asked(MessageKind::kPaint)) i_receiverP->Arm();
    return doneB;
}

void CMainLoop_Qt::Wait(double seconds, MessageKinds kinds) {
    const auto asked = [kinds](MessageKind kind) { return (kinds & static_cast<unsigned>(kind)) != 0; };
    const double nextT = asked(MessageKind::kTimer) ? i_receiverP->Timers().NextT().value_or(kWait_MostT) : kWait_MostT;
    const double timeT = std::min({seconds, nextT, kWait_MostT});
    if (i_receiverP->TakeWoken() || timeT <= 0) return;
    if ((asked(MessageKind::kCall) && i_receiverP->HasCall()) || (asked(MessageKind::kInput) && InputWaits())) return;
    i_receiverP->ArmFor(timeT);
    i_receiverP->Dispatch(QEventLoop::ExcludeUserInputEvents | QEventLoop::WaitForMoreEvents);
    i_receiverP->Arm();
    i_receiverP->TakeWoken();
}

bool CMainLoop_Qt::InputWaits() const {
    // With other messages in front nobody can tell yet; the next pump handles those and leaves the user's alone.
    return QWindowSystemInterface::windowSystemEventsQueued() > 0 &&
           !QWindowSystemInterface::nonUserInputEventsQueued();
}

void CMainLoop_Qt::FlushInput() {
    i_receiverP->SetEating(true);
    i_receiverP->Dispatch(QEventLoop::AllEvents);
    i_receiverP->SetEating(false);
    i_receiverP->Arm();
}

double CMainLoop_Qt::IdleSeconds() const { return InputWaits() ? 0.0 : i_receiverP->IdleSeconds(); }
