#include "Meta/MetaKey.h"

#include <gtest/gtest.h>

TEST(MetaKey, TheFirstCharacterIsTheHighestByte) {
    EXPECT_EQ(static_cast<std::uint32_t>(CM_Key_SONG_ID), 0x736F4944U);
    EXPECT_EQ(MetaKeyText("bpm "_key), "bpm ");
}
