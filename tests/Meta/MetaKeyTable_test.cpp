#include "Meta/MetaKeyTable.h"

#include <algorithm>
#include <set>

#include "Meta/MetaTest.h"

namespace {

std::string Text(OSType code) { return MetaKeyText(MetaKey{code}); }

class MetaKeyTableTest : public MetaTest {
protected:
    /** The keys, joined by blanks, of all known traits that are `so`. */
    template <class Question>
    std::string KeysThat(Question so) {
        std::string keys;
        for (const MetaKey key : i_manager.SortedKeys())
            if (so(i_manager.GetTraits(key))) keys += (keys.empty() ? "" : ",") + MetaKeyText(key);
        return keys;
    }
};

TEST_F(MetaKeyTableTest, EachKeyOnceAndEachColumnCanBeShown) {
    std::set<MetaKey> keys;
    std::set<std::string> titles;
    for (const MetaKeyRow& row : MetaKeyTable()) {
        SCOPED_TRACE(MetaKeyText(row.key));
        EXPECT_TRUE(keys.insert(row.key).second);
        const CDataTraits& traits = i_manager.GetTraits(row.key);
        EXPECT_NE(traits.Type(), ValType::ValType_NONE);
        EXPECT_GT(traits.MinWidth(), 0);
        EXPECT_GE(traits.InitialWidth(), traits.MinWidth());
        EXPECT_GE(traits.MaxWidth(), traits.MinWidth());
        EXPECT_TRUE(!traits.Has(kKeyFlag_Editable) || Text(traits.PropertyType()) == "????");
        if (!traits.Has(kKeyFlag_Column) || traits.Has(kKeyFlag_Hidden)) continue;
        EXPECT_TRUE(titles.insert(traits.Title().UTF8()).second) << "two columns of one title";
        EXPECT_EQ(i_manager.FindKeyByTitle(traits.Title()), row.key);
    }
    EXPECT_EQ(keys.size(), 126U);
    const struct {
        MetaKey key;
        const char *titleZ, *propertyZ;
        ValType type;
        unsigned flags;
        int least, most, initial;
    } anchors[] = {
        {"name"_key, "Song Name", "????", ValType::ValType_STRING, 0x73, 80, 500, 120},
        {"cryr"_key, "Year", "????", ValType::ValType_INTEGER, 0x33, 80, 80, 80},
        {"trak"_key, "Track #", "????", ValType::ValType_INTEGER, 0x73, 70, 150, 70},
        {"TMPO"_key, "Tempo", "????", ValType::ValType_FLOAT, 0x11, 50, 200, 50},
        {"DAdd"_key, "Date Added", "date", ValType::ValType_DATE, 0x10, 80, 150, 80},
        {"Duet"_key, "Duet", "chbx", ValType::ValType_BOOL, 0x82, 60, 60, 60},
        {"siID"_key, "* Singer ID", "text", ValType::ValType_INTEGER, 0x500, 50, 200, 50},
    };
    for (const auto& anchor : anchors) {
        SCOPED_TRACE(anchor.titleZ);
        const CDataTraits& traits = i_manager.GetTraits(anchor.key);
        EXPECT_EQ(traits.Title(), anchor.titleZ);
        EXPECT_EQ(Text(traits.PropertyType()), anchor.propertyZ);
        EXPECT_EQ(traits.Type(), anchor.type);
        EXPECT_EQ(traits.Flags(), anchor.flags);
        EXPECT_EQ(traits.MinWidth(), anchor.least);
        EXPECT_EQ(traits.MaxWidth(), anchor.most);
        EXPECT_EQ(traits.InitialWidth(), anchor.initial);
    }
}

TEST_F(MetaKeyTableTest, ExceptionsAreTheseAlone) {
    EXPECT_EQ(KeysThat([](const CDataTraits& t) { return t.TextJustification() == Justification::kRight; }),
              "DAdd,Date,Tend,Tsrt,drtn,piIx,soID,stIx,strt,trak,tsng");
    EXPECT_EQ(KeysThat([](const CDataTraits& t) { return t.TextJustification() == Justification::kLeft; }), "Slip");
    EXPECT_EQ(KeysThat([](const CDataTraits& t) { return t.TitleFontSize() == 15; }), "SNGR,StrN,name,nick");
    EXPECT_EQ(KeysThat([](const CDataTraits& t) { return t.TitleFontSize() != 15 && t.TitleFontSize() != 0; }), "");
    EXPECT_EQ(KeysThat([](const CDataTraits& t) { return (t.ColumnFlags() & 0x100) != 0; }), "DAdd,Date");
    EXPECT_EQ(KeysThat([](const CDataTraits& t) { return (t.ColumnFlags() & 1) != 0 && !t.Has(kKeyFlag_Editable); }),
              "Duet,Expl,PLME,PSNT,SmsB,Spas,bVoc,lVoc,rtng,sNSL,sgKJ");
    EXPECT_EQ(KeysThat([](const CDataTraits& t) { return (t.ColumnFlags() & 1) == 0 && t.Has(kKeyFlag_Editable); }),
              "");
    EXPECT_EQ(KeysThat([](const CDataTraits& t) { return (t.ColumnFlags() & ~0x101U) != 0x70000; }), "");
    EXPECT_EQ(KeysThat([](const CDataTraits& t) { return t.GetDefaultInteger() != 0; }), "gChn,rtng");
    EXPECT_EQ(KeysThat([](const CDataTraits& t) { return !t.GetDefaultText().Empty(); }), "TMPO,tsng,volm");
    EXPECT_EQ(KeysThat([](const CDataTraits& t) { return t.GetDefaultFloat() != 0; }), "TMPO");
    EXPECT_EQ(i_manager.GetTraits("rtng"_key).GetDefaultInteger(), 255);
    EXPECT_EQ(i_manager.GetTraits("gChn"_key).GetDefaultInteger(), 3);
    EXPECT_EQ(i_manager.GetTraits("TMPO"_key).GetDefaultFloat(), 1.0);
    EXPECT_EQ(i_manager.GetTraits("TMPO"_key).GetDefaultText(), "1.00");
    EXPECT_EQ(i_manager.GetTraits("tsng"_key).GetDefaultText(), "0");
    EXPECT_EQ(i_manager.GetTraits("volm"_key).GetDefaultText(), "-");
    EXPECT_EQ(i_manager.GetTraits("vChn"_key).GetMenuID(), 212);
}

TEST_F(MetaKeyTableTest, TraitsAreMadeInTheirOrder) {
    const std::vector<MetaKey>& keys = i_manager.Keys();
    ASSERT_EQ(keys.size(), 109U);
    EXPECT_EQ(std::set(keys.begin(), keys.end()).size(), 109U);
    std::string all;
    for (const MetaKey key : keys) all += MetaKeyText(key) + ",";
    EXPECT_EQ(
        all,
        "soID,Msng,vChn,PICH,colr,Slip,gChn,drtn,strt,trak,SmsC,SmsR,prod,meSt,cavD,cavT,cMfl,pUSD,pTRI,Tsrt,"
        "Tend,SIZE,"
        "name,arts,albm,genr,SUBg,bRat,cmmt,cust,keyw,soft,wrtr,cprt,piIx,stIx,Duet,dl  ,strm,Tier,Twrl,Lang,Keyc,"
        "KeCH,volm,rtng,Coop,Muxd,mPip,mPsh,siID,plID,sPLI,sTid,Frmt,SRCE,cryr,ORyr,tsng,Date,DAdd,PLME,SNGR,nick,"
        "Bio ,bpm ,TMPO,PSNT,sgKJ,swrt,gndr,cpsr,pbls,ORpb,aDur,rdtn,bVoc,lVoc,cBak,Expl,Sfs0,Sfs1,Sfs2,Sfs3,Sfs4,"
        "Sfs5,Sfs6,Sfs7,Sfs8,Sfs9,Sf10,Sf11,StrN,SNmS,sURL,stor,Smpl,stmR,purc,CplP,PlaP,Rcnt,SsID,ScID,spRL,sNSL,"
        "Spas,SmsB,SmsN,");
    for (std::size_t n = 0; n < keys.size(); ++n) EXPECT_EQ(i_manager.GetTraits(keys[n]).Index(), n);
    EXPECT_TRUE(std::ranges::is_sorted(i_manager.SortedKeys()));
    EXPECT_EQ(i_manager.SortedKeys().size(), 109U);
}

TEST_F(MetaKeyTableTest, LateKeysAreHiddenAndTitledByTheirCode) {
    EXPECT_EQ(i_manager.GetTraits("cEml"_key).Type(), ValType::ValType_STRING);
    CDataTraits& unknown = i_manager.GetTraits("????"_key);
    EXPECT_EQ(unknown.Title(), "* ????");
    EXPECT_EQ(unknown.Flags(), kKeyFlag_NotIndexed | kKeyFlag_Hidden);
    EXPECT_EQ(unknown.Type(), ValType::ValType_NONE);
    EXPECT_EQ(&i_manager.GetTraits("????"_key), &unknown);
    EXPECT_EQ(i_manager.Keys().size(), 109U);

    EXPECT_TRUE(unknown.Discover(ValType::ValType_DATE));
    EXPECT_FALSE(unknown.Discover(ValType::ValType_BOOL));
    EXPECT_FALSE(i_manager.GetTraits("name"_key).Discover(ValType::ValType_BOOL));
    EXPECT_EQ(unknown.Type(), ValType::ValType_DATE);
}

TEST_F(MetaKeyTableTest, AFloodOfKeysFindsAnEnd) {
    CMeta meta;
    long keptL = 0;
    for (std::uint32_t code = 0x21000000; code < 0x21000000 + 5000; ++code)
        keptL += meta.SetValue(MetaKey{code}, CMetaValue(std::int32_t{7})) ? 1 : 0;
    EXPECT_EQ(keptL, CMetaSlots::kMostKeys - 110);   // the table's, and the one that stands in
    EXPECT_EQ(TakeAsserted().size(), 5000U - static_cast<unsigned>(keptL));
    EXPECT_EQ(meta.GetInteger(MetaKey{0x21000000}), 7);
    EXPECT_EQ(meta.AllStored().size(), static_cast<std::size_t>(keptL));
    EXPECT_EQ(&i_manager.GetTraits("Name"_key), &i_manager.GetTraits(CM_Key_NONE));
}

TEST_F(MetaKeyTableTest, OnlyColumnsAreFoundByTheirTitle) {
    EXPECT_EQ(i_manager.FindKeyByTitle("Song Name"), "name"_key);
    EXPECT_EQ(i_manager.FindKeyByTitle("Rating"), CM_Key_NONE);   // no column
    EXPECT_EQ(i_manager.FindKeyByTitle(""), CM_Key_NONE);
    EXPECT_EQ(i_manager.FindKeyByTitle("song name"), CM_Key_NONE);
}

TEST_F(MetaKeyTableTest, FilePlacesHaveTheirKeys) {
    EXPECT_EQ(SongFileKey(SDB_SongFile_AUDIO), "Sfs0"_key);
    EXPECT_EQ(SongFileKey(SDB_SongFile_LAUNCH), "Sf11"_key);
    EXPECT_EQ(SongFileKey(SDB_SongFile_NONE), CM_Key_NONE);
    EXPECT_EQ(SongFileKey(SDB_SongFile_numtypes), CM_Key_NONE);
    for (int n = 0; n < 12; ++n) {
        const auto type = static_cast<SDB_SongFile>(n);
        EXPECT_EQ(SongFileOfKey(SongFileKey(type)), type);
    }
    EXPECT_EQ(SongFileOfKey("Sfsx"_key), std::nullopt);
    EXPECT_EQ(SongFileOfKey("name"_key), std::nullopt);
}

class MetaSetupTest : public MetaTest {
protected:
    MetaSetupTest()
        : MetaTest({.traits = {.showSingerIDB = true, .smallFontS = 9, .translate = [](const char* textZ) {
                                   return SuperString(std::string("~") + textZ);
                               }}}) {}
};

TEST_F(MetaSetupTest, WhatIsKnownAtStartIsUsed) {
    EXPECT_EQ(i_manager.GetTraits("siID"_key).Flags(), 0x402U);
    EXPECT_EQ(i_manager.GetTraits("sPLI"_key).Flags(), 0x402U);
    EXPECT_EQ(i_manager.GetTraits("name"_key).Title(), "~Song Name");
    EXPECT_EQ(i_manager.GetTraits("name"_key).TitleFontSize(), 13);
    EXPECT_EQ(i_manager.GetTraits("plID"_key).Title(), "* Playlist ID");   // for nobody's eyes
    EXPECT_EQ(i_manager.GetTraits("CplP"_key).Title(), "");
}

TEST(MetaManagerAlone, IsMissedWhenItIsNotThere) {
    static int s_asserted;
    s_asserted = 0;
    SetAssertHandler([](const char*, const char*, long, bool) { return ++s_asserted, true; });
    EXPECT_EQ(MetaManager().GetTraits("name"_key).Title(), "Song Name");   // the show goes on
    EXPECT_EQ(s_asserted, 1);
    SetAssertHandler(nullptr);
}

}   // namespace
