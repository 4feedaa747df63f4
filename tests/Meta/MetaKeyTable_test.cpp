#include "Meta/MetaKeyTable.h"

#include <algorithm>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "Meta/MetaTest.h"

namespace {

MetaKey KeyOf(std::string_view text) {
    std::uint32_t code = 0;
    for (const char c : text) code = code << 8 | static_cast<unsigned char>(c);
    return MetaKey{code};
}
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

TEST_F(MetaKeyTableTest, EachKeyIsAsListed) {
    const std::map<std::string, ValType> kinds = {
        {"string", ValType::ValType_STRING},    {"integer", ValType::ValType_INTEGER}, {"bool", ValType::ValType_BOOL},
        {"float", ValType::ValType_FLOAT},      {"date", ValType::ValType_DATE},       {"dict", ValType::ValType_DICT},
        {"songfile", ValType::ValType_SONGFILE}};
    std::ifstream list(std::string(VOPLA_SOURCE_DIR) + "/tests/Meta/meta_keys.tsv");
    std::set<std::string> seen;
    for (std::string line; std::getline(list, line);) {
        if (line.starts_with('#')) continue;
        std::vector<std::string> cells;
        std::istringstream in(line);
        for (std::string cell; std::getline(in, cell, '\t');) cells.push_back(cell);
        ASSERT_EQ(cells.size(), 8U) << line;
        SCOPED_TRACE(line);
        EXPECT_TRUE(seen.insert(cells[0]).second);
        unsigned flags = static_cast<unsigned>(std::stoul(cells[4], nullptr, 16));
        const bool singerB = cells[0] == "siID" || cells[0] == "sPLI";
        if (singerB) flags |= 0x100;   // the preference is off
        const int least = cells[5] == "-" ? 50 : std::stoi(cells[5]),
                  most = cells[6] == "-" ? 200 : std::stoi(cells[6]);

        const CDataTraits& traits = i_manager.GetTraits(KeyOf(cells[0]));
        EXPECT_EQ(traits.Title().UTF8(), cells[1]);
        EXPECT_EQ(traits.Type(), kinds.at(cells[2]));
        EXPECT_EQ(Text(traits.PropertyType()), (flags & 1) != 0 ? "????" : cells[3]);
        EXPECT_EQ(traits.Flags(), flags);
        EXPECT_EQ(traits.MinWidth(), least);
        EXPECT_EQ(traits.MaxWidth(), most);
        EXPECT_EQ(traits.InitialWidth(), cells[7] == "-" ? least : std::stoi(cells[7]));
    }
    EXPECT_EQ(seen.size(), MetaKeyTable().size());
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
