#pragma once
#include <gtest/gtest.h>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>

#include "Core/AlertHook.h"
#include "Core/CLog.h"
#include "Files/CFileRef.h"
#include "Platform/CFileCalls.h"
#include "Platform/CFolders.h"

/** A root of its own, a log of its own, and the file calls of the machine again at the end. */
class FileTest : public testing::Test {
public:
    using Path = std::filesystem::path;

protected:
    void SetUp() override {
        // In memory where that is possible: a sync costs nothing there.
        std::string pattern = "/dev/shm/files-XXXXXX", other = "/tmp/files-XXXXXX";
        i_otherVolume = ::mkdtemp(other.data());
        i_root = ::mkdtemp(pattern.data()) != nullptr ? Path(pattern) : i_otherVolume / "root";
        CFolders::SetRoot(i_root);
        std::filesystem::create_directories(i_root / "songs");
        CLog::Get().SetFile(i_root / "log");
        CLog::Get().SetLive(true);
        CLog::Get().SetSwitch(LogSwitch::kLogging, true);
        s_alerts.clear();
        SetAlertHook([](std::string_view message, std::string_view) { s_alerts.emplace_back(message); });
    }
    void TearDown() override {
        CFileCalls::Install(nullptr);
        SetAlertHook(nullptr);
        CLog::Get().SetLive(false);
        CLog::Get().SetFile({});
        CFolders::SetRoot({});
        std::filesystem::remove_all(i_root);
        std::filesystem::remove_all(i_otherVolume);
    }
    static void Write(const Path& file, const std::string& text) {
        std::ofstream out(file, std::ios::binary | std::ios::trunc);
        out << text;
    }
    /** "(none)" for no file. */
    static std::string Read(const Path& file) {
        std::ifstream in(file, std::ios::binary);
        return in ? std::string(std::istreambuf_iterator<char>(in), {}) : "(none)";
    }
    std::string LogText() const { return Read(i_root / "log"); }
    bool Logged(const std::string& text) const { return LogText().find(text) != std::string::npos; }
    static std::set<std::string> Names(const Path& folder) {
        std::set<std::string> names;
        std::error_code none;
        for (const auto& entry : std::filesystem::directory_iterator(folder, none))
            names.insert(entry.path().filename());
        return names;
    }
    /** /dev/shm and /tmp are two devices: a real second volume. */
    bool TwoVolumes() const {
        FileInfo one, two;
        return CFileCalls::Get().Look(i_root, true, one) == 0 &&
               CFileCalls::Get().Look(i_otherVolume, true, two) == 0 && one.deviceL != two.deviceL;
    }

    Path i_root, i_otherVolume;
    static inline std::vector<std::string> s_alerts;
};
