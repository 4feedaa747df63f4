#include "Widgets/CGraphicsCard.h"

#include <gtest/gtest.h>

#include "Widgets/QtApp.h"

namespace {

/** A witness of this script: a driver of whatever kind. */
CGraphicsCard::Witness Shell(const char* scriptZ, int mostL = 30000) {
    return {.program = "/bin/sh", .words = {"-c", scriptZ}, .mostL = mostL};
}

TEST(CGraphicsCard, BelievesAnAnswerAndSurvivesEveryDriver) {
    App();
    const struct {
        const char* scriptZ;
        int mostL;
        bool drawsB;
    } kCases[] = {
        {"echo Some Card", 30000, true},
        {"echo llvmpipe", 30000, true},   // it was chosen
        {"exit 1", 30000, false},
        {"true", 30000, false},
        {"echo Some Card; kill -SEGV $$", 30000, false},
        {"echo Some Card; exec sleep 600", 50, false},
    };
    for (const auto& c : kCases) {
        CGraphicsCard card(Shell(c.scriptZ, c.mostL));
        EXPECT_FALSE(card.Draws()) << "nobody was asked";
        card.Ask(CGraphicsCard::kChoice_OPENGL);
        EXPECT_EQ(card.Draws(), c.drawsB) << c.scriptZ;
        EXPECT_EQ(card.Draws(), c.drawsB) << c.scriptZ;
    }
    CGraphicsCard gone({.program = "/no/such/program", .words = {}});
    gone.Ask(CGraphicsCard::kChoice_OPENGL);
    EXPECT_FALSE(gone.Draws());
    CGraphicsCard refused(Shell("echo Some Card"));
    refused.Ask(CGraphicsCard::kChoice_PROCESSOR);
    EXPECT_FALSE(refused.Draws());
    EXPECT_TRUE(CGraphicsCard::IsSoftware("llvmpipe (LLVM 15.0.6, 256 bits)"));
    EXPECT_FALSE(CGraphicsCard::IsSoftware("Mesa Intel(R) UHD Graphics 620 (KBL GT2)"));
}

}   // namespace
