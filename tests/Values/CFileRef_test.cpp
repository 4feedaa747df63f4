#include "Files/CFileRef.h"

#include "Files/FileTest.h"
#include "Files/FSrObjects.h"
#include "Values/FileRefDictionary.h"
#include "Values/PropertyList.h"

namespace {

class FileRefTest : public FileTest {
protected:
    CFileRef Kept(const Path& file) {
        CFileRef ref(file);
        EXPECT_EQ(ref.Fill(CFileRef::kFill_ALIAS), noErr);
        FileRefRecord record;
        EXPECT_EQ(ref.ToRecord(record), noErr);
        EXPECT_EQ(record.type, FileRefRecord::kType_ALIAS);
        CFileRef back;
        EXPECT_EQ(CFileRef::FromRecord(record, back), noErr);
        return back;
    }
};

TEST_F(FileRefTest, AnAliasFindsAMovedFile) {
    const Path songs = i_root / "songs", deep = songs / "artist" / "album";
    std::filesystem::create_directories(deep / "live");
    std::filesystem::create_directories(songs / "other");
    const struct {
        const char* name;
        Path to;
        OSErr err;
    } kCases[] = {
        {"renamed", deep / "new name.cdg", noErr},
        {"into a folder below", deep / "live" / "song.cdg", noErr},
        {"one folder up", deep.parent_path() / "song.cdg", noErr},
        {"to a sister folder", songs / "artist" / "second" / "song.cdg", noErr},
        {"too far away", songs / "other" / "song.cdg", fnfErr},
    };
    std::filesystem::create_directories(songs / "artist" / "second");
    for (const auto& c : kCases) {
        const Path file = deep / "song.cdg";
        Write(file, c.name);
        CFileRef ref = Kept(file);
        std::filesystem::rename(file, c.to);
        Path found;
        EXPECT_EQ(FSrGetPath(ref, found), c.err) << c.name;
        if (!Failed(c.err)) {
            EXPECT_EQ(found, c.to) << c.name;
        }
        std::filesystem::remove(c.to);
    }
}

TEST_F(FileRefTest, ThePathWinsAndAStrangerIsNotTaken) {
    const Path file = i_root / "songs" / "a", moved = i_root / "songs" / "b";
    Write(file, "one");
    CFileRef ref = Kept(file);
    std::filesystem::rename(file, moved);
    Write(file, "replaced by a save");
    EXPECT_EQ(ref.Resolve(), noErr);
    EXPECT_EQ(ref.GetPath(), file);
    std::filesystem::remove(file);
    EXPECT_EQ(ref.Resolve(), fnfErr) << "the old identity was given up for that of the file in its place";
    std::filesystem::remove(moved);
    EXPECT_EQ(Kept(i_root / "songs").Resolve(), noErr) << "folders too";
}

TEST_F(FileRefTest, RecordsOfEachKind) {
    const Path file = i_root / "songs" / "a";
    Write(file, "x");
    FileRefRecord record;
    CFileRef empty, path(file), missing(i_root / "nowhere"), back(file);
    EXPECT_EQ(empty.ToRecord(record), paramErr);
    EXPECT_FALSE(record.type);
    EXPECT_EQ(path.ToRecord(record), noErr);
    EXPECT_EQ(record.type, FileRefRecord::kType_PATH);
    EXPECT_EQ(record.path, file.string());
    EXPECT_EQ(missing.ToRecord(record), noErr) << "a path needs no file";
    ASSERT_EQ(CFileRef::FromRecord(record, back), noErr);
    EXPECT_EQ(back.GetPath(), missing.GetPath());
    EXPECT_EQ(path.Resolve(), noErr);
    EXPECT_EQ(path.ToRecord(record), noErr);
    EXPECT_EQ(record.type, FileRefRecord::kType_ALIAS);
    ASSERT_EQ(CFileRef::FromRecord(record, back), noErr);
    EXPECT_FALSE(back.HasPath());
    EXPECT_EQ(back.Fill(CFileRef::kFill_PATH), noErr);
    EXPECT_EQ(back.GetPath(), file);
    EXPECT_EQ(CFileRef::FromRecord({.type = 3, .alias = {}, .path = "/x"}, back), noErr);
    EXPECT_TRUE(back.IsEmpty());
    back = path;
    const FileRefRecord kBad[] = {{.type = {}, .alias = record.alias, .path = "/x"},
                                  {.type = 0, .alias = {}, .path = "/x"},
                                  {.type = 5, .alias = {}, .path = "/x"},
                                  {.type = 2, .alias = {}, .path = "/x"},
                                  {.type = 4, .alias = record.alias, .path = ""},
                                  {.type = 4, .alias = {}, .path = std::string("/a\0b", 4)}};
    for (const FileRefRecord& bad : kBad) EXPECT_EQ(CFileRef::FromRecord(bad, back), paramErr);
    EXPECT_EQ(back.GetPath(), path.GetPath()) << "untouched";
}

TEST_F(FileRefTest, TheDictionaryFormSurvivesAPropertyList) {
    const Path file = i_root / "songs" / "a";
    Write(file, "x");
    CFileRef path(file), alias(file);
    ASSERT_EQ(alias.Resolve(), noErr);
    for (CFileRef* const refP : {&path, &alias}) {
        CCFDictionary written;
        ASSERT_EQ(WriteFileRef(*refP, written), noErr);
        std::string text;
        ASSERT_EQ(WritePropertyList(written, text), noErr);
        CCFValue read(false);
        ASSERT_EQ(ReadPropertyList(std::as_bytes(std::span(text)), read), noErr);
        CFileRef back;
        ASSERT_EQ(ReadFileRef(*read.Dictionary(), back), noErr);
        ASSERT_EQ(back.Fill(CFileRef::kFill_PATH), noErr);
        EXPECT_EQ(back.GetPath(), file);
    }
    const Path latin1 = i_root / "songs" / "Bj\xF6rk.zip";   // from an old disc: no UTF-8, and no text of a list
    Write(latin1, "x");
    CFileRef bytes(latin1), gone(i_root / "songs" / "\xF6"), found;
    CCFDictionary written;
    ASSERT_EQ(WriteFileRef(bytes, written), noErr);
    std::string text;
    ASSERT_EQ(WritePropertyList(written, text), noErr);
    CCFValue read(false);
    ASSERT_EQ(ReadPropertyList(std::as_bytes(std::span(text)), read), noErr);
    ASSERT_EQ(ReadFileRef(*read.Dictionary(), found), noErr);
    EXPECT_EQ(found.GetPath(), latin1);
    EXPECT_EQ(WriteFileRef(gone, written), bdNamErr);

    CFileRef kept(file);
    EXPECT_EQ(ReadFileRef({}, kept), paramErr);
    EXPECT_EQ(ReadFileRef({{"type", 4}, {"path", 7}}, kept), paramErr);
    EXPECT_EQ(ReadFileRef({{"type", "4"}, {"path", "/x"}}, kept), paramErr);
    EXPECT_EQ(kept.GetPath(), file);
    EXPECT_EQ(ReadFileRef({{"type", 3}}, kept), noErr);
    EXPECT_TRUE(kept.IsEmpty());
}

TEST(CFileAlias, WholeOrNothing) {
    const CFileAlias alias("/songs/Ä.zip", {0x0102030405060708, 42, -7});
    const std::vector<std::byte> record = alias.Encode();
    const auto back = CFileAlias::Decode(record);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->GetPath(), alias.GetPath());
    EXPECT_EQ(back->Identity().deviceL, 0x0102030405060708U);
    EXPECT_EQ(back->Identity().bornL, -7);
    EXPECT_EQ(std::to_integer<int>(record[6]), 1) << "big-endian";
    for (std::size_t n = 0; n < record.size(); ++n) EXPECT_FALSE(CFileAlias::Decode(std::span(record).first(n))) << n;
    auto longer = record;
    longer.push_back({});
    EXPECT_FALSE(CFileAlias::Decode(longer));
    for (std::size_t n = 0; n < record.size();
         ++n) {   // no byte may lead outside; what is taken is a path of that length
        auto damaged = record;
        damaged[n] ^= std::byte{0xFF};
        if (const auto got = CFileAlias::Decode(damaged)) {
            EXPECT_EQ(got->GetPath().native().size(), alias.GetPath().native().size());
        }
    }
    auto zero = record;
    zero.back() = {};
    EXPECT_FALSE(CFileAlias::Decode(zero));
}

TEST(CFSPathModder, RewritesWhatLiesInside) {
    const CFSPathModder modder("/old/Vopla", "/new");
    const struct {
        const char* from;
        const char* to;
    } kCases[] = {{"/old/Vopla/a/b.zip", "/new/a/b.zip"},
                  {"/old/Vopla", "/new"},
                  {"/old/Vopla 2/a", nullptr},
                  {"/x", nullptr},
                  {"old/Vopla/a", nullptr},
                  {"/old", nullptr}};
    for (const auto& c : kCases) {
        CFileRef ref(c.from);
        EXPECT_EQ(modder(ref), c.to != nullptr) << c.from;
        EXPECT_EQ(ref.GetPath(), std::filesystem::path(c.to != nullptr ? c.to : c.from));
    }
    CFileRef empty;
    EXPECT_FALSE(modder(empty));
    EXPECT_TRUE(IsInside("/a/b", "/a/") && IsInside("/a", "/a") && !IsInside("/ab", "/a") && !IsInside("/a", ""));
}

}   // namespace
