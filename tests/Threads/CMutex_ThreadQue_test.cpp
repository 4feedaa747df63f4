#include "Threads/CMutex_ThreadQue.h"

#include "Threads/CMutex_ThreadQue_Alert.h"
#include "Threads/ThreadTest.h"

namespace {

constexpr QueTraits kQue_Test{"Test Que", false, false, false};
constexpr QueTraits kQue_Shown{"Shown Que", false, true, false};

class ThreadQueTest : public ThreadTest {
protected:
    CMutexT<std::string> i_done;   // what the elements did, in order
    CMutexT<std::vector<CT_QueElement>> i_open;

    void Say(const std::string& text) {
        i_done.With([&](std::string& all) { all += text; });
    }
    /** Says its name when it runs and its status when it is complete. */
    CT_QueElement Element(const std::string& name, OSErr err = noErr, long id = 0) {
        return CT_QueElement(
            [this, name, err](CT_QueElement& element) {
                if (err == queueNotDoneErr)   // kept before it is told of: whoever sees the name may finish it
                    i_open.With([&](std::vector<CT_QueElement>& open) { open.push_back(element); });
                Say(name);
                return err;
            },
            [this, name](CT_QueElement&, OSErr result) {
                Say(Failed(result) ? "(" + name + std::to_string(Number(result)) + ")" : "." + name);
                return result;
            },
            nullptr, id);
    }
    bool Says(const std::string& text) {
        return RunUntil([&] { return i_done.Get() == text; });
    }
    void FinishFirst(OSErr err = noErr) {
        CT_QueElement element = i_open.With([](std::vector<CT_QueElement>& open) {
            CT_QueElement first = open.front();
            open.erase(open.begin());
            return first;
        });
        element.Finish(err);
        element.Finish(err);   // twice does nothing
    }
};

TEST_F(ThreadQueTest, RunsInOrderAndAfterAQuitOnANewThread) {
    CMutex_ThreadQue que(kQue_Test);
    EXPECT_TRUE(que.IsFinished());
    ASSERT_EQ(que.AddVec({Element("a"), Element("b"), Element("c")}), noErr);
    EXPECT_TRUE(Says("a.ab.bc.c"));
    que.Quit(false);
    EXPECT_TRUE(RunUntil([&] { return que.IsFinished(); }));
    ASSERT_EQ(que.Add(Element("d")), noErr);
    EXPECT_TRUE(Says("a.ab.bc.cd.d"));
    const std::string log = LogText();
    EXPECT_NE(log.find("Spawning new Que: Test Que"), log.rfind("Spawning new Que: Test Que"));
    que.Quit(true);
    EXPECT_EQ(que.Add(Element("e")), abortErr);   // being deleted
}

TEST_F(ThreadQueTest, TheLimitHoldsBackUnlessAllowed) {
    CMutex_ThreadQue que(kQue_Test, 2);
    ASSERT_EQ(que.AddVec({Element("1", queueNotDoneErr, 1), Element("2", queueNotDoneErr, 2),
                          Element("3", queueNotDoneErr, 3), Element("4", queueNotDoneErr, 4)}),
              noErr);
    ASSERT_TRUE(Says("12"));
    EXPECT_EQ(que.Waiting(), 2U);
    EXPECT_EQ(que.Running(), 2);
    que.Allow(4, true);
    ASSERT_TRUE(Says("124"));
    FinishFirst();   // two run still: the third waits on
    EXPECT_EQ(que.Running(), 2);
    EXPECT_EQ(que.Waiting(), 1U);
    FinishFirst(eofErr);
    // The queue is woken before the completion is called: either may speak first.
    ASSERT_TRUE(RunUntil([&] {
        const std::string said = i_done.Get();
        return said == "124.1(2-39)3" || said == "124.13(2-39)";
    }));
    que.SetLimit(0);
    FinishFirst();
    FinishFirst();
    EXPECT_EQ(que.Running(), 0);
}

TEST_F(ThreadQueTest, AbortDropsWhatWaitsAndTakesTheNext) {
    CMutex_ThreadQue que(kQue_Test, 1);
    ASSERT_EQ(que.AddVec({Element("a", queueNotDoneErr), Element("b"), Element("c", noErr, 7), Element("d")}), noErr);
    ASSERT_TRUE(Says("a"));
    EXPECT_EQ(que.Remove(7), 1U);
    que.Abort();
    ASSERT_EQ(que.Add(Element("e")), noErr);   // takes the flag back: what was dropped stays so
    ASSERT_TRUE(Says("a(b-27)(d-27)"));
    FinishFirst();
    // The queue is woken before the completion is called: the end of a may be told at any place.
    EXPECT_TRUE(RunUntil([&] {
        std::string said = i_done.Get().substr(std::string_view("a(b-27)(d-27)").size());
        const auto a = said.find(".a");
        return a != std::string::npos && said.erase(a, 2) == "e.e";
    }));
}

TEST_F(ThreadQueTest, ElementsWithoutRoutines) {
    CMutex_ThreadQue que(kQue_Test);
    const auto told = [this](CT_QueElement&, OSErr err) {
        Say(std::to_string(Number(err)));
        return err;
    };
    ASSERT_EQ(que.Add(CT_QueElement({}, told)), noErr);
    ASSERT_TRUE(Says("-50"));
    ASSERT_EQ(que.Add(CT_QueElement([](CT_QueElement&) { return noErr; }, {})), noErr);
    EXPECT_TRUE(RunUntil([&] { return Logged("No Completion Routine: Parameter Error"); }));
    ASSERT_EQ(que.Add(CT_QueElement([](CT_QueElement&) -> OSErr { throw std::runtime_error("x"); }, told)), noErr);
    EXPECT_TRUE(Says("-50-27"));
}

TEST_F(ThreadQueTest, AlertsWaitForTheApplication) {
    i_host.i_readyB = false;
    std::vector<std::thread> threads;
    std::atomic<int> shownL{0};
    std::atomic<bool> wrongB{false};
    CMutex_ThreadQue_Alert que;
    for (int t = 0; t < 10; ++t)
        threads.emplace_back([&] {
            EXPECT_EQ(que.Add(CT_QueElement(
                          [&](CT_QueElement&) {
                              if (!IsLoopThread() || !i_host.i_readyB) wrongB = true;
                              return ++shownL, noErr;
                          },
                          [](CT_QueElement&, OSErr err) { return err; })),
                      noErr);
        });
    for (std::thread& thread : threads) thread.join();
    for (int n = 0; n < 20; ++n) i_host.RunLoopPass();
    EXPECT_EQ(shownL, 0);
    i_host.i_readyB = true;
    que.WakeUp();
    EXPECT_TRUE(RunUntil([&] { return shownL == 10; }));
    EXPECT_FALSE(wrongB);
}

TEST_F(ThreadQueTest, QuitWhileAnAlertWaitsForTheApplication) {
    i_host.i_readyB = false;
    CMutex_ThreadQue_Alert que;
    ASSERT_EQ(que.Add(Element("early")), noErr);
    while (que.Running() == 0) std::this_thread::yield();
    que.Quit(true);
    EXPECT_EQ(i_done.Get(), "(early-27)");
}

TEST_F(ThreadQueTest, DeletedWhileItsElementsRun) {
    for (int round = 0; round < 20; ++round) {
        std::atomic<int> ranL{0}, completedL{0};
        constexpr int kElements = 12;
        {
            CMutex_ThreadQue que(round % 2 ? kQue_Test : kQue_DiscEvent);
            for (int n = 0; n < kElements; ++n)
                EXPECT_EQ(que.Add(CT_QueElement(
                              [&](CT_QueElement&) {
                                  std::this_thread::yield();
                                  return ++ranL, noErr;
                              },
                              [&](CT_QueElement&, OSErr err) { return ++completedL, err; })),
                          noErr);
            for (int n = 0; n < round; ++n) i_host.RunLoopPass();
        }
        EXPECT_EQ(completedL, kElements);   // each told once, run or not
        EXPECT_LE(ranL, kElements);
    }
}

TEST_F(ThreadQueTest, AnElementThatFinishesAfterItsQueueHasGone) {
    {
        CMutex_ThreadQue que(kQue_Test);
        ASSERT_EQ(que.Add(Element("late", queueNotDoneErr)), noErr);
        ASSERT_TRUE(Says("late"));
    }
    FinishFirst();
    EXPECT_EQ(i_done.Get(), "late.late");
}

TEST_F(ThreadQueTest, AddsQuitsAndFinishesFromEverywhere) {
    auto queP = std::make_unique<CMutex_ThreadQue>(kQue_Test, 3);
    std::atomic<int> addedL{0}, completedL{0}, overL{0};
    for (int t = 0; t < 4; ++t)
        CThreadManager::Fork(
            ForkKind::kPreemptive,
            [&, t](void*) {
                for (int n = 0; n < 100; ++n) {
                    const OSErr err =
                        queP->Add(CT_QueElement([n](CT_QueElement&) { return n % 2 ? eofErr : noErr; },
                                                [&](CT_QueElement&, OSErr e) { return ++completedL, e; }));
                    if (!Failed(err)) ++addedL;
                    if (t == 0 && n % 10 == 0) queP->Quit(false);
                    if (t == 1 && n % 10 == 0) queP->Abort();
                    if (t == 2) std::this_thread::yield();
                }
                return ++overL, noErr;
            },
            {}, nullptr, "adder");
    EXPECT_TRUE(RunUntil([&] { return overL == 4; }));
    queP.reset();
    EXPECT_EQ(addedL, 400);
    EXPECT_EQ(completedL, addedL);
}

TEST_F(ThreadQueTest, TheOwnerIsToldOnceWhenAllIsDone) {
    auto queP = std::make_unique<CMutex_ThreadQue>(kQue_Test);
    std::atomic<int> toldL{0};
    queP->SetAutoDispose([&](CMutex_ThreadQue* doneP) {
        EXPECT_EQ(doneP, queP.get());
        ++toldL;
        i_host.i_loop.Post([&] { queP.reset(); });
    });
    ASSERT_EQ(queP->Add(Element("a")), noErr);
    EXPECT_TRUE(RunUntil([&] { return queP == nullptr; }));
    EXPECT_EQ(toldL, 1);
}

TEST_F(ThreadQueTest, ATaskIsOnViewWhileThereIsWork) {
    CMutex_ThreadQue que(kQue_Shown, 1);
    ASSERT_EQ(que.AddVec({Element("a", queueNotDoneErr), Element("b", queueNotDoneErr)}), noErr);
    ASSERT_TRUE(Says("a"));
    FinishFirst();
    // The queue is woken before the completion is called: either may speak first.
    ASSERT_TRUE(RunUntil([&] { return i_done.Get() == "ab.a" || i_done.Get() == "a.ab"; }));
    FinishFirst();
    EXPECT_TRUE(RunUntil([&] { return i_host.i_tasks.Get().ends_with("gone\n"); }));
    const std::string shown = i_host.i_tasks.Get();
    EXPECT_NE(shown.find("Shown Que: 0 / 2\n"), std::string::npos) << shown;
    EXPECT_NE(shown.find("Shown Que: 1 / 2\n"), std::string::npos) << shown;
    // Cancelled by the user, at the refresh of 0.25 s: what waits is dropped.
    ASSERT_EQ(que.AddVec({Element("c", queueNotDoneErr), Element("d")}), noErr);
    ASSERT_TRUE(RunUntil([&] { return que.Running() == 1; }));
    i_host.i_cancelP->Cancel();
    EXPECT_TRUE(RunUntil([&] { return i_done.Get().ends_with("(d-27)"); }));
}

}   // namespace
