#include "Platform/Helper.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>

namespace {

TEST(Helper, ExitCodesSignalsAndFailures) {
    const struct {
        const char* name;
        const char* script;
        int exitCode;
        bool timedOutB;
        double seconds;
    } kCases[] = {
        {"success", "exit 0", 0, false, 20},
        {"failure", "exit 7", 7, false, 20},
        {"signal", "kill -9 $$", 128 + SIGKILL, false, 20},
        {"reads from nothing", "read line; exit 3", 3, false, 20},
        {"too slow", "sleep 60", 128 + SIGTERM, true, 0.05},
        {"too slow and deaf", "trap '' TERM; while :; do sleep 0.1; done", 128 + SIGKILL, true, 0.3},
    };
    for (const auto& c : kCases) {
        const HelperResult result = RunHelper("sh", {"-c", c.script}, c.seconds);
        EXPECT_EQ(result.errnoL, 0) << c.name;
        EXPECT_EQ(result.exitCode, c.exitCode) << c.name;
        EXPECT_EQ(result.timedOutB, c.timedOutB) << c.name;
    }
    EXPECT_EQ(RunHelper("/nowhere/helper", {}, 1).errnoL, ENOENT);
    EXPECT_EQ(StartHelper("/nowhere/helper", {}), ENOENT);
}

TEST(Helper, ArgumentsPassNoShellAndHandlesStayHere) {
    std::string pattern = "/tmp/helper-XXXXXX";
    const std::filesystem::path folder = ::mkdtemp(pattern.data());
    std::ofstream open(folder / "open");   // a handle that must not reach the child
    const std::string argument = "a b; $(touch x) \"'*";
    const std::string script = "printf %s \"$1\" > \"$2/out\"; ls -l /proc/self/fd > \"$2/handles\"";
    EXPECT_EQ(RunHelper("sh", {"-c", script, "sh", argument, folder.string()}, 20).exitCode, 0);
    const auto text = [&](const char* name) {
        std::ifstream in(folder / name);
        return std::string(std::istreambuf_iterator<char>(in), {});
    };
    EXPECT_EQ(text("out"), argument);
    EXPECT_EQ(text("handles").find("/open"), std::string::npos);
    EXPECT_NE(text("handles").find("/dev/null"), std::string::npos);
    std::filesystem::remove_all(folder);
}

}   // namespace
