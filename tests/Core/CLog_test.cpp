#include "Core/CLog.h"

#include <filesystem>
#include <fstream>
#include <sstream>

namespace {

std::string Read(const std::filesystem::path& file) {
    std::stringstream all;
    all << std::ifstream(file).rdbuf();
    return all.str();
}

class LogTest : public testing::Test {
protected:
    void SetUp() override {
        std::string pattern = (std::filesystem::temp_directory_path() / "log-XXXXXX").string();
        i_folder = ::mkdtemp(pattern.data());
        i_file = i_folder / "deep" / "Vopla Log file.txt";
        CLog::Get().SetFile(i_file);
        CLog::Get().SetLive(true);
        CLog::Get().SetSwitch(LogSwitch::kLogging, true);
    }
    void TearDown() override {
        CLog::Get().SetFile({});
        CLog::Get().SetLive(false);
        std::filesystem::remove_all(i_folder);
    }
    std::filesystem::path i_folder, i_file;
};

TEST_F(LogTest, OneLineACallAndNoneWhenOff) {
    Log("first");
    LogF("%s\n", "second");
    CLog::Get().SetSwitch(LogSwitch::kThreads, true);
    LogIf(LogSwitch::kThreads, "third");
    CLog::Get().SetSwitch(LogSwitch::kLogging, false);   // the master: nothing below is written
    Log("off");
    LogIf(LogSwitch::kThreads, "off");
    CLog::Get().SetSwitch(LogSwitch::kLogging, true);
    CLog::Get().SetLive(false);
    Log("dead");
    EXPECT_EQ(Read(i_file), "opened log file at <" + i_file.string() + ">\nfirst\nsecond\nthird\n");
}

TEST_F(LogTest, KeepsThreeElders) {
    for (int round = 0; round < 5; ++round) {
        std::filesystem::create_directories(i_file.parent_path());
        { std::ofstream(i_file, std::ios::app) << "round " << round; }
        std::filesystem::resize_file(i_file, 10 * 1024 * 1024 + 1);
        CLog::Get().Close();
        Log("next");
    }
    EXPECT_EQ(Read(i_file.string() + ".3").substr(0, 7), "opened ");
    EXPECT_FALSE(std::filesystem::exists(i_file.string() + ".4"));
    EXPECT_LT(std::filesystem::file_size(i_file), 1000U);
}

TEST_F(LogTest, AFolderInPlaceOfTheFileLeavesItOff) {
    std::filesystem::create_directories(i_file);
    Log("nowhere");
    Log("nowhere");
    std::filesystem::remove(i_file);
    CLog::Get().Close();
    Log("somewhere");
    LogF("%.2f s", 1.5);   // whatever the locale of the process
    EXPECT_NE(Read(i_file).find("1.50 s"), std::string::npos);
    EXPECT_NE(Read(i_file).find("somewhere"), std::string::npos);
}

TEST(ErrorText, TableErrnoAndFallbacks) {
    const struct {
        int codeL;
        const char* textZ;
    } kCases[] = {{0, "Success"},
                  {-34, "Disk is full"},
                  {-30393, "Network Timeout"},
                  {2, "No such file or directory"},
                  {-12345, "Mac OS error"},
                  {99999, "Unknown error"}};
    for (const auto& c : kCases) EXPECT_EQ(ErrorText(c.codeL), c.textZ) << c.codeL;
}

}   // namespace
