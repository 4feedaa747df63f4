#include "App/CNotices.h"

#include <gtest/gtest.h>
#include <algorithm>

#include "Platform/ScriptedClock.h"

namespace {

TEST(Notices, EqualOnesAreCountedTheEldestGoesAndOffersEnd) {
    ScriptedClock clock;
    int toldL = 0, takenL = 0;
    CNotices notices([&] { ++toldL; });
    const NoticeID first = notices.Add("full", "/a");
    notices.Add("full", "/b");
    notices.SetRead(first);
    notices.Add("full", "/a");   // unread again, and the latest
    EXPECT_EQ(toldL, 4);
    ASSERT_EQ(notices.All().size(), 2U);
    EXPECT_EQ(notices.All().back().countL, 2);
    EXPECT_FALSE(notices.All().back().readB);

    const auto offer = [&](double untilT) {
        return notices.Offer({"Go Back", [&] { ++takenL; }}, CClock::Get().SteadyT() + untilT);
    };
    const NoticeID taken = offer(30), late = offer(30), withdrawn = offer(60);
    notices.Act(taken);
    notices.Act(taken);
    EXPECT_EQ(takenL, 1);
    notices.SetAllRead();   // an offer is no news
    EXPECT_FALSE(notices.All().back().readB);
    clock.Advance(30);
    notices.Act(late);
    notices.Withdraw(withdrawn);
    notices.Act(withdrawn);
    EXPECT_EQ(takenL, 1);
    ASSERT_EQ(notices.All().size(), 2U);   // what was offered says nothing any more
    EXPECT_TRUE(std::ranges::all_of(notices.All(), &Notice::readB));

    const NoticeID lasting = notices.Add("damaged", "/c", {"Reveal", [&] { ++takenL; }});
    clock.Advance(7200);
    notices.Withdraw(lasting);   // it is no offer
    notices.Act(lasting);
    notices.Act(lasting);
    EXPECT_EQ(takenL, 3);
    EXPECT_TRUE(notices.All().back().readB);

    for (std::size_t n = 0; n < CNotices::kMost; ++n) notices.Add("fault", std::to_string(n));
    EXPECT_EQ(notices.All().size(), CNotices::kMost);
    EXPECT_EQ(notices.All().front().detail, "0");
    notices.SetRead(notices.All()[5].id);
    notices.Add("fault", "new");   // what was read goes before what was not
    EXPECT_EQ(notices.All().front().detail, "0");
    EXPECT_EQ(notices.All()[5].detail, "6");
}

}   // namespace
