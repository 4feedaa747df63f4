#include "Widgets/CMainLoop_Qt.h"

#include <QtCore/QTimer>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QApplication>
#include <QtWidgets/QWidget>
#include <thread>

#include "Platform/MainLoopSuite.h"
#include "Widgets/QtApp.h"

// What a platform plug-in calls when a key comes from the window system; its header comes with the plug-ins only.
class QWindowSystemInterface {
public:
    struct DefaultDelivery {};
    template <class Delivery>
    static bool handleKeyEvent(QWindow* windowP, QEvent::Type type, int key, Qt::KeyboardModifiers modifiers,
                               const QString& text, bool autoRepeatB, ushort count);
};

namespace {

/** A window that hands its key presses on. */
class KeyWindow final : public QWidget {
public:
    std::vector<CMainLoop::Proc> i_works;

protected:
    void keyPressEvent(QKeyEvent* /*eventP*/) override {
        if (i_works.empty()) return;
        const CMainLoop::Proc work = i_works.front();
        i_works.erase(i_works.begin());
        work();
    }
};

struct QtForm {
    QApplication& i_app = App();
    CMainLoop_Qt i_loop;
    std::unique_ptr<KeyWindow> i_windowP;

    CMainLoop& Loop() { return i_loop; }
    void UserDoes(CMainLoop::Proc work) {
        if (!i_windowP) {
            i_windowP = std::make_unique<KeyWindow>();
            i_windowP->show();
            i_windowP->activateWindow();
            while (!i_windowP->isActiveWindow()) QApplication::processEvents();
        }
        i_windowP->i_works.push_back(std::move(work));
        QWindowSystemInterface::handleKeyEvent<QWindowSystemInterface::DefaultDelivery>(
            i_windowP->windowHandle(), QEvent::KeyPress, Qt::Key_A, Qt::NoModifier, "a", false, 1);
    }
};

/** Qt's own loop runs the same messages: a dialog that is open holds nothing up. */
TEST(CMainLoop_Qt, WorksInsideQtsOwnLoop) {
    App();
    CMainLoop_Qt loop;
    std::string done;
    int ticksL = 0;
    loop.SetTimer(0, 1, [&] { ++ticksL; });
    std::thread worker([&] {
        for (const char letter : std::string("abc")) loop.Post([&done, letter] { done += letter; });
        loop.Post([] { QApplication::quit(); });
    });
    QApplication::exec();
    worker.join();
    EXPECT_EQ(done, "abc");
    loop.SetTimer(0, 20, [] { QApplication::quit(); });
    QApplication::exec();
    EXPECT_GT(ticksL, 0);
}

/** A loop of Qt's inside a call, inside a pump: what was held while we dispatched comes through. */
TEST(CMainLoop_Qt, ADialogInsideAPumpedCallStillGetsCalls) {
    App();
    CMainLoop_Qt loop;
    std::string done;
    loop.Post([&] {
        done += '(';
        QEventLoop dialog;
        loop.Post([&] {
            done += 'i';
            dialog.quit();
        });
        dialog.exec();
        done += ')';
    });
    loop.PumpOne(kMessage_All);
    EXPECT_EQ(done, "(i)");
}

/** A dialog that one of Qt's own messages opens while our pump runs them: menus and buttons do so. */
TEST(CMainLoop_Qt, ADialogInsideASlotGetsCallsAndTimers) {
    App();
    CMainLoop_Qt loop;
    std::string done;
    int firedL = 0;
    const auto timer = loop.SetTimer(0, 20, [&] { ++firedL; });
    QTimer::singleShot(0, qApp, [&] {
        QEventLoop dialog;
        QTimer::singleShot(5000, &dialog, [&] {   // instead of hanging for ever
            done += "late";
            dialog.quit();
        });
        loop.Post([&] { done += 'c'; });
        loop.SetTimer(0, 100, [&] {
            if (firedL > 0) dialog.quit();
        });
        dialog.exec();
        done += ')';
    });
    loop.Post([&] { done += 'a'; });   // waits already when the slot opens its dialog
    for (int n = 0; n < 1000 && !done.ends_with(')'); ++n) {
        loop.Wait(0.01);
        loop.PumpOne(static_cast<MessageKinds>(MessageKind::kPaint) | static_cast<MessageKinds>(MessageKind::kInput));
    }
    loop.KillTimer(timer);
    EXPECT_EQ(done, "ac)");
    EXPECT_GT(firedL, 0);
}

/** A pump of ours inside a message of Qt's, after which Qt goes on. */
TEST(CMainLoop_Qt, APumpInsideQtsLoopLosesNoWakeUp) {
    App();
    CMainLoop_Qt loop;
    std::string done;
    QTimer::singleShot(0, qApp, [&] {
        loop.Post([&] { done += 'a'; });
        loop.Post([&] { done += 'b'; });
        loop.PumpOne(static_cast<MessageKinds>(MessageKind::kPaint));   // holds the calls' own event
        EXPECT_EQ(done, "");
        loop.Post([&] { QApplication::quit(); });
    });
    QApplication::exec();
    EXPECT_EQ(done, "ab");
}

/** A call that came while the application waited leaves nothing behind that wakes it over and over. */
TEST(CMainLoop_Qt, ALoopWithNothingToDoRests) {
    App();
    CMainLoop_Qt loop;
    bool calledB = false, overB = false;
    std::thread caller([&] { loop.Post([&] { calledB = true; }); });
    while (!calledB) {
        loop.Wait(1);
        loop.PumpOne(kMessage_All);
    }
    caller.join();
    (void)loop.SetTimer(CMainLoop::TimerID{}, 500, [&] { overB = true; });
    int wakesL = 0;
    for (; !overB; ++wakesL) {
        loop.Wait(10);
        while (loop.PumpOne(kMessage_All)) {
        }
    }
    EXPECT_LT(wakesL, 15);
}

/** A key that a limited pump left behind reaches Qt's own loop without another event to wake it. */
TEST(CMainLoop_Qt, InputLeftBehindReachesQtsOwnLoop) {
    QtForm form;
    bool doneB = false;
    form.UserDoes([&] {
        doneB = true;
        QApplication::quit();
    });
    for (int n = 0; n < 5; ++n) form.i_loop.PumpOne(kNoInput);
    form.i_loop.Wait(0.01, kNoInput);
    EXPECT_FALSE(doneB);
    QTimer::singleShot(5000, qApp, [] { QApplication::quit(); });
    QApplication::exec();
    EXPECT_TRUE(doneB);
}

}   // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Qt, MainLoopSuite, QtForm);
