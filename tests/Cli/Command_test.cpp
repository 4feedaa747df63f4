#include "Cli/Command.h"

#include <algorithm>
#include <set>

#include "App/CApp.h"
#include "Cli/CliCommand.h"
#include "Cli/CliRun.h"
#include "Core/TempFolder.h"
#include "Platform/CFolders.h"

namespace {

std::vector<std::string> WordsOf(std::string_view text) {
    std::istringstream in{std::string(text)};
    return {std::istream_iterator<std::string>(in), {}};
}

TEST(Command, EachHasItsHelp) {
    std::set<std::string> all{""};
    for (const CliCommand& command : CliCommands()) {
        const CliRun run = RunCli([&] {
            auto words = WordsOf(command.words);
            words.emplace_back("--help");
            return words;
        }());
        EXPECT_EQ(run.status, 0) << command.words;
        EXPECT_NE(run.out.find("usage: vopla-cli " + command.Usage() + "\n"), std::string::npos) << run.out;
        EXPECT_NE(run.out.find(command.help), std::string::npos) << run.out;
        for (const CliOption& option : command.options)
            EXPECT_NE(run.out.find(option.help.substr(0, 12)), std::string::npos) << option.name << run.out;
        EXPECT_EQ(run.err, "");
        all.insert(WordsOf(command.words).front());
    }
    for (const std::string& group : all) {   // of each first word, and of the program
        std::vector<std::string> words{"--help"};
        if (!group.empty()) words.insert(words.begin(), group);
        const CliRun run = RunCli(words);
        EXPECT_EQ(run.status, 0) << group;
        for (const CliCommand& command : CliCommands())
            if (group.empty() || command.words.starts_with(group + " ")) {
                EXPECT_NE(run.out.find("  " + command.Usage() + "\n"), std::string::npos) << group << run.out;
            }
    }
    EXPECT_EQ(RunCli({"--version"}).out, CApp::DisplayName() + "\n");
    EXPECT_EQ(RunCli({"library", "list", "--version"}).status, 0);
}

TEST(Command, OptionsStandAnywhere) {
    const TempFolder root;
    const std::string folder = root.Path().string(), key = "Number of undos";
    const std::string wanted = "{\"key\":\"Number of undos\",\"type\":\"integer\",\"value\":99}\n";
    const std::vector<std::vector<std::string>> lines{
        {"--root", folder, "--json", "prefs", "get", key}, {"prefs", "--root", folder, "get", "--json", key},
        {"prefs", "get", key, "--json", "--root", folder}, {"prefs", "get", "--root=" + folder, "--", key},
        {"--json", "prefs", "get", "--root", folder, key},
    };
    for (const auto& words : lines) EXPECT_EQ(RunCli(words).out, wanted) << testing::PrintToString(words);
    for (std::size_t at = 0; at < 4; ++at) {   // and the form of an error with them
        std::vector<std::string> words{"prefs", "get", "nothing", "--root=" + folder};
        words.insert(words.begin() + static_cast<std::ptrdiff_t>(at), "--json");
        EXPECT_EQ(RunCli(words).err, "{\"error\":\"no such preference: nothing\",\"status\":-43}\n") << at;
    }
    CFolders::SetRoot({});
}

TEST(Command, WrongUseIsToldInOneLine) {
    const struct {
        std::vector<std::string> words;
        std::string told;
    } kCases[] = {
        {{"dance"}, "unknown command dance; usage: vopla-cli [--root DIR] [--json] COMMAND ..., see --help"},
        {{"library"}, "library wants a command; usage: library COMMAND ..., see --help"},
        {{"library", "lisst"}, "unknown command library lisst; usage: library COMMAND ..., see --help"},
        {{"--jsn", "library", "list"},
         "library list: The following argument was not expected: --jsn; usage: library list"},
        {{"library", "set", "17", "name"}, "library set: VALUE is required; usage: library set ID KEY VALUE"},
        {{"library", "set", "17", "PICH", "-3"}, "\"-3\" begins with \"-\": put it behind \"--\""},
        {{"--root=", "prefs", "list"}, "--root wants a value"},
        {{"name", "conform", "-x"}, "\"-x\" begins with \"-\": put it behind \"--\""},
        {{"library", "list", "--root"}, "usage: library list"},
        {{"library", "list", "--root", "--no-files"}, "--root wants a value"},
        {{"library", "list", "--root", ""}, "--root: wants a folder"},
        {{"library", "show", "17", "18"},
         "library show: The following argument was not expected: 18; usage: library show ID"},
        {{"audio", "render", "a", "--out", "a.wav", "--pitch", "13"}, "--pitch: 13 is not from -12 to 12"},
        {{"audio", "render", "a", "--out", "a.wav", "--tempo", "1,1"}, "--tempo: \"1,1\" is no number"},
        {{"audio", "render", "a", "--out", "a.wav", "--vocal", "1.5"}, "--vocal: \"1.5\" is no whole number"},
        {{"audio", "render", "a"}, "audio render: --out is required; usage: audio render FILE --out FILE.wav"},
        {{"play", "a", "--seconds", "-1"}, "--seconds: -1 is less than 0"},
        {{"cdg", "frame", "a", "--at", "1", "--at", "2", "--out", "p"}, "--at"},
    };
    for (const auto& c : kCases) {
        const CliRun run = RunCli(c.words);
        EXPECT_EQ(run.status, 2) << c.told;
        EXPECT_EQ(run.out, "") << c.told;
        EXPECT_TRUE(run.err.starts_with("vopla-cli: ")) << run.err;
        EXPECT_NE(run.err.find(c.told), std::string::npos) << run.err << " for " << c.told;
        EXPECT_EQ(std::ranges::count(run.err, '\n'), 1) << run.err;
    }
    EXPECT_EQ(RunCli({}).status, 2);
}

}   // namespace
