#include "Cli/CliPrefs.h"

#include <algorithm>
#include <optional>
#include <set>

#include "App/PreferenceRequest.h"
#include "Cli/CliRun.h"
#include "Core/CLog.h"
#include "Core/TempFolder.h"
#include "Platform/CFolders.h"
#include "Platform/CSecondInstance.h"
#include "Values/CPreferences.h"
#include "Values/PreferenceTable.h"

namespace {

TEST(CliPrefs, GetSetAndList) {
    const TempFolder root;
    const auto prefs = [&](const std::vector<std::string>& words) { return RunCli("prefs", root.Path(), true, words); };
    EXPECT_EQ(prefs({"get", "Web server port number"}).out,
              "{\"key\":\"Web server port number\",\"type\":\"integer\",\"value\":80}\n");
    EXPECT_FALSE(std::filesystem::exists(root / "config"));   // asking writes nothing
    const struct {
        std::vector<std::string> words;
        std::string shown;
    } kSets[] = {
        {{"set", "Web server port number", "8080"}, "\"type\":\"integer\",\"value\":8080}\n"},
        {{"set", "Global Song Sync Slip (300ths)", "--", "-1"}, "\"type\":\"integer\",\"value\":-1}\n"},
        {{"set", "--", "Long messenger duration", "-2.5"}, "\"type\":\"float\",\"value\":-2.5}\n"},
        {{"set", "Auto-cue", "false"}, "\"type\":\"bool\",\"value\":false}\n"},
        {{"set", "CDPedia Code", "null"}, "\"type\":\"string\",\"value\":\"null\"}\n"},
        {{"set", "Date and time of last crash report", "2024-02-29T12:00:00Z"},
         "\"type\":\"date\",\"value\":\"/Date(1709208000000+0000)/\"}\n"},
    };
    for (const auto& c : kSets) {
        const CliRun set = prefs(c.words);
        EXPECT_EQ(set.status, 0) << set.err;
        EXPECT_TRUE(set.out.ends_with(c.shown)) << set.out;
        const std::string key = c.words[1] == "--" ? c.words[2] : c.words[1];
        EXPECT_EQ(prefs({"get", key}).out, set.out);
    }
    const CliRun list = prefs({"list"});
    EXPECT_NE(list.out.find("{\"key\":\"Auto-cue\",\"type\":\"bool\",\"value\":false}\n"), std::string::npos);
    EXPECT_NE(list.out.find("\"type\":\"dict\",\"value\":{\"MediaStream Defaut Font\":\"Futura Condensed\""),
              std::string::npos);
    EXPECT_GT(std::ranges::count(list.out, '\n'), 150);
}

TEST(CliPrefs, Failures) {
    const TempFolder root;
    const struct {
        std::vector<std::string> words;
        int status;
        std::string statusText;
    } kCases[] = {
        {{"get", "no such"}, 1, "\"status\":-43}"},
        {{"set", "no such", "1"}, 1, "\"status\":-43}"},
        {{"set", "Number of undos", "many"}, 1, "\"status\":-50}"},
        {{"set", "Number of undos", "5 "}, 1, "\"status\":-50}"},
        {{"set", "Number of undos", ""}, 1, "\"status\":-50}"},
        {{"set", "Number of undos", "3000000000"}, 1, "\"status\":-50}"},
        {{"set", "Web server port number", "0"}, 1, "goes from 1 to 65535"},
        {{"set", "Auto Cue Threshold (0..1) (smaller is more sensitive)", "1.5"}, 1, "goes from 0 to 1"},
        {{"set", "Pre-Fetched Audio Blocks (must be > 2)", "26"}, 1, "goes from 2 to 25"},
        {{"set", "Auto-cue", "maybe"}, 1, "\"status\":-50}"},
        {{"set", "Long messenger duration", "nan"}, 1, "\"status\":-50}"},
        {{"set", "MediaStream Defauts", "x"}, 1, "\"status\":-50}"},
        {{"set", "CDPedia Code", "\xFF"}, 1, "\"status\":-50}"},
        {{"set", "Number of undos", "-1"}, 2, "\"status\":-50}"},
        {{"set", "Number of undos"}, 2, "\"status\":-50}"},
        {{"get", "[a,b]"}, 1, "no such preference: [a,b]"},
        {{"get", "++"}, 1, "no such preference: ++"},
        {{"get"}, 2, "\"status\":-50}"},
        {{"list", "more"}, 2, "\"status\":-50}"},
        {{}, 2, "\"status\":-50}"},
    };
    for (const auto& c : kCases) {
        const CliRun json = RunCli("prefs", root.Path(), true, c.words);
        EXPECT_EQ(json.status, c.status) << json.err;
        EXPECT_NE(json.err.find(c.statusText), std::string::npos) << json.err;
        const CliRun plain = RunCli("prefs", root.Path(), false, c.words);
        EXPECT_EQ(std::ranges::count(plain.err, '\n'), 1) << plain.err;
        EXPECT_EQ(plain.out, "");
    }
    EXPECT_FALSE(std::filesystem::exists(root / "config"));
    std::filesystem::create_directories(root / "config/Vopla/Vopla X Preferences.plist");
    EXPECT_EQ(RunCli("prefs", root.Path(), false, {"set", "Number of undos", "5"}).status, 1);
    EXPECT_EQ(RunCli("prefs", root.Path(), false, {"get", "Number of undos"}).status, 0);
}

TEST(CliPrefs, AHostThatRunsIsAskedAndTold) {
    const TempFolder root;
    CFolders::SetRoot(root.Path());
    const auto prefs = [&](const std::vector<std::string>& words) { return RunCli("prefs", root.Path(), true, words); };
    CPreferences hosts(PrefsFilesFor(root / "config/Vopla"), {.saveAtEndB = false});
    std::optional<CSecondInstance> host(std::in_place, root / "run/vopla", root.Path());
    ASSERT_EQ(host->Start({}), CSecondInstance::Role::kFirst);
    host->Listen([](const std::string&) {},
                 [&hosts](std::string_view request) { return AnswerPreferenceRequest(request, hosts); });
    const CliRun set = prefs({"set", "Number of undos", "5"});
    EXPECT_EQ(set.status, 0) << set.err;
    EXPECT_EQ(hosts.GetLong("Number of undos"), 5);
    EXPECT_EQ(prefs({"get", "Number of undos"}).out, set.out);
    EXPECT_NE(prefs({"list"}).out.find(set.out), std::string::npos);
    EXPECT_EQ(prefs({"set", "Music Library Location", root.Path().string()}).status, 0);
    EXPECT_EQ(hosts.MusicFolder(), root.Path());
    EXPECT_EQ(prefs({"set", "Number of undos", "many"}).status, 1);
    for (const char* const keyZ : {"Full Screen", "Current Volume (0-100)"}) {   // the host would write over it
        const CliRun own = prefs({"set", keyZ, "1"});
        EXPECT_EQ(own.status, 1);
        EXPECT_NE(own.err.find("belongs to the windows of the host that runs"), std::string::npos) << own.err;
        EXPECT_FALSE(hosts.GetByName(keyZ));
    }
    EXPECT_FALSE(std::filesystem::exists(root / "config"));   // it is the host that writes
    // One that has the lock and does not listen: nothing is set behind its back.
    std::filesystem::remove(host->SocketFile());
    EXPECT_NE(prefs({"set", "Number of undos", "6"}).err.find("the host that runs does not answer"), std::string::npos);
    EXPECT_EQ(prefs({"get", "Number of undos"}).status, 0);
    host.reset();
    EXPECT_EQ(prefs({"set", "Number of undos", "6"}).status, 0);
    EXPECT_TRUE(std::filesystem::exists(root / "config"));
    CFolders::SetRoot({});
}

TEST(CliPrefs, EveryKeyOfTheProgramCanBeSet) {
    const TempFolder root;
    // What the next load makes something else of, as it must.
    const std::set<std::string_view> kCorrected{"Messenger Rotation Template", "reset expander pref to OFF on startup"};
    for (const PrefRow& row : PreferenceTable()) {
        const bool folderB = row.rule == PrefRule::kFolder;
        const bool ownB = row.rule == PrefRule::kFixed || row.key == "Prefs file version (do not change!)";
        const bool wordsB = folderB || (row.type != CFType::kDictionary && !ownB);
        const std::string value = folderB                       ? root.Path().string()
                                  : row.type == CFType::kDate   ? "2024-02-29T12:00:00Z"
                                  : row.type == CFType::kString ? "text"
                                  : row.least > 1               ? std::to_string(static_cast<int>(row.least))
                                                                : "1";
        const CliRun set = RunCli("prefs", root.Path(), true, {"set", std::string(row.key), value});
        EXPECT_EQ(set.status, wordsB ? 0 : 1) << row.key << set.err;
        if (wordsB && !kCorrected.contains(row.key)) {
            EXPECT_EQ(RunCli("prefs", root.Path(), true, {"get", std::string(row.key)}).out, set.out) << row.key;
        }
    }
}

TEST(CliName, Conform) {
    const auto name = [](const std::vector<std::string>& words) { return RunCli("name", {}, false, words); };
    EXPECT_EQ(name({"conform", "the WIND and \"the\" inxs"}).out, "{\"text\":\"The Wind and \\\"The\\\" INXS\"}\n");
    EXPECT_EQ(name({"conform", "--", "-nsync"}).out, "{\"text\":\"'N Sync\"}\n");
    for (const auto& bad :
         {std::vector<std::string>{}, {"conform"}, {"other", "x"}, {"conform", "-x"}, {"conform", "a", "b"}})
        EXPECT_EQ(name(bad).status, 2);
}

}   // namespace
