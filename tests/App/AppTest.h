#pragma once
#include <gtest/gtest.h>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "App/CApp.h"
#include "App/CAppWindows_None.h"
#include "Core/CLog.h"
#include "Platform/CClock.h"
#include "Platform/CFolders.h"
#include "Platform/CMainLoop_Plain.h"
#include "Platform/CUserInterface_Scripted.h"
#include "Platform/Patience.h"

namespace fs = std::filesystem;

/** A root of its own, a plain loop, a user who was told what to answer. */
class AppTest : public testing::Test {
protected:
    void SetUp() override {
        std::string pattern = (fs::temp_directory_path() / "app-XXXXXX").string();
        i_folder = ::mkdtemp(pattern.data());
        CFolders::SetRoot(i_folder);
        CLog::Get().SetFile(i_folder / "log.txt");
    }
    void TearDown() override {
        CLog::Get().SetFile({});
        CLog::Get().SetLive(false);
        CFolders::SetRoot({});
        fs::remove_all(i_folder);
    }
    AppSetup MakeSetup() {
        return {.loop = i_loop,
                .ui = i_ui,
                .windows = i_windows,
                .resources = fs::path(VOPLA_SOURCE_DIR) / "resources",
                .prefs = PrefsFilesFor(i_folder / "config")};
    }
    std::string LogText() const {
        std::stringstream all;
        all << std::ifstream(i_folder / "log.txt").rdbuf();
        return all.str();
    }
    /** Passes of the loop until `done`, as long as a test has patience. */
    template <class Done>
    static bool RunUntil(CApp& app, Done&& done) {
        const double untilT = CClock::Get().SteadyT() + static_cast<double>(kPatience.count());
        while (!done() && CClock::Get().SteadyT() < untilT) app.RunLoopPass();
        return done();
    }

    fs::path i_folder;
    CMainLoop_Plain i_loop;
    CUserInterface_Scripted i_ui;
    CAppWindows_None i_windows;
};
