#include "Shell/Commands.h"

namespace {

using enum Command;
using enum CommandGroup;
constexpr auto kEverywhere = CommandScope::kEverywhere, kInVideo = CommandScope::kVideo,
               kBrowser = CommandScope::kBrowser, kInSongs = CommandScope::kSongs, kInLists = CommandScope::kLists;

/** A line stands above it in its menu. */
constexpr bool kLine = true;

// In the order of the enumeration, which RowOf counts on, and of the menus.
constexpr CommandRow kCommands[] = {
    {kPlayPause, kPlaying, kEverywhere, "play-pause", "Play / Pause", "Plays the selected song, or pauses and goes on",
     "Space", CommandMenu::kPlay},
    {kStop, kPlaying, kEverywhere, "stop", "Stop", "Ends the song", "Ctrl+.", CommandMenu::kPlay},
    {kRewind, kPlaying, kEverywhere, "rewind", "Rewind", "Back to the start of the song", "Ctrl+R", CommandMenu::kPlay},
    {kPrevious, kPlaying, kEverywhere, "previous", "Previous Song", "Plays the song before this one", "Ctrl+Left",
     CommandMenu::kPlay, kLine},
    {kNext, kPlaying, kEverywhere, "next", "Next Song", "Plays the next song of the list", "Ctrl+Right",
     CommandMenu::kPlay},
    {kGoBack, kPlaying, kEverywhere, "go-back", "Go Back",
     "Plays the song on that was cut off by hand, for half a minute after that", "Ctrl+B", CommandMenu::kPlay},
    {kSeekBack, kPlaying, kEverywhere, "seek-back", "Back 5 Seconds", "Goes back in the song", "Alt+Left Left",
     CommandMenu::kPlay, kLine},
    {kSeekForward, kPlaying, kEverywhere, "seek-forward", "Forward 5 Seconds", "Goes forward in the song",
     "Alt+Right Right", CommandMenu::kPlay},
    {kSeekBackFar, kPlaying, kEverywhere, "seek-back-far", "Back 30 Seconds", "Goes far back in the song",
     "Alt+Shift+Left Shift+Left", CommandMenu::kPlay},
    {kSeekForwardFar, kPlaying, kEverywhere, "seek-forward-far", "Forward 30 Seconds", "Goes far forward in the song",
     "Alt+Shift+Right Shift+Right", CommandMenu::kPlay},

    {kVolumeUp, kSound, kEverywhere, "volume-up", "Louder", "Raises the volume", "Ctrl+Up", CommandMenu::kSound},
    {kVolumeDown, kSound, kEverywhere, "volume-down", "Quieter", "Lowers the volume", "Ctrl+Down", CommandMenu::kSound},
    {kMute, kSound, kEverywhere, "mute", "Mute", "Turns the sound off and on", "Ctrl+M M", CommandMenu::kSound},
    {kOneLevel, kSound, kEverywhere, "one-level", "All Songs at One Level",
     "Songs that were measured are equally loud; off: as they were recorded", "", CommandMenu::kSound},
    {kPitchUp, kSound, kEverywhere, "pitch-up", "Pitch Up", "A semitone higher",
     "Ctrl+Shift+Up + =", CommandMenu::kSound, kLine},
    {kPitchDown, kSound, kEverywhere, "pitch-down", "Pitch Down", "A semitone lower", "Ctrl+Shift+Down -",
     CommandMenu::kSound},
    {kPitchReset, kSound, kEverywhere, "pitch-reset", "Original Pitch", "Sings as it was recorded", "Alt+0 0",
     CommandMenu::kSound},
    {kTempoUp, kSound, kEverywhere, "tempo-up", "Faster", "Raises the tempo", "Ctrl++ Ctrl+=", CommandMenu::kSound,
     kLine},
    {kTempoDown, kSound, kEverywhere, "tempo-down", "Slower", "Lowers the tempo", "Ctrl+-", CommandMenu::kSound},
    {kTempoReset, kSound, kEverywhere, "tempo-reset", "Original Tempo", "Plays as fast as it was recorded", "Ctrl+0",
     CommandMenu::kSound},
    {kVocalNext, kSound, kEverywhere, "vocal-next", "Next Vocal Mode", "Changes how the lead vocal is heard", "Alt+V V",
     CommandMenu::kSound, kLine},
    {kSlipSongEarlier, kSound, kEverywhere, "slip-song-earlier", "Lyrics of This Song Earlier",
     "Moves the picture of this song against its sound", "Alt+PgUp ,", CommandMenu::kSlip},
    {kSlipSongLater, kSound, kEverywhere, "slip-song-later", "Lyrics of This Song Later",
     "Moves the picture of this song against its sound", "Alt+PgDown .", CommandMenu::kSlip},
    {kSlipSongReset, kSound, kEverywhere, "slip-song-reset", "Lyrics of This Song in Step",
     "The picture of this song as it was recorded", "Ctrl+Alt+.", CommandMenu::kSlip},
    {kSlipAllEarlier, kSound, kEverywhere, "slip-all-earlier", "Lyrics of All Songs Earlier",
     "Moves every picture against its sound", "Alt+,", CommandMenu::kSlip, kLine},
    {kSlipAllLater, kSound, kEverywhere, "slip-all-later", "Lyrics of All Songs Later",
     "Moves every picture against its sound", "Alt+.", CommandMenu::kSlip},
    {kSlipAllReset, kSound, kEverywhere, "slip-all-reset", "Lyrics of All Songs in Step",
     "No picture is moved but by its own song", "Ctrl+Alt+,", CommandMenu::kSlip},

    {kFullScreen, kPicture, kEverywhere, "full-screen", "Full Screen",
     "The video window fills its display, or becomes a window again", "F F11", CommandMenu::kPicture},
    {kLeaveFullScreen, kPicture, kInVideo, "leave-full-screen", "Leave Full Screen",
     "The video windows become windows again; Escape does it in a video window", "Esc", CommandMenu::kPicture},
    {kNextDisplay, kPicture, kEverywhere, "next-display", "Full Screen on the Next Display",
     "Chooses another display for the full screen; the menu has them by name", "Ctrl+Shift+F", CommandMenu::kPicture},
    {kShowVideo, kPicture, kEverywhere, "show-video", "Video Window", "Shows or hides the video window", "Ctrl+1",
     CommandMenu::kWindow},
    {kShowVideo2, kPicture, kEverywhere, "show-video-2", "Second Video Window",
     "Shows or hides the second video window", "Ctrl+2", CommandMenu::kWindow},
    {kShowPreview, kPicture, kEverywhere, "show-preview", "Preview",
     "Shows in the main window what the room sees, or the cover of the song", "Ctrl+5", CommandMenu::kWindow},

    {kOpenFiles, kSongs, kBrowser, "open-files", "Add Files…", "Adds songs to the library", "Ctrl+O",
     CommandMenu::kFile},
    {kOpenFolder, kSongs, kBrowser, "open-folder", "Add Folder…", "Adds all songs of a folder to the library",
     "Ctrl+Shift+O", CommandMenu::kFile},
    {kPlaySelected, kSongs, kInSongs, "play-selected", "Play This Song", "Plays the selected row", "Return Enter",
     CommandMenu::kSongs},
    {kPlayNext, kSongs, kInSongs, "play-next", "Play Next", "Puts the selected songs behind the one that plays",
     "Ctrl+Return Ctrl+Enter", CommandMenu::kSongs},
    {kAddToList, kSongs, kInSongs, "add-to-list", "Add to List…", "Puts the selected songs on a list that you choose",
     "Ctrl+Shift+A", CommandMenu::kSongs},
    {kCopy, kSongs, kInSongs, "copy", "Copy", "For another list, or as text and files for other programs", "Ctrl+C",
     CommandMenu::kSongs, kLine},
    {kPaste, kSongs, kBrowser, "paste", "Paste", "Puts copied songs or files on the list that is shown", "Ctrl+V",
     CommandMenu::kSongs},
    {kEditCell, kSongs, kInSongs, "edit-cell", "Edit", "Changes the text under the cursor; Tab goes on to the next",
     "F2", CommandMenu::kSongs},
    {kFind, kSongs, kBrowser, "find", "Find", "Puts the cursor into the search field", "Ctrl+F /", CommandMenu::kSongs,
     kLine},
    {kShowPlaying, kSongs, kBrowser, "show-playing", "Show the Playing Song", "Goes to the row that plays", "Ctrl+L",
     CommandMenu::kSongs},
    {kShowUserOrder, kSongs, kBrowser, "show-user-order", "Show in My Order",
     "The rows stand as you put them, and can be moved", "Ctrl+Shift+M", CommandMenu::kSongs},
    {kUserOrder, kSongs, kBrowser, "user-order", "Keep This Order", "The order shown becomes the list's own", "",
     CommandMenu::kSongs},
    {kReveal, kSongs, kInSongs, "reveal", "Show Files", "Opens the folders of the selected songs", "Ctrl+Shift+R",
     CommandMenu::kSongs, kLine},
    {kConformNames, kSongs, kInSongs, "conform-names", "Conform Names",
     "Names the files of the selected songs after them", "", CommandMenu::kSongs},
    {kZip, kSongs, kInSongs, "zip", "Zip", "Packs sound and graphics of each selected song into one file", "",
     CommandMenu::kSongs},
    {kUnzip, kSongs, kInSongs, "unzip", "Unzip to Folder…",
     "Puts the files of the selected zips into a folder; the songs keep their zips", "", CommandMenu::kSongs},
    {kFindMissing, kSongs, kBrowser, "find-missing", "Find Missing",
     "Looks for the files of the selected songs, or of all, and marks what is missing", "", CommandMenu::kSongs, kLine},
    {kLocateMissing, kSongs, kInSongs, "locate-missing", "Locate Files…",
     "Asks for the folder in which the files of a missing song lie now", "", CommandMenu::kSongs},
    {kRemoveDuplicates, kSongs, kBrowser, "remove-duplicates", "Remove Duplicates…",
     "Of a song that stands in the library twice one row stays: of the selected rows, or of all", "",
     CommandMenu::kSongs},
    {kRemoveFromList, kSongs, kInSongs, "remove-from-list", "Remove", "Takes the selected rows out of this list", "Del",
     CommandMenu::kSongs, kLine},
    {kRemoveFromLibrary, kSongs, kInSongs, "remove-from-library", "Remove from Library",
     "Takes the selected songs out of the library and of all lists; their files stay", "Ctrl+Del", CommandMenu::kSongs},
    {kTrashOriginals, kSongs, kInSongs, "trash-originals", "Move Files to Trash…",
     "The selected songs leave the library, and their files go to the trash", "", CommandMenu::kSongs},

    {kNewList, kLists, kBrowser, "new-list", "New List", "Makes an empty list", "Ctrl+N", CommandMenu::kFile, kLine},
    {kRenameList, kLists, kInLists, "rename-list", "Rename List", "Gives the list another name", "F2",
     CommandMenu::kFile},
    {kOpenList, kLists, kInLists, "open-list", "Go to Its Songs", "Puts the cursor into the songs of the list",
     "Return Enter", CommandMenu::kNone},
    {kDeleteList, kLists, kInLists, "delete-list", "Delete List", "Deletes the list; its songs stay in the library",
     "Del", CommandMenu::kFile},

    {kPreferences, kProgram, kEverywhere, "preferences", "Preferences…",
     "What plays how, windows, sound, library, look and keys", "Ctrl+,", CommandMenu::kFile, kLine},
    {kQuit, kProgram, kEverywhere, "quit", "Quit", "Ends the program", "Ctrl+Q", CommandMenu::kFile, kLine},
    {kShowTasks, kProgram, kEverywhere, "show-tasks", "Tasks", "Shows what works in the background, and how far it is",
     "Ctrl+3", CommandMenu::kWindow},
    {kShowNotices, kProgram, kEverywhere, "show-notices", "Notices", "Shows all that was told since the start",
     "Ctrl+4", CommandMenu::kWindow},
    {kShortcuts, kProgram, kEverywhere, "shortcuts", "Keyboard Shortcuts", "Shows all keys on one sheet", "?",
     CommandMenu::kHelp},
    {kAbout, kProgram, kBrowser, "about", "About Vopla", "The version of the program, and of what it is built on", "",
     CommandMenu::kHelp},
};

}   // namespace

std::span<const CommandRow> CommandTable() noexcept { return kCommands; }

const CommandRow& RowOf(Command command) noexcept { return kCommands[static_cast<std::size_t>(command)]; }

const char* TitleOf(CommandGroup group) noexcept {
    switch (group) {
        case CommandGroup::kPlaying:
            return "Playing";
        case CommandGroup::kSound:
            return "Sound";
        case CommandGroup::kPicture:
            return "Picture";
        case CommandGroup::kSongs:
            return "Songs";
        case CommandGroup::kLists:
            return "Lists";
        case CommandGroup::kProgram:
            return "Program";
    }
    return "";
}

bool IsOfShow(const CommandRow& row) noexcept { return row.group <= CommandGroup::kPicture; }

bool ScopesMeet(CommandScope a, CommandScope b) noexcept {
    // The table and the column of lists never have the focus together, and both lie in the browser.
    if (a == b || a == CommandScope::kEverywhere || b == CommandScope::kEverywhere) return true;
    if (a == CommandScope::kVideo || b == CommandScope::kVideo) return false;
    return a == CommandScope::kBrowser || b == CommandScope::kBrowser;
}
