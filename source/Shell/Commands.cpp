#include "Shell/Commands.h"

namespace {

using enum Command;
using enum CommandGroup;
constexpr auto kEverywhere = CommandScope::kEverywhere, kInVideo = CommandScope::kVideo,
               kBrowser = CommandScope::kBrowser, kInSongs = CommandScope::kSongs, kInLists = CommandScope::kLists;

// In the order of the enumeration, which RowOf counts on.
constexpr CommandRow kCommands[] = {
    {kPlayPause, kPlaying, kEverywhere, "play-pause", "Play / Pause", "Plays the selected song, or pauses and goes on",
     "Space"},
    {kStop, kPlaying, kEverywhere, "stop", "Stop", "Ends the song", "Ctrl+."},
    {kNext, kPlaying, kEverywhere, "next", "Next Song", "Plays the next song of the list", "Ctrl+Right"},
    {kPrevious, kPlaying, kEverywhere, "previous", "Previous Song", "Plays the song before this one", "Ctrl+Left"},
    {kGoBack, kPlaying, kEverywhere, "go-back", "Go Back",
     "Plays the song on that was cut off by hand, for half a minute after that", "Ctrl+B"},
    {kRewind, kPlaying, kEverywhere, "rewind", "Rewind", "Back to the start of the song", "Ctrl+R"},
    {kSeekBack, kPlaying, kEverywhere, "seek-back", "Back 5 Seconds", "Goes back in the song", "Alt+Left Left"},
    {kSeekForward, kPlaying, kEverywhere, "seek-forward", "Forward 5 Seconds", "Goes forward in the song",
     "Alt+Right Right"},
    {kSeekBackFar, kPlaying, kEverywhere, "seek-back-far", "Back 30 Seconds", "Goes far back in the song",
     "Alt+Shift+Left Shift+Left"},
    {kSeekForwardFar, kPlaying, kEverywhere, "seek-forward-far", "Forward 30 Seconds", "Goes far forward in the song",
     "Alt+Shift+Right Shift+Right"},

    {kVolumeUp, kSound, kEverywhere, "volume-up", "Louder", "Raises the volume", "Ctrl+Up"},
    {kVolumeDown, kSound, kEverywhere, "volume-down", "Quieter", "Lowers the volume", "Ctrl+Down"},
    {kMute, kSound, kEverywhere, "mute", "Mute", "Turns the sound off and on", "Ctrl+M M"},
    {kOneLevel, kSound, kEverywhere, "one-level", "All Songs at One Level",
     "Songs that were measured are equally loud; off: as they were recorded", ""},
    {kPitchUp, kSound, kEverywhere, "pitch-up", "Pitch Up", "A semitone higher", "Ctrl+Shift+Up + ="},
    {kPitchDown, kSound, kEverywhere, "pitch-down", "Pitch Down", "A semitone lower", "Ctrl+Shift+Down -"},
    {kPitchReset, kSound, kEverywhere, "pitch-reset", "Original Pitch", "Sings as it was recorded", "Alt+0 0"},
    {kTempoUp, kSound, kEverywhere, "tempo-up", "Faster", "Raises the tempo", "Ctrl++ Ctrl+="},
    {kTempoDown, kSound, kEverywhere, "tempo-down", "Slower", "Lowers the tempo", "Ctrl+-"},
    {kTempoReset, kSound, kEverywhere, "tempo-reset", "Original Tempo", "Plays as fast as it was recorded", "Ctrl+0"},
    {kVocalNext, kSound, kEverywhere, "vocal-next", "Next Vocal Mode", "Changes how the lead vocal is heard",
     "Alt+V V"},
    {kSlipSongEarlier, kSound, kEverywhere, "slip-song-earlier", "Lyrics of This Song Earlier",
     "Moves the picture of this song against its sound", "Alt+PgUp ,"},
    {kSlipSongLater, kSound, kEverywhere, "slip-song-later", "Lyrics of This Song Later",
     "Moves the picture of this song against its sound", "Alt+PgDown ."},
    {kSlipSongReset, kSound, kEverywhere, "slip-song-reset", "Lyrics of This Song in Step",
     "The picture of this song as it was recorded", "Ctrl+Alt+."},
    {kSlipAllEarlier, kSound, kEverywhere, "slip-all-earlier", "Lyrics of All Songs Earlier",
     "Moves every picture against its sound", "Alt+,"},
    {kSlipAllLater, kSound, kEverywhere, "slip-all-later", "Lyrics of All Songs Later",
     "Moves every picture against its sound", "Alt+."},
    {kSlipAllReset, kSound, kEverywhere, "slip-all-reset", "Lyrics of All Songs in Step",
     "No picture is moved but by its own song", "Ctrl+Alt+,"},

    {kFullScreen, kPicture, kEverywhere, "full-screen", "Full Screen",
     "The video window fills its display, or becomes a window again", "F F11"},
    {kLeaveFullScreen, kPicture, kInVideo, "leave-full-screen", "Leave Full Screen",
     "The video windows become windows again; Escape does it in a video window", "Esc"},
    {kNextDisplay, kPicture, kEverywhere, "next-display", "Full Screen on the Next Display",
     "Chooses another display for the full screen; the menu has them by name", "Ctrl+Shift+F"},
    {kShowVideo, kPicture, kEverywhere, "show-video", "Video Window", "Shows or hides the video window", "Ctrl+1"},
    {kShowVideo2, kPicture, kEverywhere, "show-video-2", "Second Video Window",
     "Shows or hides the second video window", "Ctrl+2"},
    {kShowTasks, kProgram, kEverywhere, "show-tasks", "Tasks", "Shows what works in the background, and how far it is",
     "Ctrl+3"},
    {kShowPreview, kPicture, kEverywhere, "show-preview", "Preview",
     "Shows in the main window what the room sees, or the cover of the song", "Ctrl+5"},
    {kShowNotices, kProgram, kEverywhere, "show-notices", "Notices", "Shows all that was told since the start",
     "Ctrl+4"},

    {kPlaySelected, kSongs, kInSongs, "play-selected", "Play This Song", "Plays the selected row", "Return Enter"},
    {kPlayNext, kSongs, kInSongs, "play-next", "Play Next", "Puts the selected songs behind the one that plays",
     "Ctrl+Return Ctrl+Enter"},
    {kAddToList, kSongs, kInSongs, "add-to-list", "Add to List…", "Puts the selected songs on a list that you choose",
     "Ctrl+Shift+A"},
    {kCopy, kSongs, kInSongs, "copy", "Copy", "For another list, or as text and files for other programs", "Ctrl+C"},
    {kPaste, kSongs, kBrowser, "paste", "Paste", "Puts copied songs or files on the list that is shown", "Ctrl+V"},
    {kEditCell, kSongs, kInSongs, "edit-cell", "Edit", "Changes the text under the cursor; Tab goes on to the next",
     "F2"},
    {kRemoveFromList, kSongs, kInSongs, "remove-from-list", "Remove", "Takes the selected rows out of this list",
     "Del"},
    {kRemoveFromLibrary, kSongs, kInSongs, "remove-from-library", "Remove from Library",
     "Takes the selected songs out of the library and of all lists; their files stay", "Ctrl+Del"},
    {kTrashOriginals, kSongs, kInSongs, "trash-originals", "Move Files to Trash…",
     "The selected songs leave the library, and their files go to the trash", ""},
    {kReveal, kSongs, kInSongs, "reveal", "Show Files", "Opens the folders of the selected songs", "Ctrl+Shift+R"},
    {kZip, kSongs, kInSongs, "zip", "Zip", "Packs sound and graphics of each selected song into one file", ""},
    {kUnzip, kSongs, kInSongs, "unzip", "Unzip to Folder…",
     "Puts the files of the selected zips into a folder; the songs keep their zips", ""},
    {kConformNames, kSongs, kInSongs, "conform-names", "Conform Names",
     "Names the files of the selected songs after them", ""},
    {kRemoveDuplicates, kSongs, kBrowser, "remove-duplicates", "Remove Duplicates…",
     "Of a song that stands in the library twice one row stays: of the selected rows, or of all", ""},
    {kFindMissing, kSongs, kBrowser, "find-missing", "Find Missing",
     "Looks for the files of the selected songs, or of all, and marks what is missing", ""},
    {kLocateMissing, kSongs, kInSongs, "locate-missing", "Locate Files…",
     "Asks for the folder in which the files of a missing song lie now", ""},
    {kShowPlaying, kSongs, kBrowser, "show-playing", "Show the Playing Song", "Goes to the row that plays", "Ctrl+L"},
    {kFind, kSongs, kBrowser, "find", "Find", "Puts the cursor into the search field", "Ctrl+F /"},
    {kUserOrder, kSongs, kBrowser, "user-order", "Keep This Order", "The order shown becomes the list's own", ""},
    {kShowUserOrder, kSongs, kBrowser, "show-user-order", "Show in My Order",
     "The rows stand as you put them, and can be moved", "Ctrl+Shift+M"},

    {kNewList, kLists, kBrowser, "new-list", "New List", "Makes an empty list", "Ctrl+N"},
    {kOpenList, kLists, kInLists, "open-list", "Go to Its Songs", "Puts the cursor into the songs of the list",
     "Return Enter"},
    {kRenameList, kLists, kInLists, "rename-list", "Rename List", "Gives the list another name", "F2"},
    {kDeleteList, kLists, kInLists, "delete-list", "Delete List", "Deletes the list; its songs stay in the library",
     "Del"},

    {kOpenFiles, kProgram, kBrowser, "open-files", "Add Files…", "Adds songs to the library", "Ctrl+O"},
    {kOpenFolder, kProgram, kBrowser, "open-folder", "Add Folder…", "Adds all songs of a folder to the library",
     "Ctrl+Shift+O"},
    {kPreferences, kProgram, kEverywhere, "preferences", "Preferences…",
     "What plays how, windows, sound, library, look and keys", "Ctrl+,"},
    {kShortcuts, kProgram, kEverywhere, "shortcuts", "Keyboard Shortcuts", "Shows all keys on one sheet", "?"},
    {kAbout, kProgram, kBrowser, "about", "About Vopla", "The version of the program, and of what it is built on", ""},
    {kQuit, kProgram, kEverywhere, "quit", "Quit", "Ends the program", "Ctrl+Q"},
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
