#include "Library/SourceType.h"

#include <gtest/gtest.h>

TEST(SourceType, WhatIsTrueOfEachKind) {
    // One letter for each question that is answered with yes: Singer, Cd, sTore, Rotation, Modifyable, saVeable,
    // partOfVenue, sourcesEntry.
    const struct {
        int type;
        const char* title;
        const char* yes;
    } cases[] = {
        {1, "Library", "VE"},
        {2, "CD-ROM", "CVE"},
        {3, "Playlist", "MVE"},
        {4, "Rotation", "ROE"},
        {5, "", "OE"},
        {6, "KJ Rotation", "ROE"},
        {7, "Tonight", "SMVO"},
        {8, "Favorites", "SMVO"},
        {9, "History", "SMVO"},
        {14, "", "SMVO"},
        {15, "", "SMVO"},
        {16, "Source", ""},
        {17, "Music Stores", "E"},
        {18, "", "TV"},
        {28, "", "TV"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.type);
        const auto type = static_cast<SourceType>(c.type);
        std::string yes;
        if (IsSingerList(type)) yes += 'S';
        if (Is_CD_PlayList(type)) yes += 'C';
        if (Is_MusicStore_PlayList(type)) yes += 'T';
        if (IsRotation(type)) yes += 'R';
        if (IsModifyable(type)) yes += 'M';
        if (IsSaveable(type)) yes += 'V';
        if (IsPartOfVenue(type)) yes += 'O';
        if (IsSourcesEntry(type)) yes += 'E';
        EXPECT_EQ(yes, c.yes);
        EXPECT_STREQ(GetSourceName(type), c.title);
        EXPECT_TRUE(IsSourceType(c.type));
    }
    for (const int number : {-1, 0, 10, 11, 12, 13, 29, 65536 + 1}) EXPECT_FALSE(IsSourceType(number)) << number;
    EXPECT_EQ(DefaultSortKey(kSourceDB_LIBRARY), "soID"_key);
    EXPECT_EQ(DefaultSortKey(kSourceDB_VENUE), "SNGR"_key);
    EXPECT_EQ(DefaultSortKey(kSourceDB_SINGER_PL_TONIGHT), "stIx"_key);
}

TEST(SourceType, ThePlacesOfTheSources) {
    int last = -1;
    for (const int type : {1, 4, 6, 17, 5, 2, 3, 14, 7, 8, 9, 15}) {
        const auto place = static_cast<int>(SourcePlace(static_cast<SourceType>(type)));
        EXPECT_GT(place, last) << type;
        last = place;
    }
}
