#pragma once
#include <gtest/gtest.h>
#include <QtTest/QTest>
#include <QtWidgets/QtWidgets>
#include <semaphore>

#include "App/CNotices.h"
#include "Graphics/CGraphicsPorts.h"
#include "Platform/CAudioOutput_Null.h"
#include "Platform/CClock.h"
#include "Platform/CUserInterface_Scripted.h"
#include "Play/CPlayControl.h"
#include "Play/CPlayHost.h"
#include "Shell/CSongTableModel.h"
#include "Shell/XActions.h"
#include "Shell/XBrowserWindow.h"
#include "Shell/XSongTable.h"
#include "Shell/XSourceList.h"
#include "SongFiles/CLibraryCommands.h"
#include "SongFiles/FileWorkTest.h"
#include "Values/CPreferences.h"
#include "Widgets/QtApp.h"

using Gate = std::counting_semaphore<64>;

/** A machine that does not say which devices it has before it may. */
class SlowOutput final : public CAudioOutput_Null {
public:
    explicit SlowOutput(std::shared_ptr<Gate> gateRef) : i_gateRef(std::move(gateRef)) {}
    std::vector<std::string> DeviceNames() override {
        i_gateRef->acquire();
        return {"System Default", "Loudspeaker", "Television"};
    }

private:
    const std::shared_ptr<Gate> i_gateRef;
};

/** The main window over a library of its own; nothing plays. */
class BrowserTest : public FileWorkTest, private CPlayHost {
protected:
    BrowserTest() : i_prefs(PrefsFilesFor(i_folder), {.saveAtEndB = false}), i_play(*this) {
        App();
        for (const char* const nameZ : {"Alpha", "Beta", "Gamma"})
            i_songs.push_back(Song(nameZ, "Somebody").GetSongID());
        i_databaseP->AddSongsToLibrary(i_songs);
        i_commandsP = std::make_unique<CLibraryCommands>(*i_databaseP, i_ui);
        i_windowP = std::make_unique<XBrowserWindow>(BrowserSetup{.database = *i_databaseP,
                                                                  .play = i_play,
                                                                  .prefs = i_prefs,
                                                                  .commands = *i_commandsP,
                                                                  .notices = i_notices,
                                                                  .portsP = &i_ports});
        i_windowP->show();
        i_windowP->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(i_windowP.get(), 120'000));
    }
    ~BrowserTest() override {
        i_gateRef->release(32);   // nobody thinks for ever
        i_windowP.reset();
        i_commandsP.reset();
    }

    template <class Widget>
    Widget& Find() {
        auto* const widgetP = i_windowP->findChild<Widget*>();
        EXPECT_NE(widgetP, nullptr);
        return *widgetP;
    }
    QLineEdit& Search() { return Find<QLineEdit>(); }
    /** Counts what a command is asked to do, instead of doing it. */
    void Count(Command command) {
        QAction& action = i_windowP->Actions().Get(command);
        action.disconnect(SIGNAL(triggered(bool)));
        i_windowP->Actions().On(
            command, [this] { ++i_askedL; }, [] { return true; });
        i_windowP->Actions().Refresh();
    }
    void Turn() {
        // What removes rows waits for sorts: no list is being sorted afterwards.
        ASSERT_TRUE(RunUntil([this, n = 0]() mutable {
            QApplication::processEvents();
            return ++n > 3 && std::ranges::none_of(i_databaseP->PlayLists(), &CPlayList::IsSorting);
        }));
    }

    const std::shared_ptr<Gate> i_gateRef = std::make_shared<Gate>(0);   // before each answer of the machine
    CGraphicsPorts i_ports;
    CUserInterface_Scripted i_ui;
    CPreferences i_prefs;
    std::vector<SongID> i_songs;
    CPlayControl i_play;
    std::unique_ptr<CLibraryCommands> i_commandsP;
    CNotices i_notices{[this] {
        if (i_windowP != nullptr) i_windowP->NoticesChanged();
    }};
    std::unique_ptr<XBrowserWindow> i_windowP;
    int i_askedL = 0;

private:
    CSongDatabase& Database() override { return *i_databaseP; }
    CCFPrefDictionary& Preferences() override { return i_prefs; }
    CUserInterface& Ui() override { return i_ui; }
    AudioOutputChoice MakeOutput(const std::string& device) override {
        return {std::make_unique<SlowOutput>(i_gateRef), device};
    }
    CGraphicsPorts& Ports() override { return i_ports; }
    void Deselect() override { i_windowP->Deselect(); }
};

/** Each control of the window and below it has a name and a description for screen readers. */
void ExpectNames(QWidget& top);
