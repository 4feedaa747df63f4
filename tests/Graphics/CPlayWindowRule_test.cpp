#include "Graphics/CPlayWindowRule.h"

#include <gtest/gtest.h>

namespace {
struct Window final : CPlayWindow {
    bool IsFullScreen() const override { return fullB; }
    bool IsVisible() const override { return visibleB; }
    void SetFullScreen(bool onB) override { done += onB ? "full " : "normal ", fullB = onB; }
    void SetAlwaysOnTop(bool onB) override { done += onB ? "top " : "untop "; }
    void ShowAndSelect() override { done += "show ", visibleB = true; }
    void Hide() override { done += "hide ", visibleB = false; }
    bool fullB = false, visibleB = true;
    std::string done;
};
constexpr bool kYes = true, kNo = false;
}   // namespace

TEST(CPlayWindowRule, FollowsThePreferences) {
    struct Case {
        bool autoFull, front, hide, top;
        PlayMode mode;
        bool full, visible;
        const char* wanted;
    };
    constexpr Case kCases[] = {
        // Full screen by itself.
        {kYes, kNo, kNo, kNo, PlayMode::kPlay, kNo, kYes, "full "},
        {kYes, kNo, kNo, kNo, PlayMode::kPlay, kYes, kYes, ""},
        {kYes, kNo, kNo, kNo, PlayMode::kPlay, kNo, kNo, "full show "},
        {kYes, kYes, kNo, kNo, PlayMode::kPlay, kYes, kYes, ""},
        {kYes, kNo, kYes, kNo, PlayMode::kPlay, kYes, kNo, "show "},
        {kYes, kYes, kNo, kNo, PlayMode::kPlay, kNo, kYes, "full show "},
        {kYes, kYes, kNo, kYes, PlayMode::kPause, kYes, kYes, ""},
        {kYes, kYes, kNo, kNo, PlayMode::kStop, kYes, kYes, "normal "},
        {kYes, kYes, kYes, kNo, PlayMode::kPause, kYes, kYes, "hide normal "},
        {kYes, kYes, kYes, kNo, PlayMode::kPause, kNo, kYes, ""},
        // Left alone but for its place in front.
        {kNo, kYes, kNo, kNo, PlayMode::kPlay, kNo, kYes, "untop "},
        {kNo, kYes, kNo, kYes, PlayMode::kPlay, kNo, kNo, "top show "},
        {kNo, kNo, kNo, kNo, PlayMode::kPlay, kNo, kNo, "untop "},
        {kNo, kYes, kYes, kNo, PlayMode::kPause, kNo, kYes, "untop hide normal "},
        {kNo, kYes, kYes, kNo, PlayMode::kPause, kNo, kNo, "untop "},
        {kNo, kYes, kNo, kNo, PlayMode::kPause, kYes, kYes, "untop "},
    };
    for (const Case& c : kCases) {
        Window window;
        window.fullB = c.full;
        window.visibleB = c.visible;
        CPlayWindowRule{c.autoFull, c.front, c.hide, c.top}.Apply(c.mode, window);
        EXPECT_EQ(window.done, c.wanted) << &c - kCases;
    }
}
