#include "Core/CWatchers.h"

#include <gtest/gtest.h>
#include <functional>
#include <string>

namespace {

TEST(CWatchers, ComeAndGoWhileTheyAreTold) {
    struct Watcher {
        std::string name;
        std::function<void()> work = {};
    };
    std::string told;
    auto listP = std::make_unique<CWatchers<Watcher>>();
    const auto tell = [&] {
        told.clear();
        listP->Tell([&](Watcher& watcher) {
            told += watcher.name;
            if (watcher.work) std::exchange(watcher.work, {})();
        });
        return told;
    };
    Watcher a{"a"}, d{"d"};
    auto bP = std::make_unique<Watcher>(Watcher{"b"});
    auto cP = std::make_unique<Watcher>(Watcher{"c"});
    for (Watcher* const watcherP : {&a, bP.get(), cP.get()}) listP->Add(*watcherP);
    a.work = [&] {   // one goes and is destroyed, one comes, and all are told in the middle of it
        listP->Remove(*bP);
        bP.reset();
        listP->Add(d);
        EXPECT_EQ(tell(), "acd");
        told = "a";
    };
    EXPECT_EQ(tell(), "ac");
    cP->work = [&] {   // itself
        listP->Remove(*cP);
        cP.reset();
    };
    EXPECT_EQ(tell(), "acd");
    a.work = [&] { listP.reset(); };
    EXPECT_EQ(tell(), "a");
}

}   // namespace
