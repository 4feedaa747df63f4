#include "App/CTaskList.h"

#include <thread>

#include "Threads/ThreadTest.h"

namespace {

/** A loop that counts what is told. */
class TaskListTest : public ThreadTest {
protected:
    std::unique_ptr<CTaskView> Open(std::string_view name) { return i_list.Open(i_host.i_loop, name); }
    /** How many calls wait for the main thread. */
    long Told() {
        long toldL = 0;
        while (i_host.i_loop.PumpOne(static_cast<MessageKinds>(MessageKind::kCall))) ++toldL;
        return toldL;
    }
    CTaskList i_list;
};

TEST_F(TaskListTest, ALineLivesAsLongAsItsViewAndIsToldOnceUntilItIsLookedAt) {
    EXPECT_TRUE(i_list.Rows().empty());
    auto one = Open("one");
    auto two = Open("two");
    EXPECT_EQ(Told(), 1);
    one->SetSteps(3, 10);
    one->SetText("at work");
    EXPECT_EQ(Told(), 0);   // nobody has looked yet
    auto rows = i_list.Rows();
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[0].name, "one");
    EXPECT_EQ(rows[0].text, "at work");
    EXPECT_EQ(rows[0].doneL, 3);
    EXPECT_EQ(rows[0].totalL, 10);
    EXPECT_EQ(rows[1].name, "two");
    std::thread([&] { two->SetSteps(20, 10); }).join();   // more than there is, from another thread
    EXPECT_EQ(Told(), 1);
    EXPECT_EQ(i_list.Rows()[1].doneL, 10);
    one.reset();
    EXPECT_EQ(Told(), 1);
    rows = i_list.Rows();
    ASSERT_EQ(rows.size(), 1U);
    EXPECT_EQ(rows[0].name, "two");
}

TEST_F(TaskListTest, ACancelReachesOneTaskAndMayEndIt) {
    auto one = Open("one");
    auto two = Open("two");
    int hooksL = 0;
    one->OnCancel([&] {
        ++hooksL;
        one.reset();   // the list holds no lock now
    });
    const TaskID id = i_list.Rows().front().id;
    i_list.Cancel(id);
    i_list.Cancel(id);   // it has gone
    EXPECT_EQ(hooksL, 1);
    EXPECT_FALSE(two->IsCancelled());
    ASSERT_EQ(i_list.Rows().size(), 1U);
    i_list.Cancel(i_list.Rows().front().id);
    EXPECT_TRUE(two->IsCancelled());
    EXPECT_TRUE(i_list.Rows().front().cancelledB);   // it is still there, and ends when it can
}

}   // namespace
