#include "Platform/CFolders.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

using Path = std::filesystem::path;

TEST(CFolders, UserDirsTextIsReadAsTheFormatHasIt) {
    const struct {
        const char* name;
        const char* textZ;
        const char* wantedZ;
    } kCases[] = {
        {"under the home", "XDG_MUSIC_DIR=\"$HOME/Musik\"\n", "/home/u/Musik"},
        {"absolute", "XDG_MUSIC_DIR=\"/data/songs\"", "/data/songs"},
        {"the home itself", "XDG_MUSIC_DIR=\"$HOME/\"\n", "/home/u"},
        {"comment and others", "# XDG_MUSIC_DIR=\"/no\"\nXDG_VIDEOS_DIR=\"/no\"\n\tXDG_MUSIC_DIR=\"/yes\"\n", "/yes"},
        {"a later line wins", "XDG_MUSIC_DIR=\"/one\"\nXDG_MUSIC_DIR=\"/two\"\n", "/two"},
        {"escapes", "XDG_MUSIC_DIR=\"/a\\\"b\\\\c\"\n", "/a\"b\\c"},
        {"relative is none", "XDG_MUSIC_DIR=\"songs\"\n", ""},
        {"another variable is none", "XDG_MUSIC_DIR=\"$ROOT/songs\"\n", ""},
        {"not closed", "XDG_MUSIC_DIR=\"/a", ""},
        {"a longer key", "XDG_MUSIC_DIRS=\"/a\"\n", ""},
        {"no quote", "XDG_MUSIC_DIR=/a\n", ""},
        {"empty", "", ""},
        {"ends in an escape", "XDG_MUSIC_DIR=\"/a\\", ""},
    };
    for (const auto& c : kCases)
        EXPECT_EQ(ReadUserFolder(c.textZ, "XDG_MUSIC_DIR", "/home/u"), Path{c.wantedZ}) << c.name;
}

class FoldersTest : public testing::Test {
protected:
    void SetUp() override {
        CFolders::SetRoot({});
        for (const char* nameZ : kNames) {
            const char* const valueZ = std::getenv(nameZ);
            i_before.emplace_back(valueZ == nullptr ? "" : valueZ);
            ::unsetenv(nameZ);
        }
    }
    void TearDown() override {
        CFolders::SetRoot({});
        for (std::size_t n = 0; n < std::size(kNames); ++n)
            i_before[n].empty() ? ::unsetenv(kNames[n]) : ::setenv(kNames[n], i_before[n].c_str(), 1);
    }
    static std::vector<Path> All() {
        return {CFolders::Config(),  CFolders::Data(),  CFolders::Cache(), CFolders::State(),
                CFolders::Runtime(), CFolders::Music(), CFolders::Temp()};
    }
    static constexpr const char* kNames[] = {"VOPLA_ROOT",     "HOME",           "XDG_CONFIG_HOME", "XDG_DATA_HOME",
                                             "XDG_CACHE_HOME", "XDG_STATE_HOME", "XDG_RUNTIME_DIR", "TMPDIR"};
    std::vector<std::string> i_before;
};

TEST_F(FoldersTest, DefaultsVariablesAndRoots) {
    const std::string run = "/tmp/vopla-run-" + std::to_string(::geteuid());
    ::setenv("HOME", "/home/u", 1);
    EXPECT_EQ(All(), (std::vector<Path>{"/home/u/.config", "/home/u/.local/share", "/home/u/.cache",
                                        "/home/u/.local/state", run, "/home/u/Music", "/tmp"}));
    ::setenv("XDG_CONFIG_HOME", "/c", 1);
    ::setenv("XDG_DATA_HOME", "relative/is/ignored", 1);
    ::setenv("XDG_RUNTIME_DIR", "/run/user/7", 1);
    ::setenv("TMPDIR", "/scratch", 1);
    EXPECT_EQ(All(), (std::vector<Path>{"/c", "/home/u/.local/share", "/home/u/.cache", "/home/u/.local/state",
                                        "/run/user/7", "/home/u/Music", "/scratch"}));
    const auto inside = [](const Path& r) {
        return std::vector<Path>{r / "config", r / "data", r / "cache", r / "state", r / "run", r / "Music", r / "tmp"};
    };
    ::setenv("VOPLA_ROOT", "/r/", 1);
    EXPECT_EQ(All(), inside("/r"));
    CFolders::SetRoot("/option/wins");
    EXPECT_EQ(All(), inside("/option/wins"));
    CFolders::SetRoot("relative");
    EXPECT_EQ(All(), inside(std::filesystem::current_path() / "relative"));
}

TEST_F(FoldersTest, MusicComesFromUserDirs) {
    std::string pattern = "/tmp/folders-XXXXXX";
    const Path folder = ::mkdtemp(pattern.data());
    ::setenv("HOME", "/home/u", 1);
    ::setenv("XDG_CONFIG_HOME", folder.c_str(), 1);
    { std::ofstream(folder / "user-dirs.dirs") << "XDG_MUSIC_DIR=\"$HOME/Musik\"\n"; }
    EXPECT_EQ(CFolders::Music(), Path{"/home/u/Musik"});
    std::filesystem::remove_all(folder);
}

}   // namespace
