#include "Library/CMeta.h"

#include <algorithm>

#include "Core/TempFolder.h"
#include "Library/CMeta_File.h"
#include "Library/MetaTest.h"

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
    {"TMPO"_key, "1.15", "1e99", true, "TMPO=2.55"},
    {"PICH"_key, "", "-1", true, "PICH=-1"},
    {"PICH"_key, "3", "255", true, ""},
    {"PICH"_key, "", "40", true, "PICH=+7"},
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

}   // namespace
