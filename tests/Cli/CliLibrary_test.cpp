#include "Cli/CliLibrary.h"

#include <algorithm>
#include <fstream>
#include <sstream>

#include "Cli/CliRun.h"
#include "Core/CLog.h"
#include "Core/TempFolder.h"
#include "Meta/MetaKeyTable.h"
#include "Platform/CFolders.h"
#include "Storage/CLibraryLock.h"

namespace {

namespace fs = std::filesystem;

/** A library of 200 songs, made by another program, under a root as the host has it. */
class CliLibrary : public testing::Test {
protected:
    CliLibrary() {
        fs::create_directories(i_root.Path() / "Music");
        Python(std::string(VOPLA_SOURCE_DIR "/tools/make_library"), "200 '" + Lib().string() + "'");
    }
    ~CliLibrary() override { CFolders::SetRoot({}); }
    fs::path Lib() const { return i_root.Path() / "Music/Vopla"; }
    CliRun Library(const std::vector<std::string>& words, bool jsonB = true) const {
        return RunCli("library", i_root.Path(), jsonB, words);
    }
    /** What python prints. */
    std::string Python(const std::string& program, const std::string& words) const {
        const fs::path answer = i_root.Path() / "answer";
        EXPECT_EQ(std::system(("python3 '" + program + "' " + words + " > '" + answer.string() + "'").c_str()), 0);
        return Bytes(answer);
    }
    static std::string Bytes(const fs::path& file) {
        std::ifstream in(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    /** Changes "Library.xml" and the list's file by statements on `lib` (the dictionary "Library") and `ten`. */
    void Edit(const std::string& statements) const {
        const fs::path script = i_root.Path() / "edit.py";
        std::ofstream(script) << "import plistlib, sys\nfiles = [sys.argv[1] + n for n in ('/Library.xml', "
                                 "'/Playlists/A Tenth.xml')]\nall, ten = [plistlib.load(open(f, 'rb')) for f in "
                                 "files]\nlib = all['Library']\nrows = lib['Playlists'][0]['Playlist Items']\n"
                              << statements
                              << "\nfor f, v in zip(files, (all, ten)): plistlib.dump(v, open(f, 'wb'))\n";
        Python(script.string(), "'" + Lib().string() + "'");
    }
    const TempFolder i_root;
};

TEST_F(CliLibrary, ListsAndShowsSongs) {
    const CliRun list = Library({"list"});
    ASSERT_EQ(list.status, 0) << list.err;
    EXPECT_EQ(std::ranges::count(list.out, '\n'), 200);
    const CliRun one = Library({"show", "17"});
    EXPECT_EQ(one.status, 0);
    EXPECT_TRUE(one.out.starts_with("{\"soID\":17,\"")) << one.out;
    EXPECT_NE(list.out.find(one.out), std::string::npos);
    EXPECT_NE(Library({"show", "17"}, false).out.find("Song Name (name): "), std::string::npos);
    EXPECT_EQ(std::ranges::count(Library({"list"}, false).out, '\t'), 800);   // no song has its files, which is told
    EXPECT_NE(one.out.find("\"Msng\":true"), std::string::npos) << one.out;
    EXPECT_FALSE(fs::exists(Lib() / "~Backups"));   // reading writes nothing
}

TEST_F(CliLibrary, WhatIsSetStandsInTheFileForOtherPrograms) {
    const struct {
        const char *keyZ, *textZ, *shownZ;
    } kSets[] = {
        {"name", "Ёлочка", "\"name\":\"Ёлочка\""},
        {"rtng", "60", "\"rtng\":60"},
        {"PICH", "-3", "\"PICH\":-3"},
        {"TMPO", "1.15", "\"TMPO\":1.15"},
        {"Duet", "true", "\"Duet\":true"},
        {"Date", "2024-02-29T12:00:00Z", "\"Date\":\"/Date(1709208000000+0000)/\""},
        {"Sfs2", "/other/song.zip", "\"Sfs2\":\"/other/song.zip\""},
    };
    for (const auto& c : kSets) {
        const CliRun set = Library({"set", "17", "--", c.keyZ, c.textZ});
        EXPECT_EQ(set.status, 0) << c.keyZ << set.err;
        EXPECT_NE(set.out.find(c.shownZ), std::string::npos) << set.out;
        EXPECT_EQ(Library({"show", "17"}).out, set.out);   // another load
    }
    const std::string seen =
        Python(VOPLA_SOURCE_DIR "/tests/Storage/library_witness.py", "show '" + (Lib() / "Songs.vlb").string() + "'");
    std::istringstream lines(seen);
    std::string line, ours;
    while (std::getline(lines, line))
        if (line.starts_with("17 ")) ours = line;
    EXPECT_NE(ours.find(" d081d0bbd0bed187d0bad0b0 "), std::string::npos) << ours;   // the name in hexadecimal
    EXPECT_NE(ours.find(" 60 0 -3 115 "), std::string::npos) << ours;
    EXPECT_EQ(std::ranges::count(seen, '\n'), 200);
    ASSERT_EQ(Library({"set", "17", "rtng", ""}).status, 0);
    EXPECT_EQ(Library({"show", "17"}).out.find("rtng"), std::string::npos);
    EXPECT_EQ(Library({"check", "--no-files"}).out, "{\"songs\":200,\"playlists\":2,\"singers\":0,\"problems\":[]}\n");
}

TEST_F(CliLibrary, WrongValuesAndWordsChangeNothing) {
    const std::string before = Bytes(Lib() / "Songs.vlb");
    const struct {
        std::vector<std::string> words;
        int status;
        const char* errorZ;
    } kCases[] = {
        {{"set", "17", "colr", "12"}, 1, "12 is not legal for colr"},
        {{"set", "17", "PICH", "99"}, 1, "99 is not legal for PICH"},
        {{"set", "17", "vChn", "255"}, 1, "255 is not legal for vChn"},
        {{"set", "17", "Slip", "1e308"}, 1, "1e308 is not legal for Slip (from -3600 to 3600)"},
        {{"set", "17", "TMPO", "9"}, 1, "9 is not legal for TMPO (from 0.25 to 2.55)"},
        {{"set", "17", "volm", "--", "-1"}, 1, "-1 is not legal for volm (from 0 to 100)"},
        {{"set", "17", "rtng", "6 0"}, 1, "is no value for rtng"},
        {{"set", "17", "rtng", "99999999999"}, 1, "is no value for rtng"},
        {{"set", "17", "TMPO", "nan"}, 1, "is no value for TMPO"},
        {{"set", "17", "Duet", "perhaps"}, 1, "is no value for Duet"},
        {{"set", "17", "Date", "yesterday"}, 1, "is no value for Date"},
        {{"set", "17", "name", "\xff"}, 1, "is no value for name"},
        {{"set", "17", "prod", "x"}, 1, "prod is kept by the program itself"},
        {{"set", "17", "soID", "5"}, 1, "soID is given by the library"},
        {{"set", "17", "ZZZZ", "5"}, 1, "no such key: ZZZZ"},
        {{"set", "9999", "name", "x"}, 1, "no song 9999"},
        {{"set", "seventeen", "name", "x"}, 1, "no song seventeen"},
        {{"show", "17x"}, 1, "no song 17x"},
        {{"restore", "nothing.zip"}, 1, "no copy nothing.zip"},
        {{}, 2, "usage"},
        {{"shows"}, 2, "usage"},
        {{"show"}, 2, "usage"},
        {{"list", "--no-files"}, 2, "usage"},
        {{"set", "17", "PICH", "-3"}, 2, "put it behind"},
        {{"check", "files"}, 2, "usage"},
    };
    for (const auto& c : kCases) {
        const CliRun run = Library(c.words);
        EXPECT_EQ(run.status, c.status) << c.errorZ;
        EXPECT_NE(run.err.find(c.errorZ), std::string::npos) << run.err;
        EXPECT_EQ(std::ranges::count(run.err, '\n'), 1) << run.err;
        EXPECT_EQ(run.out, "") << c.errorZ;
    }
    EXPECT_TRUE(Bytes(Lib() / "Songs.vlb") == before);
    EXPECT_FALSE(fs::exists(Lib() / "Songs Meta.xml"));
    fs::remove_all(Lib());
    EXPECT_EQ(Library({"list"}).status, 1);
}

/** A key is kept, or refused with a word of why: none is taken and forgotten. */
TEST_F(CliLibrary, EachKeyIsKeptOrRefused) {
    std::size_t keptL = 0;
    for (const MetaKeyRow& row : MetaKeyTable()) {
        const std::string key = MetaKeyText(row.key);
        const std::string value = row.type == ValType::ValType_BOOL       ? "true"
                                  : row.type == ValType::ValType_INTEGER  ? "1"
                                  : row.type == ValType::ValType_FLOAT    ? "1.5"
                                  : row.type == ValType::ValType_DATE     ? "2024-02-29T00:00:00Z"
                                  : row.type == ValType::ValType_SONGFILE ? "/a/b.mp3"
                                                                          : "text";
        const CliRun set = Library({"set", "17", key, value});
        const std::string shown = Library({"show", "17"}).out;
        if (set.status == 0) {
            ++keptL;
            EXPECT_EQ(shown, set.out) << key;   // by a process of its own, so to say
            EXPECT_NE(shown.find("\"" + key + "\":"), std::string::npos) << key << shown;
        } else {
            const bool wordsB = set.err.find("\"error\":\"" + key + " ") != std::string::npos ||
                                set.err.find(value + " is not legal for " + key) != std::string::npos;
            EXPECT_TRUE(wordsB || set.err.find("no such key: " + key) != std::string::npos) << key << set.err;
        }
    }
    EXPECT_GT(keptL, 45U);
    for (const char* const keyZ : {"siID", "Spas", "Msng", "mPip"})
        EXPECT_EQ(Library({"set", "17", keyZ, "1"}).status, 1);
}

TEST_F(CliLibrary, OneThatCannotBeReadWholeIsListedAndNotChanged) {
    const std::string songs = Bytes(Lib() / "Songs.vlb");
    const struct {
        const char* fileZ;
        std::size_t keptL;
        long linesL;
    } kCuts[] = {{"Songs.vlb", songs.size() - 7, 199}, {"Songs.vlb", 3, 0}, {"Library.xml", 100, 200}};
    for (const auto& c : kCuts) {
        const std::string whole = Bytes(Lib() / c.fileZ);
        std::ofstream(Lib() / c.fileZ, std::ios::binary) << whole.substr(0, c.keptL);
        const CliRun list = Library({"list"});
        EXPECT_EQ(list.status, 1) << c.fileZ;
        EXPECT_EQ(std::ranges::count(list.out, '\n'), c.linesL);
        EXPECT_NE(list.err.find("the library cannot be read whole"), std::string::npos) << list.err;
        EXPECT_EQ(Library({"set", "17", "name", "x"}).status, 1);
        EXPECT_EQ(Bytes(Lib() / c.fileZ), whole.substr(0, c.keptL));
        std::ofstream(Lib() / c.fileZ, std::ios::binary) << whole;
    }
}

TEST_F(CliLibrary, ACheckKnowsTheSingersOfOneFile) {
    const fs::path venue = Lib() / "Venues" / "Bar";
    fs::create_directories(venue / "Ann");
    fs::create_directories(venue / "empty");
    const fs::path script = i_root.Path() / "singers.py";
    std::ofstream(script)
        << "import plistlib, sys\nv = sys.argv[1]\n"
           "plistlib.dump({'Singers': [{'Singer': {'SNGR': n}} for n in ('Ann', 'Bob', '')]}, open(v + '/Singers.xml', "
           "'wb'))\n"
           "plistlib.dump({'Name': '', 'Playlist ID': 150000, 'Playlist Type': 9, 'Playlist Items': []}, "
           "open(v + '/Ann/Tonight.xml', 'wb'))\n";
    Python(script.string(), "'" + venue.string() + "'");
    Edit("lib[\"Next item ID (don't change this!!)\"] = 150001");
    const CliRun run = Library({"check", "--no-files"});
    EXPECT_EQ(run.out, "{\"songs\":200,\"playlists\":3,\"singers\":3,\"problems\":[]}\n");
}

TEST_F(CliLibrary, OneThatIsInUseIsReadAlone) {
    CLibraryLock host;
    ASSERT_EQ(host.Take(CFileRef(Lib())), noErr);
    for (const auto& words : std::vector<std::vector<std::string>>{{"set", "17", "name", "x"}, {"rebuild"}}) {
        const CliRun run = Library(words, false);
        EXPECT_EQ(run.status, 1);
        EXPECT_NE(run.err.find("the library is in use"), std::string::npos) << run.err;
    }
    EXPECT_EQ(Library({"show", "17"}).status, 0);
    EXPECT_EQ(Library({"check", "--no-files"}).status, 0);
}

TEST_F(CliLibrary, ACheckTellsEachFault) {
    const struct {
        const char *nameZ, *statementsZ, *toldZ;
    } kFaults[] = {
        {"missing song", "rows[4]['Song ID'] = 9999", "list “Library” (1): row 5 names song 9999, which is not there"},
        {"not in the list", "del rows[4]", "song 6 is not in the library's list"},
        {"row twice", "rows[4]['ID'] = 4", "list “Library” (1): row 4 is there twice"},
        {"list id twice", "ten['Playlist ID'] = 1", "lists “Library” and “A Tenth” have the same id 1"},
        {"counter", "lib[\"Next item ID (don't change this!!)\"] = 150",
         "53 ids are not below the counter, 150; the highest is that of list “A Tenth” (202)"},
        {"no file", "lib['Playlists'].append({'Name': 'Lost', 'Playlist ID': 77, 'Playlist Type': 3})",
         "list “Lost” (77) has no file"},
        {"no such singer", "ten['Playlist Items'].append({'ID': 900, 'Singer': 5, 'Item Type': 2})",
         "list “A Tenth” (202): row 900 names singer 5, who is not there"},
    };
    const std::string index = Bytes(Lib() / "Library.xml"), list = Bytes(Lib() / "Playlists/A Tenth.xml");
    for (const auto& c : kFaults) {
        Edit(c.statementsZ);
        const CliRun run = Library({"check", "--no-files"}, false);
        EXPECT_NE(run.out.find(c.toldZ), std::string::npos) << c.nameZ << ": " << run.out;
        EXPECT_EQ(run.status, 0);
        std::ofstream(Lib() / "Library.xml", std::ios::binary) << index;
        std::ofstream(Lib() / "Playlists/A Tenth.xml", std::ios::binary) << list;
    }
    const std::string songs = Bytes(Lib() / "Songs.vlb");
    std::ofstream(Lib() / "Songs.vlb", std::ios::binary) << songs.substr(0, songs.size() - 7);
    EXPECT_NE(Library({"check", "--no-files"}, false).out.find("Songs.vlb cannot be read whole, only 199 of 200 songs"),
              std::string::npos);
    std::ofstream(Lib() / "Songs.vlb", std::ios::binary) << songs << songs.substr(24, songs.size() - 24);
    EXPECT_NE(Library({"check", "--no-files"}, false).out.find("song 17 is there twice"), std::string::npos);
    std::ofstream(Lib() / "Songs.vlb", std::ios::binary) << songs;
    std::ofstream(Lib() / "Playlists/A Tenth.xml", std::ios::binary) << list.substr(0, list.size() / 2);
    EXPECT_NE(Library({"check", "--no-files"}, false).out.find("Playlists/A Tenth.xml cannot be read whole"),
              std::string::npos);
    EXPECT_GT(std::ranges::count(Library({"check"}, false).out, '\n'), 200);   // no song has its files
}

TEST_F(CliLibrary, AKeptCopyIsListedAndBroughtBack) {
    const std::string before = Bytes(Lib() / "Songs.vlb");
    EXPECT_EQ(Library({"restore"}).out, "");
    ASSERT_EQ(Library({"set", "17", "name", "changed"}).status, 0);
    const std::string list = Library({"restore"}).out, mark = "{\"copy\":\"";
    ASSERT_TRUE(list.starts_with(mark)) << list;
    const std::string copy = list.substr(mark.size(), list.find('"', mark.size()) - mark.size());
    const CliRun run = Library({"restore", copy});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, "{\"restored\":\"" + copy + "\"}\n");
    EXPECT_TRUE(Bytes(Lib() / "Songs.vlb") == before);
}

TEST_F(CliLibrary, ARebuildFindsTheSongsOfTheFolders) {
    const fs::path music = i_root.Path() / "Music/Vopla Music/Ann";
    fs::create_directories(music);
    for (const char* nameZ : {"Ann - One.mp3", "Ann - One.cdg", "Ann - Two.mp3", "Ann - Two.cdg", "notes.txt"})
        std::ofstream(music / nameZ) << nameZ;
    // Sound under another one's name: 11,025 frames of nothing.
    std::ofstream(music / "Ann - Two.mp3", std::ios::binary)
        << std::string("RIFF\x68\xAC\0\0WAVEfmt \x10\0\0\0\1\0\2\0\x44\xAC\0\0\x10\xB1\2\0\4\0\x10\0data\x44\xAC\0\0",
                       44)
        << std::string(44100, '\0');
    const CliRun first = Library({"rebuild"});
    ASSERT_EQ(first.status, 0) << first.err;
    EXPECT_TRUE(first.out.starts_with("{\"songs\":202,\"new\":2,")) << first.out;
    EXPECT_TRUE(Library({"rebuild"}).out.starts_with("{\"songs\":202,\"new\":0,"));   // known by their paths
    EXPECT_EQ(Library({"check", "--no-files"}).out, "{\"songs\":202,\"playlists\":2,\"singers\":0,\"problems\":[]}\n");
    // What is damaged is set aside, and the songs come from the newest copy that is whole.
    std::ofstream(Lib() / "Songs.vlb", std::ios::binary) << "damaged";
    const CliRun second = Library({"rebuild"});
    ASSERT_EQ(second.status, 0) << second.err;
    EXPECT_TRUE(second.out.starts_with("{\"songs\":202,\"new\":0,")) << second.out;   // from the kept copy
    EXPECT_NE(Library({"check"}).out.find("a damaged file was set aside: Songs (damaged "), std::string::npos);
    fs::remove_all(Lib());
    EXPECT_TRUE(Library({"rebuild"}).out.starts_with("{\"songs\":2,\"new\":2,"));
    const std::string list = Library({"list"}).out;
    EXPECT_NE(list.find("\"name\":\"One\""), std::string::npos);
    EXPECT_NE(list.find("\"drtn\":75"), std::string::npos) << list;   // a quarter of a second
}

}   // namespace
