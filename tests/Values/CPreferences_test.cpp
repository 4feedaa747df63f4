#include "Values/CPreferences.h"

#include <set>
#include <thread>

#include "Core/CLog.h"
#include "Core/ProgramNumber.h"
#include "Core/TempFolder.h"
#include "Values/PreferenceTable.h"
#include "Values/PropertyList.h"

namespace {

constexpr StringPref kTemplate = "Messenger Rotation Template";

class PrefsTest : public testing::Test {
protected:
    PrefsTest() : i_files(PrefsFilesFor(i_folder.Path())) {}
    ~PrefsTest() override {
        for (const auto which : {LogSwitch::kThreads, LogSwitch::kNetworking, LogSwitch::kMemory})
            CLog::Get().SetSwitch(which, false);
    }
    static void Put(const std::filesystem::path& file, const CCFDictionary& content) {
        std::string text;
        ASSERT_EQ(WritePropertyList(content, text), noErr);
        WriteWhole(file, text);
    }
    CCFDictionary OnDisk() {
        CCFValue value(false);
        EXPECT_EQ(ReadPropertyListFile(i_files.file, value), noErr);
        return value.Dictionary() == nullptr ? CCFDictionary() : *value.Dictionary();
    }
    TempFolder i_folder;
    PrefsFiles i_files;
};

TEST(PreferenceTable, EachKeyOnceAndEachDefaultOfItsType) {
    std::set<std::string_view> keys;
    for (const PrefRow& row : PreferenceTable()) {
        EXPECT_TRUE(keys.insert(row.key).second) << row.key;
        EXPECT_EQ(row.Default({}).Type(), row.type) << row.key;
    }
    EXPECT_EQ(FindPreference("Web server port number")->defaultL, 80);
    EXPECT_EQ(FindPreference("no such"), nullptr);
}

TEST_F(PrefsTest, FirstStartStoresDefaultsAndSavesThem) {
    CCFDictionary kept;
    {
        CPreferences prefs(i_files);
        EXPECT_EQ(prefs.LoadStatus(), fnfErr);
        EXPECT_TRUE(prefs.GetBool("Auto-cue"));
        EXPECT_FALSE(prefs.GetBool("Always on top"));
        EXPECT_EQ(prefs.GetLong("Artwork Panel height"), 133);   // 185 / 1.3889 = 133.2
        EXPECT_EQ(prefs.GetFloat("Seconds to wait after click to edit"), 0.75);
        EXPECT_EQ(prefs.GetLong("interval for all music store checks"), 31 * 24 * 3600);
        EXPECT_EQ(prefs.GetString("Conform song name template"), "L-L-T - R - S");
        EXPECT_FALSE(prefs.GetByName("Video Window Opacity"));   // never stored by itself
        EXPECT_EQ(prefs.GetFloat("Video Window Opacity"), 1.0);
        EXPECT_TRUE(prefs.GetBool("Warn if there is a problem updating meta"));
        EXPECT_EQ(prefs.GetFloat("Auto Cue Threshold (0..1) (smaller is more sensitive)"), 0.001);
        EXPECT_EQ(prefs.GetString(kTemplate), "[name]: [nick]");
        EXPECT_GE(prefs.GetShort("Max number of audio encoders at once when ripping / converting"), 1);
        EXPECT_FALSE(prefs.GetByName("Current Volume (0-100)"));   // only at save
        EXPECT_EQ(prefs.GetLong("Current Volume (0-100)"), 100);
        EXPECT_FALSE(std::filesystem::exists(i_files.file));
    }
    kept = OnDisk();
    EXPECT_EQ(kept.GetInteger("Prefs file version (do not change!)"), 2);
    EXPECT_TRUE(kept.Has("Current Volume (0-100)"));
    EXPECT_TRUE(kept.GetBool("Auto-cue"));
    for (const PrefRow& row : PreferenceTable())
        EXPECT_EQ(kept.Has(row.key) || row.rule == PrefRule::kTypeOnly || row.rule == PrefRule::kFolder, true)
            << row.key;
    { const CPreferences again(i_files); }
    EXPECT_EQ(OnDisk(), kept);   // a second start changes nothing
}

TEST_F(PrefsTest, CorrectionsRunOnce) {
    Put(i_files.file, {{"Timeout in seconds", 30},
                       {"Ignore CD+G Ripping errors (You'll just get black video)", true},
                       {"Use Stuffit Expander as a last resort to unzip files", true},
                       {"Update while typing", false},
                       {"Sources Panel Width", 250},
                       {"Messenger Rotation Template", ""}});
    {
        CPreferences prefs(i_files);
        EXPECT_EQ(prefs.GetLong("Timeout in seconds"), 120);
        EXPECT_FALSE(prefs.GetBool("Ignore CD+G Ripping errors (You'll just get black video)"));
        EXPECT_FALSE(prefs.GetBool("Use Stuffit Expander as a last resort to unzip files"));
        EXPECT_TRUE(prefs.GetBool("Update while typing"));
        EXPECT_EQ(prefs.GetLong("Artwork Panel height"), 180);   // of the stored width
        EXPECT_EQ(prefs.GetString(kTemplate), "[nick]");
        prefs.SetLong("Timeout in seconds", 30);   // now the user's own wish
        prefs.SetBool("Ignore CD+G Ripping errors (You'll just get black video)", true);
        prefs.SetBool("Use Stuffit Expander as a last resort to unzip files", true);
        prefs.SetBool("Update while typing", false);
        prefs.SetString(kTemplate, "now [nick] sings");
        prefs.SetBool("Enable Logging", false);
    }
    const CPreferences prefs(i_files, {.saveAtEndB = false});
    EXPECT_EQ(prefs.GetLong("Timeout in seconds"), 30);
    EXPECT_TRUE(prefs.GetBool("Ignore CD+G Ripping errors (You'll just get black video)"));
    EXPECT_TRUE(prefs.GetBool("Use Stuffit Expander as a last resort to unzip files"));
    EXPECT_FALSE(prefs.GetBool("Update while typing"));
    EXPECT_EQ(prefs.GetString(kTemplate), "now [nick] sings");
    EXPECT_TRUE(prefs.GetBool("Enable Logging"));   // fixed at each start
    EXPECT_TRUE(CLog::Get().IsOn(LogSwitch::kLogging));
}

TEST_F(PrefsTest, WrongTypesGiveWayUnknownKeysStay) {
    Put(i_files.file, {{"Auto-cue", "yes"},
                       {"Always on top", 1},
                       {"Long messenger duration", 5},
                       {"Browser Font Size", 14.0},
                       {"Number of undos", 1.5},
                       {"On CD Insert", CFArray{}},
                       {"Log Threads", true},
                       {"of a later version", CCFDictionary{{"a", 1}}}});
    CPreferences prefs(i_files);
    EXPECT_TRUE(CLog::Get().IsOn(LogSwitch::kThreads));
    EXPECT_FALSE(CLog::Get().IsOn(LogSwitch::kMemory));
    prefs.SetBool("Log Threads", false);
    EXPECT_FALSE(CLog::Get().IsOn(LogSwitch::kThreads));
    EXPECT_TRUE(prefs.GetBool("Auto-cue"));
    EXPECT_TRUE(prefs.GetBool("Always on top"));
    EXPECT_EQ(prefs.GetFloat("Long messenger duration"), 5.0);
    EXPECT_EQ(prefs.GetBrowserFontSize(), 14);
    EXPECT_EQ(prefs.GetLong("Number of undos"), 99);
    EXPECT_EQ(prefs.GetLong("On CD Insert"), 2);
    EXPECT_EQ(prefs.GetByName("of a later version")->Dictionary()->GetInteger("a"), 1);
    prefs.SetLong("Browser Font Size", 70000);
    EXPECT_EQ(prefs.GetBrowserFontSize(), 11);   // no 16-bit number
    EXPECT_EQ(prefs.GetLong("Browser Font Size"), 70000);
    prefs.SetByName("Browser Font Size", "large");
    EXPECT_EQ(prefs.GetLong("Browser Font Size"), 11);
    EXPECT_EQ(prefs.Save(), noErr);
    EXPECT_EQ(OnDisk().GetDictionary("of a later version").GetInteger("a"), 1);
}

TEST_F(PrefsTest, OlderNameIsReadWhenTheFirstIsMissing) {
    Put(i_files.oldFile, {{"Number of undos", 7}});
    {
        const CPreferences prefs(i_files);
        EXPECT_EQ(prefs.GetLong("Number of undos"), 7);
    }
    EXPECT_EQ(OnDisk().GetInteger("Number of undos"), 7);
    Put(i_files.oldFile, {{"Number of undos", 8}});
    const CPreferences prefs(i_files, {.saveAtEndB = false});
    EXPECT_EQ(prefs.GetLong("Number of undos"), 7);
}

TEST_F(PrefsTest, ABrokenFileIsKeptBeside) {
    std::string good;
    ASSERT_EQ(WritePropertyList(CCFDictionary{{"Number of undos", 7}}, good), noErr);
    std::string array;
    ASSERT_EQ(WritePropertyList(CFArray{1}, array), noErr);
    int roundL = 0;
    for (const std::string& broken : {std::string("no plist"), std::string(), good.substr(0, good.size() / 2), array}) {
        WriteWhole(i_files.file, broken);
        {
            const CPreferences prefs(i_files);
            EXPECT_EQ(prefs.GetLong("Number of undos"), 99);
        }
        ++roundL;
        const std::string mark = roundL == 1 ? " (broken)" : " (broken " + std::to_string(roundL) + ")";
        EXPECT_EQ(ReadWhole(i_folder / ("Vopla X Preferences" + mark + ".plist")), broken);
        EXPECT_EQ(OnDisk().GetInteger("Number of undos"), 99);
    }
}

TEST_F(PrefsTest, AFolderInPlaceOfTheFileAndAFullDisk) {
    std::filesystem::create_directories(i_files.file / "inside");
    OSErr diskErr = dskFulErr;
    int dirtyL = 0;
    CPreferences prefs(i_files, {.replace =
                                     [&](const std::filesystem::path& file, std::span<const std::byte> bytes) {
                                         return Failed(diskErr) ? diskErr : ReplaceFile(file, bytes);
                                     },
                                 .onDirty = [&] { ++dirtyL; }});
    EXPECT_EQ(prefs.GetLong("Number of undos"), 99);
    prefs.SetLong("Number of undos", 5);
    prefs.SetLong("Number of undos", 5);
    EXPECT_EQ(dirtyL, 1);
    EXPECT_TRUE(Failed(prefs.Save()));   // the folder
    EXPECT_TRUE(prefs.Gather().has_value());
    std::filesystem::remove_all(i_files.file);
    EXPECT_EQ(prefs.Save(), dskFulErr);
    EXPECT_TRUE(prefs.Gather().has_value());
    EXPECT_FALSE(std::filesystem::exists(i_files.file));
    diskErr = noErr;
    EXPECT_EQ(prefs.Save(), noErr);
    EXPECT_FALSE(prefs.Gather().has_value());
    EXPECT_EQ(OnDisk().GetInteger("Number of undos"), 5);
}

TEST_F(PrefsTest, WindowsAreCollectedAtSave) {
    {
        CPreferences prefs(
            i_files, {.windows = [] {
                return std::vector<WindowRecord>{{"Browser", 10, -20, 500, 700, true}, {"Tasks", 5, 5, 5, 5, true}};
            }});
        EXPECT_FALSE(prefs.Window("Browser"));
    }
    EXPECT_TRUE(OnDisk().GetBool("Browser Window Visible"));
    EXPECT_TRUE(OnDisk().Has("Browser Window Rectangle"));
    const CPreferences prefs(i_files, {.saveAtEndB = false});
    const auto window = prefs.Window("Browser");
    ASSERT_TRUE(window);
    EXPECT_EQ(window->leftS, -20);
    EXPECT_EQ(window->bottomS, 500);
    EXPECT_TRUE(window->visibleB);
    EXPECT_FALSE(prefs.Window("Tasks"));   // no height: could not be found again
}

TEST_F(PrefsTest, FoldersAreStoredAndAMissingCacheIsReset) {
    const PrefsOptions options{.musicFolder = i_folder.Path(), .cacheFolder = i_folder.Path(), .saveAtEndB = false};
    {
        const CPreferences prefs(i_files, options);
        EXPECT_EQ(prefs.MusicFolder(), i_folder.Path());
        EXPECT_EQ(prefs.GetDictionary("Cache Folder Location").GetInteger("type"), 4);
    }
    const CCFDictionary gone{{"type", 4}, {"path", "/no/such/folder"}};
    Put(i_files.file, {{"Music Library Location", gone}, {"Cache Folder Location", gone}});
    const CPreferences prefs(i_files, options);
    EXPECT_EQ(prefs.MusicFolder(), "/no/such/folder");   // a volume may come back
    EXPECT_EQ(prefs.CacheFolder(), i_folder.Path());
}

TEST_F(PrefsTest, ReadersRunBesideAWriterAndASave) {
    CPreferences prefs(i_files, {.saveAtEndB = false});
    std::atomic<bool> endB{false};
    std::vector<std::thread> readers;
    for (int n = 0; n < 3; ++n)
        readers.emplace_back([&] {
            while (!endB.load()) {
                const SuperString text = prefs.GetString("User email address");
                EXPECT_TRUE(text.Empty() || text.UTF8().size() == 100);   // never half of one
            }
        });
    for (int n = 0; n < 300; ++n) {
        prefs.SetString("User email address", SuperString(std::string(n % 2 == 0 ? 0 : 100, 'x')));
        EXPECT_EQ(n % 100 == 0 ? prefs.Save() : noErr, noErr);
    }
    endB = true;
    for (auto& reader : readers) reader.join();
}

TEST(ReplaceFile, FollowsALinkKeepsTheModeAndLeavesNothingBehind) {
    const TempFolder folder;
    WriteWhole(folder / "real", "old");
    std::filesystem::permissions(folder / "real", std::filesystem::perms(0640));
    std::filesystem::create_symlink(folder / "real", folder / "link");
    const std::string text = "new";
    ASSERT_EQ(ReplaceFile(folder / "link", std::as_bytes(std::span(text))), noErr);
    EXPECT_EQ(ReadWhole(folder / "real"), "new");
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link"));
    EXPECT_EQ(std::filesystem::status(folder / "real").permissions(), std::filesystem::perms(0640));
    std::filesystem::create_directories(folder / "folder");
    EXPECT_TRUE(Failed(ReplaceFile(folder / "folder", std::as_bytes(std::span(text)))));
    EXPECT_TRUE(Failed(ReplaceFile(folder / "real/below", std::as_bytes(std::span(text)))));
    EXPECT_EQ(ReplaceFile(folder / "deep/down/file", std::as_bytes(std::span(text))), noErr);
    std::size_t countL = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(folder.Path())) ++countL;
    EXPECT_EQ(countL, 4U);
}

}   // namespace
