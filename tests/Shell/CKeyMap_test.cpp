#include "Shell/CKeyMap.h"

#include <gtest/gtest.h>

#include "Shell/XActions.h"
#include "Widgets/QtApp.h"

namespace {

using Keys = CKeyMap::Keys;

TEST(CKeyMap, EveryCommandStandsInItsPlaceUnderAnIdOfItsOwn) {
    std::set<std::string_view> ids;
    for (std::size_t n = 0; n < CommandTable().size(); ++n) {
        EXPECT_EQ(static_cast<std::size_t>(CommandTable()[n].command), n);
        EXPECT_TRUE(ids.insert(CommandTable()[n].id).second) << CommandTable()[n].id;
    }
    EXPECT_EQ(CommandTable().size(), kCommand_Count);
}

TEST(CKeyMap, FactoryKeysAreKeysAndNotInConflict) {
    const CKeyMap map;
    for (const CommandRow& row : CommandTable()) {
        SCOPED_TRACE(std::string(row.id));
        const auto wordsL = QString::fromUtf8(row.keys.data(), static_cast<qsizetype>(row.keys.size()))
                                .split(' ', Qt::SkipEmptyParts)
                                .size();
        EXPECT_EQ(map.KeysOf(row.command).size(), wordsL);   // each name was understood
        EXPECT_EQ(map.ConflictsOf(row.command), std::vector<Command>());
        const bool showB = IsOfShow(row) && row.scope == CommandScope::kEverywhere;
        if (showB && wordsL > 0) {   // the first stands in the menu: it works there
            EXPECT_FALSE(IsTypedOutsideVideo(row, map.KeysOf(row.command).front()));
        }
    }
    EXPECT_EQ(map.KeysOf(Command::kSlipSongEarlier), (Keys{QKeySequence("Alt+PgUp"), QKeySequence(Qt::Key_Comma)}));
    EXPECT_EQ(map.KeysOf(Command::kPitchUp),
              (Keys{QKeySequence("Ctrl+Shift+Up"), QKeySequence(Qt::Key_Plus), QKeySequence(Qt::Key_Equal)}));
}

TEST(CKeyMap, ConflictsAreSeenFromBothSidesWhereBothCouldBeMeant) {
    CKeyMap map;
    map.SetKeys(Command::kStop, {QKeySequence(Qt::Key_M)});
    EXPECT_EQ(map.ConflictsOf(Command::kStop), std::vector{Command::kMute});
    EXPECT_EQ(map.ConflictsOf(Command::kMute), std::vector{Command::kStop});
    // Return is a key of the table and of the column of lists: only one has the focus.
    EXPECT_EQ(map.ConflictsOf(Command::kPlaySelected), std::vector<Command>());
    // A key of everywhere meets both.
    EXPECT_EQ(map.ConflictsOf(Command::kNext, QKeySequence(Qt::Key_Return)),
              (std::vector{Command::kPlaySelected, Command::kOpenList}));
    map.Reset(Command::kStop);
    EXPECT_EQ(map.ConflictsOf(Command::kMute), std::vector<Command>());
}

TEST(CKeyMap, KeepsOnlyWhatTheUserChangedAndReadsItBack) {
    CKeyMap map;
    EXPECT_TRUE(map.ToDictionary().Empty());
    const Keys odd = {QKeySequence("Ctrl+Alt++"), QKeySequence(Qt::Key_Space), QKeySequence(Qt::Key_Comma),
                      QKeySequence("Meta+F5")};
    map.SetKeys(Command::kStop, odd);
    map.SetKeys(Command::kPlayPause, {});
    const CCFDictionary kept = map.ToDictionary();
    EXPECT_EQ(kept.Size(), 2U);
    CKeyMap again;
    again.SetKeys(Command::kMute, {});   // forgotten: the preferences say nothing of it
    again.FromDictionary(kept);
    EXPECT_EQ(again.KeysOf(Command::kStop), odd);
    EXPECT_EQ(again.KeysOf(Command::kPlayPause), Keys());
    EXPECT_EQ(again.KeysOf(Command::kMute), CKeyMap::FactoryKeys(Command::kMute));
}

TEST(CKeyMap, PassesOverWhatAPersonWroteWrong) {
    CKeyMap map;
    map.FromDictionary({{"stop", CCFValue("NoSuchKey Ctrl+J")}, {"mute", CCFValue(5)}, {"fly", CCFValue("F9")}});
    EXPECT_EQ(map.KeysOf(Command::kStop), Keys{QKeySequence("Ctrl+J")});
    EXPECT_TRUE(map.IsFactory(Command::kMute));
}

}   // namespace
