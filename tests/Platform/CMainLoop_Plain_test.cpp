#include "Platform/CMainLoop_Plain.h"

#include "Platform/MainLoopSuite.h"

namespace {

struct PlainForm {
    CMainLoop& Loop() { return i_loop; }
    void UserDoes(CMainLoop::Proc work) { i_loop.PostInput(std::move(work)); }
    CMainLoop_Plain i_loop;
};

TEST(CMainLoop_Plain, CannotTellIdleTimeBeforeTheFirstInput) {
    CMainLoop_Plain loop;
    EXPECT_LT(loop.IdleSeconds(), 0);
    loop.PostInput({});
    EXPECT_GE(loop.IdleSeconds(), 0);
}

}   // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Plain, MainLoopSuite, PlainForm);
