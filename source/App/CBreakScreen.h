#pragma once
#include <filesystem>
#include <memory>

#include "App/CT_ReadBreakPicture.h"
#include "Platform/CMainLoop.h"
#include "Threads/CHandle.h"
#include "Values/PreferenceTable.h"

class CAS_QuickTimeVideo;
class CBreakOverlay;
class CCFPrefDictionary;
class CGraphicsPorts;

/** The path of what the video windows show between songs; empty for black. */
inline constexpr StringPref kPref_BreakPicture = "Break Picture";

/** The picture of the break: the file that the preference "Break Picture" names, on all ports while no song's picture
    is. A movie runs in a loop, without its sound, and stands still while nobody sees it. The file is read on a worker;
    what was shown before stays until then.
    Threads  main.
    Owner    CApp; ports and loop outlive it.
    Errors   a file that cannot be read leaves the windows black; the user is told, but at the start only the log. */
class CBreakScreen {
public:
    CBreakScreen(CGraphicsPorts& ports, CMainLoop& loop);
    ~CBreakScreen();
    CBreakScreen(const CBreakScreen&) = delete;
    CBreakScreen& operator=(const CBreakScreen&) = delete;

    /** Looks at the preference again. */
    void Follow(const CCFPrefDictionary& preferences);

private:
    friend class CT_ReadBreakPicture;
    /** What became of reading `file`. */
    void Take(const std::filesystem::path& file, BreakPicture picture, OSErr err);
    void Show(std::unique_ptr<CBreakOverlay> overlay);
    void Turn();
    void BeginAgain(CAS_QuickTimeVideo& movie);

    CGraphicsPorts& i_ports;
    CMainLoop& i_loop;
    CMainLoop::TimerID i_timer = 0;   // calls Turn while there is a movie
    std::filesystem::path i_file;     // the one that is wanted; empty for none
    bool i_tellB = false;             // it was chosen just now: a failure is shown
    std::unique_ptr<CBreakOverlay> i_overlay;
    std::uint64_t i_decodedL = 0;          // pictures of the movie up to its last beginning
    int i_waitL = 0;                       // turns until it is begun again
    CHandled<CBreakScreen> i_self{this};   // what a worker comes back by
};
