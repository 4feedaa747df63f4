#include <fstream>
#include <map>
#include <random>

#include "Core/TempFolder.h"
#include "Meta/CMeta_File.h"
#include "Meta/CMeta_PLItem.h"
#include "Meta/MetaTest.h"

// Whole records: dictionaries, tags, the order of two objects, and the packed store below.

namespace {

class CMetaRecordsTest : public MetaTest {
protected:
    NotingMeta i_meta;
};

TEST_F(CMetaRecordsTest, ADictionaryHasAllButHiddenKeys) {
    i_meta.SetString("name"_key, "Yesterday");
    i_meta.SetInteger("trak"_key, 3);
    i_meta.SetFloat("TMPO"_key, 1.15);
    i_meta.SetBool("Duet"_key, true);
    i_meta.SetBool("Expl"_key, BoolValueType::kMix);
    i_meta.SetDate("Date"_key, {99});
    i_meta.SetString("Spas"_key, "secret");
    i_meta.SetDict("prod"_key, {{"x", CCFValue("y")}});
    i_meta.SetSongFile("Sfs0"_key, {SDB_SongFileStatus_MUSIC, CFileRef("/m/a.mp3")});
    i_meta.SetSongFile("Sfs3"_key, {SDB_SongFileStatus_CACHE, CFileRef("/c/a.pcm")});
    const CCFDictionary plain{{"name", CCFValue("Yesterday")}, {"trak", CCFValue(3)},
                              {"TMPO", CCFValue(1.15)},        {"Duet", CCFValue(true)},
                              {"Expl", CCFValue("mix")},       {"Date", CCFValue(CFDate{99})}};
    CCFDictionary shown = i_meta.ToDictionary();
    EXPECT_NEAR(shown.GetFloat("TMPO"), 1.15, 1e-12);
    shown.Set("TMPO", CCFValue(1.15));
    EXPECT_EQ(shown, plain);   // neither the password nor hidden data nor files

    const CCFDictionary withFiles = i_meta.ToDictionary(CMeta::FileSlots::kWith);
    EXPECT_EQ(withFiles.Size(), 8U);
    EXPECT_EQ(withFiles.GetDictionary("Sfs3").GetString("path"), "/c/a.pcm");   // hidden, but a file

    NotingMeta second;
    second.FromDictionary(withFiles);
    EXPECT_EQ(second.ToDictionary(CMeta::FileSlots::kWith), withFiles);
    EXPECT_EQ(second.GetBool("Expl"_key), BoolValueType::kMix);
    EXPECT_EQ(second.GetSongFile("Sfs3"_key).status, SDB_SongFileStatus_REFERENCE);
}

TEST_F(CMetaRecordsTest, ADictionaryOfOthersIsTakenAsFarAsItMakesSense) {
    i_meta.SetString("albm"_key, "stays");
    i_meta.FromDictionary({{"name", CCFValue(7)},
                           {"trak", CCFValue("3/12")},
                           {"cryr", CCFValue(1999.9)},
                           {"bpm ", CCFValue(true)},
                           {"rtng", CCFValue(1e300)},
                           {"Duet", CCFValue(1)},
                           {"Slip", CCFValue(2)},
                           {"Date", CCFValue("yesterday")},
                           {"prod", CCFValue(CFArray{})},
                           {"Sfs0", CCFValue(CCFDictionary{{"type", CCFValue(77)}})},
                           {"Sfs1", CCFValue("/a/path")},
                           {"soID", CCFValue(12)},
                           {"plID", CCFValue(13)},
                           {"piIx", CCFValue(14)},
                           {"Song ID", CCFValue(5)},
                           {std::string(4, '\0'), CCFValue(1)},
                           {"newI", CCFValue(8)},
                           {"newS", CCFValue("of a later version")},
                           {"newA", CCFValue(CFArray{})}});
    EXPECT_EQ(i_meta.GetString("albm"_key), "stays");
    EXPECT_EQ(i_meta.GetString("name"_key), "7");
    EXPECT_EQ(i_meta.GetInteger("trak"_key), 3);
    EXPECT_EQ(i_meta.GetInteger("cryr"_key), 1999);
    EXPECT_EQ(i_meta.GetInteger("bpm "_key), 1);
    EXPECT_EQ(i_meta.GetInteger("rtng"_key), 255);
    EXPECT_EQ(i_meta.GetBool("Duet"_key), BoolValueType::kTrue);
    EXPECT_EQ(i_meta.GetFloat("Slip"_key), 2.0);
    EXPECT_EQ(i_meta.GetInteger("newI"_key), 8);
    EXPECT_EQ(i_meta.GetString("newS"_key), "of a later version");
    for (const MetaKey key :
         {"Date"_key, "prod"_key, "Sfs0"_key, "Sfs1"_key, "soID"_key, "plID"_key, "piIx"_key, "newA"_key, CM_Key_NONE})
        EXPECT_FALSE(i_meta.Has(key)) << MetaKeyText(key);
}

TEST_F(CMetaRecordsTest, ADictionaryGoesThroughTheSetters) {
    i_meta.FromDictionary({{"name", CCFValue(" two  blanks ")}, {"TMPO", CCFValue(1.0)}, {"PICH", CCFValue(255)}});
    EXPECT_EQ(i_meta.GetString("name"_key), "two blanks");
    EXPECT_EQ(i_meta.AllStored().size(), 1U);
    EXPECT_EQ(i_meta.i_notes, std::vector<std::string>{"name=two blanks"});
}

TEST_F(CMetaRecordsTest, ARowTakesNothingButItsOwnKeys) {
    CMeta_PLItem row;
    row.FromDictionary(
        {{"PICH", CCFValue(-2)}, {"tsng", CCFValue(3)}, {"soID", CCFValue(9)}, {"Play", CCFValue(false)}});
    EXPECT_EQ(row.ToDictionary(), (CCFDictionary{{"PICH", CCFValue(-2)}}));
}

TEST_F(CMetaRecordsTest, BasicsGoInAndOut) {
    MetaTags tags{"Name", "Artist", "Album", "Genre", "Comment", "Rendition", "Copyright", 0, 0};
    i_meta.SetInteger("cryr"_key, 1980);
    i_meta.SetBasics(tags);
    EXPECT_EQ(i_meta.GetInteger("cryr"_key), 1980);   // 0 is not written
    MetaTags back;
    EXPECT_TRUE(i_meta.GetBasics(back));
    EXPECT_EQ(back.rendition, "Rendition");
    EXPECT_EQ(back.copyright, "Copyright");
    EXPECT_EQ(back.yearL, 1980);
    i_meta.SetBasics({});
    EXPECT_TRUE(i_meta.GetBasics(back));   // the year is left
    EXPECT_EQ(back.name, "");
    i_meta.RemoveValue("cryr"_key);
    EXPECT_FALSE(i_meta.GetBasics(back));
}

TEST_F(CMetaRecordsTest, OrderIsByTheKeysThenByTheSortIndex) {
    const auto order = [](std::vector<MetaSortKey> keys, auto setA, auto setB) {
        CMeta a, b;
        setA(a);
        setB(b);
        CMetaSortContext context{std::move(keys), 9};
        const int ab = a.CompareRecursive(b, context);
        EXPECT_EQ(context.index, 0U);
        EXPECT_EQ(b.CompareRecursive(a, context), -ab);
        return ab;
    };
    const auto none = [](CMeta&) {};
    const auto name = [](const char* textZ) { return [textZ](CMeta& m) { m.SetString("name"_key, textZ); }; };
    const auto row = [](std::int32_t index) {
        return [index](CMeta& m) { m.SetValue("piIx"_key, CMetaValue(index)); };
    };
    const auto both = [](auto x, auto y) { return [x, y](CMeta& m) { x(m), y(m); }; };
    const auto box = [](MetaKey key) { return [key](CMeta& m) { m.SetBool(key, true); }; };

    EXPECT_EQ(order({}, none, none), 0);
    EXPECT_EQ(order({}, row(2), row(10)), -1);
    EXPECT_EQ(order({{"name"_key}}, none, name("a")), -1);   // no value first
    EXPECT_EQ(order({{"name"_key}}, name("Track 10"), name("track 9")), 1);
    EXPECT_EQ(order({{"name"_key}}, both(name("ABBA"), row(1)), both(name("abba"), row(2))), -1);
    EXPECT_EQ(order({{"name"_key, false}}, name("a"), name("b")), 1);
    EXPECT_EQ(order({{"name"_key, false}}, both(name("a"), row(1)), both(name("a"), row(2))),
              -1);   // rows as they stand
    EXPECT_EQ(order({{"albm"_key}, {"name"_key}}, name("b"), name("a")), 1);
    EXPECT_EQ(order({{"Duet"_key}}, box("Duet"_key), none), 1);
    EXPECT_EQ(order({{"PSNT"_key}}, box("PSNT"_key), none), -1);   // here: those with the mark first
    EXPECT_EQ(order({{"sgKJ"_key}}, box("sgKJ"_key), none), -1);
    EXPECT_LT(
        order(
            {{"Date"_key}}, [](CMeta& m) { m.SetDate("Date"_key, {1}); }, [](CMeta& m) { m.SetDate("Date"_key, {2}); }),
        0);
}

TEST(CMetaValue, KindsHaveTheirOrder) {
    const CMetaValue yes(BoolValueType::kTrue), mix(BoolValueType::kMix), no(BoolValueType::kFalse);
    EXPECT_TRUE(yes.IsLessThan(mix) && mix.IsLessThan(no) && yes.IsLessThan(no));
    EXPECT_FALSE(no.IsLessThan(mix) || mix.IsLessThan(yes) || mix.IsLessThan(mix));
    const CMetaValue upper(CMetaText::Of("ABBA")), lower(CMetaText::Of("abba"));
    EXPECT_TRUE(upper.IsEqual(lower));
    EXPECT_FALSE(upper == lower);   // another value all the same
    EXPECT_FALSE(upper.IsLessThan(lower) || lower.IsLessThan(upper));
    EXPECT_FALSE(CMetaValue(1).IsLessThan(CMetaValue(2.0)) || CMetaValue(1).IsEqual(CMetaValue(1.0)));
    EXPECT_TRUE(CMetaValue(-1).IsLessThan(CMetaValue(1)));
    EXPECT_TRUE(CMetaValue(CCFDictionary{{"a", CCFValue(1)}}).IsEqual(CMetaValue(CCFDictionary{{"a", CCFValue(1)}})));
    EXPECT_TRUE(
        CMetaValue::File(SDB_SongFileStatus_CD, "/a/9").IsLessThan(CMetaValue::File(SDB_SongFileStatus_CD, "/a/10")));
    EXPECT_EQ(CMetaValue(3).Text(), "");   // another kind's nothing
    EXPECT_EQ(CMetaValue(CMetaText::Of("3")).Integer(), 0);
}

TEST(CMetaValue, AFileKeepsItsIdentity) {
    TempFolder folder;
    const auto path = folder.Path() / "song.mp3";
    std::ofstream(path) << "x";
    CFileRef ref(path);
    ASSERT_EQ(ref.Fill(CFileRef::kFill_ALIAS), noErr);
    const FileIdentity identity = ref.Alias()->Identity();
    const CMetaValue value(CMetaSongFile{SDB_SongFileStatus_MUSIC, ref});
    const CMetaSongFile file = value.SongFile();
    ASSERT_TRUE(file.ref.HasAlias());
    EXPECT_EQ(file.ref.Alias()->Identity(), identity);
    EXPECT_EQ(file.ref.GetPath(), path);
    EXPECT_FALSE(value == CMetaValue::File(SDB_SongFileStatus_MUSIC, path.native()));
}

TEST(CMetaSlots, DoesWhatAMapDoes) {
    std::mt19937 random(3);
    const auto value = [&]() -> CMetaValue {
        switch (random() % 5) {
            case 0:
                return CMetaValue(static_cast<std::int32_t>(random()));
            case 1:
                return CMetaValue(CMetaText::Of(std::to_string(random())));
            case 2:
                return CMetaValue(CMetaText::Interned(std::to_string(random() % 10)));
            case 3:
                return CMetaValue(CCFDictionary{{"n", CCFValue(static_cast<int>(random() % 100))}});
            default:
                return CMetaValue::File(SDB_SongFileStatus_CD, "/f/" + std::to_string(random()));
        }
    };
    for (int round = 0; round < 20; ++round) {
        CMetaSlots slots;
        std::map<std::uint16_t, CMetaValue> slow;
        std::map<std::uint16_t, bool> marks;
        for (int step = 0; step < 300; ++step) {
            const auto key = static_cast<std::uint16_t>(random() % 4 == 0 ? 2046 - random() % 5 : random() % 40);
            switch (random() % 4) {
                case 0:
                    EXPECT_EQ(slots.Take(key), slow[key]);
                    slow.erase(key), marks.erase(key);
                    break;
                case 1:
                    if (slow.contains(key)) marks[key] = step % 2 == 0;
                    slots.Mark(key, step % 2 == 0);
                    break;
                default:
                    slow[key] = value();
                    slots.Put(key, slow[key]);
            }
            ASSERT_EQ(slots.Count(), slow.size());
            std::size_t place = 0;
            for (const auto& [index, held] : slow) {
                ASSERT_EQ(slots.KeyAt(place), index);
                ASSERT_EQ(slots.At(place++), held);
                ASSERT_EQ(slots.IsMarked(index), marks.contains(index) && marks[index]);
            }
        }
    }
}

/** A file that holds one line a key. */
class LineMeta final : public CMeta_File {
public:
    using CMeta_File::CMeta_File;
    ~LineMeta() override { Retire(); }
    std::string i_calls;
    MetaKey i_failsAt = CM_Key_NONE;

private:
    OSErr ReadTag(MetaKey key) override { return Step(key); }
    OSErr WriteTag(MetaKey key) override {
        EXPECT_NE(Stream(), nullptr);
        return Step(key);
    }
    OSErr Step(MetaKey key) {
        i_calls += MetaKeyText(key) + " ";
        return key == i_failsAt ? eofErr : noErr;
    }
};

TEST_F(CMetaRecordsTest, TagsAreReadAndWrittenInTheirOrder) {
    TempFolder folder;
    LineMeta missing{CFileRef(folder.Path() / "none.mp3")};
    EXPECT_EQ(missing.OpenFile(true), fnfErr);
    EXPECT_EQ(missing.WriteTags(), noErr);   // nothing changed, nothing to open
    missing.SetString("name"_key, "x");
    EXPECT_EQ(missing.WriteTags(), fnfErr);
    EXPECT_TRUE(missing.IsDirty());

    std::ofstream(folder.Path() / "a.mp3") << "x";
    LineMeta file{CFileRef(folder.Path() / "a.mp3")};
    file.SetString("name"_key, "x");
    EXPECT_EQ(file.ReadTags(), noErr);
    EXPECT_EQ(std::exchange(file.i_calls, {}), "name arts albm genr cmmt trak cprt cryr ");
    EXPECT_FALSE(file.IsDirty());
    file.SetDirty(true);
    EXPECT_EQ(file.WriteTags(), noErr);
    EXPECT_EQ(std::exchange(file.i_calls, {}), "name arts albm genr cmmt trak cryr cprt soft ");
    EXPECT_FALSE(file.IsDirty());
    file.SetDirty(true);
    file.i_failsAt = "albm"_key;
    EXPECT_EQ(file.WriteTags(), eofErr);
    EXPECT_EQ(file.ReadTags(), eofErr);
    EXPECT_EQ(file.i_calls, "name arts albm name arts albm ");
}

}   // namespace
