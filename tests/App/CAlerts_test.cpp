#include "App/CAlerts.h"

#include <gtest/gtest.h>
#include <deque>
#include <filesystem>
#include <iostream>
#include <thread>

#include "App/AppTest.h"
#include "Core/Assertions.h"
#include "Platform/CUserInterface_Plain.h"
#include "Threads/CMainThreadProc.h"

namespace {

TEST_F(AppTest, AlertsOfTenThreadsWaitForTheApplicationToBeReady) {
    // The alerts are raised while the start-up is under way: from within the progress of its stages.
    std::vector<std::jthread> threads;
    std::atomic<int> raisedL{0};
    class Ui final : public CUserInterface {
    public:
        explicit Ui(std::function<void()> atProgress) : i_atProgress(std::move(atProgress)) {}
        std::vector<std::string> alerts;
        void Alert(std::string_view message, std::string_view) override {
            EXPECT_TRUE(gApp->IsAppReady());
            alerts.emplace_back(message);
        }
        Answer Ask(const Question& question) override { return {question.safeIndex, false}; }
        std::unique_ptr<CProgressView> OpenProgress(std::string_view) override {
            if (i_atProgress) std::exchange(i_atProgress, {})();
            return std::make_unique<Quiet>();
        }
        std::optional<fs::path> ChooseFolder(std::string_view) override { return std::nullopt; }
        std::optional<std::size_t> PickFromList(std::string_view, std::span<const std::string>) override {
            return std::nullopt;
        }
        bool OpenPage(std::string_view) override { return false; }
        void Beep() override {}

    private:
        class Quiet final : public CProgressView {
            void SetText(std::string_view) override {}
            void SetSteps(std::size_t, std::size_t) override {}
            void Redraw() override {}
        };
        std::function<void()> i_atProgress;
    };
    Ui ui([&] {
        for (int n = 0; n < 10; ++n)
            threads.emplace_back([&raisedL, n] {
                MessageAlert("from thread " + std::to_string(n));
                ++raisedL;
            });
        while (raisedL.load() < 10) std::this_thread::yield();   // no alert waits for the user
    });
    AppSetup setup{
        .loop = i_loop, .ui = ui, .windows = i_windows, .resources = MakeSetup().resources, .prefs = MakeSetup().prefs};
    CApp app(setup);
    EXPECT_TRUE(RunUntil(app, [&] { return ui.alerts.size() == 10; }));
}

TEST_F(AppTest, AlertsByTheirRules) {
    CApp app(MakeSetup());
    i_ui.mutedB = true;
    MessageAlert("unheard");
    EXPECT_EQ(i_ui.beepsL, 1);
    EXPECT_TRUE(i_ui.alerts.empty());
    i_ui.mutedB = false;

    std::optional<std::size_t> picked;
    Question question;
    question.text = "prepared";
    question.buttons = {"No", "Yes"};
    i_ui.answers = {Answer{1, false}};
    std::jthread([&] {
        CAlerts::Queue(question, [&](const Answer& answer) { picked = answer.buttonIndex; });
        MessageAlert("please send the log file");
    }).join();
    EXPECT_TRUE(RunUntil(app, [&] { return picked.has_value() && !i_ui.alerts.empty(); }));
    EXPECT_EQ(picked, 1U);
    EXPECT_NE(LogText().find("Queing dialog message: prepared"), std::string::npos);
    EXPECT_TRUE(RunUntil(app, [&] { return fs::exists(i_folder / "Vopla Log for report.txt"); }));
}

TEST_F(AppTest, AFatalAlertOfAThreadIsShownBeforeTheEnd) {
    EXPECT_EXIT(
        {
            CUserInterface_Plain ui([](std::string_view line) { std::cerr << line << std::endl; });
            CApp app({.loop = i_loop,
                      .ui = ui,
                      .windows = i_windows,
                      .resources = MakeSetup().resources,
                      .prefs = MakeSetup().prefs});
            const std::jthread thread([] { FatalAlert("no way on"); });
            for (;;) app.RunLoopPass();
        },
        testing::ExitedWithCode(1), "alert: no way on");
}

TEST_F(AppTest, AFailedAssertionIsShownOnceAndTheShowGoesOn) {
    CApp app(MakeSetup());
    EXPECT_FALSE(Assert(1 + 1 == 3));
    ASSERT_EQ(i_ui.alerts.size(), 1U);
    EXPECT_TRUE(i_ui.alerts.front().starts_with("Assert Fail: 1 + 1 == 3, in file: '")) << i_ui.alerts.front();
    app.PrepareToQuit();
    EXPECT_FALSE(Assert(false));
    EXPECT_EQ(i_ui.alerts.size(), 1U);   // while quitting it is only logged
}

}   // namespace
