#include "Meta/CMeta.h"

#include <algorithm>

#include "Meta/MetaTest.h"

namespace {

using Notes = std::vector<std::string>;
using Words = std::vector<std::string>;
class CMetaTest : public MetaTest {
protected:
    NotingMeta i_meta;
    /** "key=text" of all that is stored. */
    static std::string Shown(CMeta& meta) {
        std::vector<std::string> rows;
        for (const MetaEntry& entry : meta.AllStored())
            rows.push_back(MetaKeyText(entry.key) + "=" + meta.GetDisplayString(entry.key).UTF8());
        std::ranges::sort(rows);
        std::string text;
        for (const std::string& row : rows) text += (text.empty() ? "" : " ") + row;
        return text;
    }
};

// What a setter's text becomes: the stored state afterwards ("" when nothing is stored), from a meta with `before`.
constexpr struct {
    MetaKey key;
    const char* beforeZ;
    const char* textZ;
    bool changedB;
    const char* storedZ;
} kStringCases[] = {
    {"name"_key, "", "Yesterday", true, "name=Yesterday"},
    {"name"_key, "Yesterday", "Yesterday", false, "name=Yesterday"},
    {"name"_key, "Yesterday", "  Yester\u0001day \t", false, "name=Yesterday"},   // the same once normalised
    {"name"_key, "Yesterday", "--", true, ""},
    {"name"_key, "Yesterday", " -- ", true, ""},
    {"name"_key, "Yesterday", "", true, ""},
    {"name"_key, "Yesterday", " \n ", true, ""},
    {"name"_key, "", "--", false, ""},
    {"name"_key, "", "---", true, "name=---"},
    {"genr"_key, "", " Pop  Rock ", true, "genr= Pop  Rock "},   // no flag, no normalisation
    {"arts"_key, "", "The  Who", true, "arts=Who, The"},
    {"arts"_key, "", "The The", true, "arts=The, The"},
    {"albm"_key, "", "The Wall", true, "albm=The Wall"},
    {"trak"_key, "", "3/12", true, "trak=3"},
    {"trak"_key, "", "+7", true, "trak=7"},
    {"trak"_key, "5", "0", true, ""},
    {"trak"_key, "5", "--", true, ""},
    {"trak"_key, "5", "", true, ""},
    {"trak"_key, "5", "five", false, "trak=5"},
    {"cryr"_key, "", " 1999 (remaster)", true, "cryr=1999"},
    {"cryr"_key, "", "99999999999999999999", false, ""},
    {"cryr"_key, "", "5000000000", true, "cryr=2147483647"},
    {"rtng"_key, "", "255", false, ""},
    {"rtng"_key, "", "0", true, "rtng=0"},
    {"rtng"_key, "0", "", true, ""},
    {"volm"_key, "", "0.5", true, "volm=0.50"},
    {"volm"_key, "0.5", "0", true, ""},
    {"TMPO"_key, "", "1.151", true, "TMPO=1.15"},
    {"TMPO"_key, "1.15", "1.1499", false, "TMPO=1.15"},
    {"TMPO"_key, "1.15", "1.004", true, ""},
    {"TMPO"_key, "1.15", "--", true, ""},
    {"TMPO"_key, "1.15", "nan", false, "TMPO=1.15"},
    {"TMPO"_key, "1.15", "99999", true, "TMPO=2.55"},
    {"PICH"_key, "", "-1", true, "PICH=-1"},
    {"PICH"_key, "3", "255", true, ""},
    {"PICH"_key, "", "40", true, "PICH=+12"},
    {"gChn"_key, "5", "0", true, ""},
    {"gChn"_key, "", "3", false, ""},
    {"gChn"_key, "", "5", true, "gChn=Channel 2"},
    {"colr"_key, "3", "9", true, ""},
    {"vChn"_key, "1", "255", true, ""},
};

TEST_F(CMetaTest, ATextBecomesTheValueOfItsKey) {
    for (const auto& c : kStringCases) {
        SCOPED_TRACE(MetaKeyText(c.key) + ": \"" + c.beforeZ + "\" -> \"" + c.textZ + "\"");
        i_meta.RemoveValue(c.key);
        ASSERT_EQ(i_meta.SetString(c.key, c.beforeZ), *c.beforeZ != '\0');
        i_meta.SetDirty(false);
        i_meta.i_notes.clear();
        EXPECT_EQ(i_meta.SetString(c.key, c.textZ), c.changedB);
        EXPECT_EQ(i_meta.IsDirty(), c.changedB);
        EXPECT_EQ(i_meta.i_notes.size(), c.changedB ? 1U : 0U);
        EXPECT_EQ(Shown(i_meta), c.storedZ);
        i_meta.RemoveValue(c.key);
    }
}

TEST_F(CMetaTest, NoDefaultIsEverStored) {
    EXPECT_FALSE(i_meta.SetInteger("rtng"_key, 255));
    EXPECT_FALSE(i_meta.SetFloat("TMPO"_key, 1.0));
    EXPECT_FALSE(i_meta.SetFloat("TMPO"_key, 1.0049));
    EXPECT_FALSE(i_meta.SetBool("Duet"_key, false));
    EXPECT_FALSE(i_meta.SetDict("prod"_key, {}));
    EXPECT_FALSE(i_meta.SetSongFile("Sfs0"_key, {SDB_SongFileStatus_NONE, CFileRef("/a")}));
    EXPECT_EQ(Shown(i_meta), "");
    EXPECT_FALSE(i_meta.IsDirty());
    EXPECT_EQ(i_meta.i_notes, Notes());

    EXPECT_TRUE(i_meta.SetInteger("rtng"_key, 80));
    EXPECT_TRUE(i_meta.SetBool("Duet"_key, BoolValueType::kMix));
    EXPECT_TRUE(i_meta.SetInteger("rtng"_key, 255));
    EXPECT_TRUE(i_meta.SetBool("Duet"_key, false));
    EXPECT_EQ(Shown(i_meta), "");
    EXPECT_EQ(i_meta.i_notes, (Notes{"rtng=80", "Duet=mix", "rtng gone", "Duet gone"}));
}

TEST_F(CMetaTest, ReadingWithoutAValueGivesTheDefault) {
    EXPECT_EQ(i_meta.GetInteger("rtng"_key), 255);
    EXPECT_EQ(i_meta.GetInteger("gChn"_key), 3);
    EXPECT_EQ(i_meta.GetFloat("TMPO"_key), 1.0);
    EXPECT_EQ(i_meta.GetString("name"_key), "");
    EXPECT_EQ(i_meta.GetDisplayString("volm"_key), "-");
    EXPECT_EQ(i_meta.GetBool("PSNT"_key), BoolValueType::kFalse);
    EXPECT_EQ(i_meta.GetDate("Date"_key), std::nullopt);
    EXPECT_TRUE(i_meta.GetDict("prod"_key).Empty());
    EXPECT_EQ(i_meta.GetSongFile("Sfs0"_key).status, SDB_SongFileStatus_NONE);
    EXPECT_TRUE(i_meta.GetSongFile("Sfs0"_key).ref.IsEmpty());
}

TEST_F(CMetaTest, EachKindComesBackAsItWasSet) {
    EXPECT_TRUE(i_meta.SetDate("Date"_key, {12345.5}));
    EXPECT_FALSE(i_meta.SetDate("Date"_key, {12345.5}));
    EXPECT_EQ(i_meta.GetDate("Date"_key), CFDate{12345.5});
    EXPECT_TRUE(i_meta.SetDict("prod"_key, {{"a", CCFValue(1)}}));
    EXPECT_FALSE(i_meta.SetDict("prod"_key, {{"a", CCFValue(1)}}));
    EXPECT_EQ(i_meta.GetDict("prod"_key).GetInteger("a"), 1);
    const CFData block = {std::byte{1}, std::byte{0}};
    EXPECT_TRUE(i_meta.SetByteBlock("blok"_key, block));
    EXPECT_FALSE(i_meta.SetByteBlock("blok"_key, block));
    EXPECT_EQ(i_meta.GetByteBlock("blok"_key), block);
    EXPECT_TRUE(i_meta.SetFloat("Slip"_key, -0.25));
    EXPECT_EQ(i_meta.GetFloat("Slip"_key), -0.25);

    EXPECT_TRUE(i_meta.SetSongFile("Sfs1"_key, {SDB_SongFileStatus_MUSIC, CFileRef("/m/a b/song.cdg")}));
    EXPECT_FALSE(i_meta.SetSongFile("Sfs1"_key, {SDB_SongFileStatus_MUSIC, CFileRef("/m/a b/song.cdg")}));
    EXPECT_TRUE(i_meta.SetSongFile("Sfs1"_key, {SDB_SongFileStatus_REFERENCE, CFileRef("/m/a b/song.cdg")}));
    EXPECT_EQ(i_meta.GetSongFile("Sfs1"_key).status, SDB_SongFileStatus_REFERENCE);
    EXPECT_EQ(i_meta.GetSongFile("Sfs1"_key).ref.GetPath(), "/m/a b/song.cdg");
    for (const char* pathZ : {"bare.mp3", "/", "/folder/", "a/b", "\xff/\xfe"}) {
        EXPECT_TRUE(i_meta.SetSongFile("Sfs0"_key, {SDB_SongFileStatus_CD, CFileRef(pathZ)}));
        EXPECT_EQ(i_meta.GetSongFile("Sfs0"_key).ref.GetPath(), pathZ);
        EXPECT_EQ(i_meta.Stored("Sfs0"_key).FilePath(), pathZ);
    }
}

TEST_F(CMetaTest, ForceCountsAsAChangeAndDisabledDoesNothing) {
    i_meta.SetInteger("trak"_key, 4);
    i_meta.i_notes.clear();
    EXPECT_FALSE(i_meta.SetValue("trak"_key, CMetaValue(4), false));
    EXPECT_TRUE(i_meta.SetValue("trak"_key, CMetaValue(4), true));
    EXPECT_EQ(i_meta.i_notes, Notes{"trak=4"});

    i_meta.SetEnabled(false);
    i_meta.SetDirty(false);
    EXPECT_FALSE(i_meta.SetInteger("trak"_key, 5));
    EXPECT_FALSE(i_meta.SetString("name"_key, "x"));
    EXPECT_FALSE(i_meta.SetBool("Duet"_key, true));
    EXPECT_FALSE(i_meta.RemoveValue("trak"_key));
    EXPECT_FALSE(i_meta.SetValue("trak"_key, CMetaValue(6), true));
    EXPECT_EQ(Shown(i_meta), "trak=4");
    EXPECT_FALSE(i_meta.IsDirty());
    i_meta.SetEnabled(true);
    EXPECT_TRUE(i_meta.SetInteger("trak"_key, 5));
}

TEST_F(CMetaTest, QuietChangesMarkButDoNotTell) {
    {
        const CMeta::QuietChanges quiet(i_meta);
        EXPECT_TRUE(i_meta.SetInteger("trak"_key, 4));
        EXPECT_TRUE(i_meta.IsDirty());
        EXPECT_EQ(i_meta.i_notes, Notes());
    }
    EXPECT_TRUE(i_meta.SetInteger("trak"_key, 5));
    EXPECT_EQ(i_meta.i_notes, Notes{"trak=5"});
}

TEST_F(CMetaTest, ArticlesMoveOnlyWhenWantedAndNotAtLoad) {
    i_manager.SetLoading(true);
    i_meta.SetString("arts"_key, "The Who");
    EXPECT_EQ(i_meta.GetString("arts"_key), "The Who");
    i_manager.SetLoading(false);
    i_manager.SetMoveArticles(false);
    EXPECT_FALSE(i_meta.SetString("arts"_key, "The Who"));
    i_manager.SetMoveArticles(true);
    EXPECT_TRUE(i_meta.SetString("arts"_key, "The Who"));
    EXPECT_EQ(i_meta.GetString("arts"_key), "Who, The");
}

TEST_F(CMetaTest, ValuesAreMadeAsTheModeAllows) {
    i_meta.i_made = CMetaValue(CMetaText::Of("3:05"));
    EXPECT_FALSE(i_meta.Value("aDur"_key, ValueMode::kStored));
    i_meta.SetCanCreate(false);
    EXPECT_FALSE(i_meta.Value("aDur"_key, ValueMode::kMakeIfAllowed));
    EXPECT_EQ(i_meta.i_notes, Notes());
    EXPECT_EQ(i_meta.Value("aDur"_key, ValueMode::kMake).Text(), "3:05");
    EXPECT_EQ(i_meta.i_notes, Notes{"aDur=3:05"});
    EXPECT_TRUE(i_meta.Has("aDur"_key));
    EXPECT_EQ(i_meta.Value("aDur"_key, ValueMode::kMake).Text(), "3:05");
    EXPECT_EQ(i_meta.i_notes.size(), 1U);

    i_meta.RemoveValue("aDur"_key);
    i_meta.i_made = CMetaValue(CMetaText());   // the default: told, not kept
    EXPECT_TRUE(i_meta.Value("aDur"_key));
    EXPECT_FALSE(i_meta.Has("aDur"_key));
    const Ref<CData> dataRef = i_meta.GetRetainedValue("aDur"_key, ValueMode::kMake);
    ASSERT_TRUE(dataRef);
    EXPECT_EQ(dataRef->GetOwner(), nullptr);
    EXPECT_FALSE(i_meta.GetRetainedValue("name"_key, ValueMode::kMake));
}

TEST_F(CMetaTest, FaultsOfTheCallerAreAssertedAndChangeNothing) {
    EXPECT_FALSE(i_meta.SetInteger(CM_Key_NONE, 1));
    EXPECT_EQ(TakeAsserted(), Words{"key != CM_Key_NONE"});
    i_meta.i_toldIdentityB = true;
    i_meta.SetInteger(CM_Key_SONG_ID, 1);
    i_meta.SetInteger(CM_Key_SORT_INDEX, 1);
    i_meta.SetInteger(CM_Key_PLAYLIST_ID, 1);
    EXPECT_EQ(TakeAsserted(),
              (Words{"key != CM_Key_SONG_ID", "key != CM_Key_SORT_INDEX", "key != CM_Key_PLAYLIST_ID"}));
    i_meta.i_notes.clear();
    EXPECT_FALSE(i_meta.SetString("Date"_key, "today"));
    EXPECT_FALSE(i_meta.SetInteger("name"_key, 1));
    EXPECT_FALSE(i_meta.SetFloat("name"_key, 1));
    EXPECT_FALSE(i_meta.SetDict("name"_key, {}));
    EXPECT_EQ(TakeAsserted().size(), 4U);
    EXPECT_EQ(i_meta.i_notes, Notes());
}

TEST_F(CMetaTest, LocksOutOfOrderAreAsserted) {
    NotingMeta row(MetaLevel::kRow), song;
    {
        const MetaLock first(row);
        const MetaLock again(row);
        const MetaLock second(song);
        const MetaLock third(row);   // held already: no wait
    }
    EXPECT_EQ(TakeAsserted(), Words());
    NotingMeta otherRow(MetaLevel::kRow), otherSong;   // not those above: what is wrong here is not tried in both ways
    {
        const MetaLock first(otherSong);
        const MetaLock second(otherRow);
    }
    EXPECT_EQ(TakeAsserted().size(), 1U);
    {
        const MetaLock first(song);
        const MetaLock second(i_meta);
    }
    EXPECT_EQ(TakeAsserted().size(), 1U);
}

TEST_F(CMetaTest, LoadedValuesMakeNoNoise) {
    MetaEntry entries[] = {{"name"_key, CMetaValue(CMetaText::Of(" as it was "))},
                           {"gChn"_key, CMetaValue(0)},
                           {"PICH"_key, CMetaValue(-1)},
                           {"rtng"_key, CMetaValue(255)},
                           {"trak"_key, {}}};
    i_meta.Load(entries);
    EXPECT_EQ(Shown(i_meta), "PICH=-1 name= as it was ");
    EXPECT_FALSE(i_meta.IsDirty());
    EXPECT_EQ(i_meta.i_notes, Notes());
    MetaEntry wrong[] = {{"name"_key, CMetaValue(3)}};
    i_meta.Load(wrong);
    EXPECT_EQ(TakeAsserted().size(), 1U);
    EXPECT_EQ(i_meta.GetString("name"_key), " as it was ");
}

TEST_F(CMetaTest, EachObjectHasASerialOfItsOwn) {
    std::uint32_t gone = 0;
    {
        CMeta other;
        gone = other.Serial();
        EXPECT_NE(gone, i_meta.Serial());
        EXPECT_EQ(i_manager.FindMeta(gone), &other);
        EXPECT_EQ(i_manager.MetaCount(), 2U);
    }
    EXPECT_EQ(i_manager.FindMeta(gone), nullptr);
    for (int n = 0; n < 3000; ++n) EXPECT_GT(CMeta().Serial(), gone);   // over the edges of blocks
    EXPECT_EQ(i_manager.FindMeta(i_meta.Serial()), &i_meta);
    EXPECT_EQ(i_manager.MetaCount(), 1U);
}

}   // namespace
