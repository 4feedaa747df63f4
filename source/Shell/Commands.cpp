#include "Shell/Commands.h"

#include "Core/Localize.h"

namespace {

using enum Command;
using enum CommandGroup;
constexpr auto kEverywhere = CommandScope::kEverywhere, kInVideo = CommandScope::kVideo,
               kBrowser = CommandScope::kBrowser, kInSongs = CommandScope::kSongs, kInLists = CommandScope::kLists;

/** A line stands above it in its menu. */
constexpr bool kLine = true;

// In the order of the enumeration, which RowOf counts on, and of the menus.
constexpr CommandRow kCommands[] = {
    {kPlayPause, kPlaying, kEverywhere, "play-pause", N_("Play / Pause"),
     N_("Plays the selected song, or pauses and goes on"), "Space", CommandMenu::kPlay},
    {kStop, kPlaying, kEverywhere, "stop", N_("Stop"), N_("Ends the song"), "Ctrl+.", CommandMenu::kPlay},
    {kRewind, kPlaying, kEverywhere, "rewind", N_("Rewind"), N_("Back to the start of the song"), "Ctrl+R",
     CommandMenu::kPlay},
    {kPrevious, kPlaying, kEverywhere, "previous", N_("Previous Song"), N_("Plays the song before this one"),
     "Ctrl+Left", CommandMenu::kPlay, kLine},
    {kNext, kPlaying, kEverywhere, "next", N_("Next Song"), N_("Plays the next song of the list"), "Ctrl+Right",
     CommandMenu::kPlay},
    {kGoBack, kPlaying, kEverywhere, "go-back", N_("Go Back"),
     N_("Plays the song on that was cut off by hand, for half a minute after that"), "Ctrl+B", CommandMenu::kPlay},
    {kSeekBack, kPlaying, kEverywhere, "seek-back", N_("Back 5 Seconds"), N_("Goes back in the song"), "Alt+Left Left",
     CommandMenu::kPlay, kLine},
    {kSeekForward, kPlaying, kEverywhere, "seek-forward", N_("Forward 5 Seconds"), N_("Goes forward in the song"),
     "Alt+Right Right", CommandMenu::kPlay},
    {kSeekBackFar, kPlaying, kEverywhere, "seek-back-far", N_("Back 30 Seconds"), N_("Goes far back in the song"),
     "Alt+Shift+Left Shift+Left", CommandMenu::kPlay},
    {kSeekForwardFar, kPlaying, kEverywhere, "seek-forward-far", N_("Forward 30 Seconds"),
     N_("Goes far forward in the song"), "Alt+Shift+Right Shift+Right", CommandMenu::kPlay},

    {kVolumeUp, kSound, kEverywhere, "volume-up", N_("Louder"), N_("Raises the volume"), "Ctrl+Up",
     CommandMenu::kSound},
    {kVolumeDown, kSound, kEverywhere, "volume-down", N_("Quieter"), N_("Lowers the volume"), "Ctrl+Down",
     CommandMenu::kSound},
    {kMute, kSound, kEverywhere, "mute", N_("Mute"), N_("Turns the sound off and on"), "Ctrl+M M", CommandMenu::kSound},
    {kOneLevel, kSound, kEverywhere, "one-level", N_("All Songs at One Level"),
     N_("Songs that were measured are equally loud; off: as they were recorded"), "", CommandMenu::kSound},
    {kPitchUp, kSound, kEverywhere, "pitch-up", N_("Pitch Up"), N_("A semitone higher"),
     "Ctrl+Shift+Up + =", CommandMenu::kSound, kLine},
    {kPitchDown, kSound, kEverywhere, "pitch-down", N_("Pitch Down"), N_("A semitone lower"), "Ctrl+Shift+Down -",
     CommandMenu::kSound},
    {kPitchReset, kSound, kEverywhere, "pitch-reset", N_("Original Pitch"), N_("Sings as it was recorded"), "Alt+0 0",
     CommandMenu::kSound},
    {kTempoUp, kSound, kEverywhere, "tempo-up", N_("Faster"), N_("Raises the tempo"),
     "Ctrl++ Ctrl+=", CommandMenu::kSound, kLine},
    {kTempoDown, kSound, kEverywhere, "tempo-down", N_("Slower"), N_("Lowers the tempo"), "Ctrl+-",
     CommandMenu::kSound},
    {kTempoReset, kSound, kEverywhere, "tempo-reset", N_("Original Tempo"), N_("Plays as fast as it was recorded"),
     "Ctrl+0", CommandMenu::kSound},
    {kVocalNext, kSound, kEverywhere, "vocal-next", N_("Next Vocal Mode"), N_("Changes how the lead vocal is heard"),
     "Alt+V V", CommandMenu::kSound, kLine},
    {kSlipSongEarlier, kSound, kEverywhere, "slip-song-earlier", N_("Lyrics of This Song Earlier"),
     N_("Moves the picture of this song against its sound"), "Alt+PgUp ,", CommandMenu::kSlip},
    {kSlipSongLater, kSound, kEverywhere, "slip-song-later", N_("Lyrics of This Song Later"),
     N_("Moves the picture of this song against its sound"), "Alt+PgDown .", CommandMenu::kSlip},
    {kSlipSongReset, kSound, kEverywhere, "slip-song-reset", N_("Lyrics of This Song in Step"),
     N_("The picture of this song as it was recorded"), "Ctrl+Alt+.", CommandMenu::kSlip},
    {kSlipAllEarlier, kSound, kEverywhere, "slip-all-earlier", N_("Lyrics of All Songs Earlier"),
     N_("Moves every picture against its sound"), "Alt+,", CommandMenu::kSlip, kLine},
    {kSlipAllLater, kSound, kEverywhere, "slip-all-later", N_("Lyrics of All Songs Later"),
     N_("Moves every picture against its sound"), "Alt+.", CommandMenu::kSlip},
    {kSlipAllReset, kSound, kEverywhere, "slip-all-reset", N_("Lyrics of All Songs in Step"),
     N_("No picture is moved but by its own song"), "Ctrl+Alt+,", CommandMenu::kSlip},

    {kFullScreen, kPicture, kEverywhere, "full-screen", N_("Full Screen"),
     N_("The video window fills its display, or becomes a window again"), "F F11", CommandMenu::kPicture},
    {kLeaveFullScreen, kPicture, kInVideo, "leave-full-screen", N_("Leave Full Screen"),
     N_("The video windows become windows again; Escape does it in a video window"), "Esc", CommandMenu::kPicture},
    {kNextDisplay, kPicture, kEverywhere, "next-display", N_("Full Screen on the Next Display"),
     N_("Chooses another display for the full screen; the menu has them by name"), "Ctrl+Shift+F",
     CommandMenu::kPicture},
    {kShowVideo, kPicture, kEverywhere, "show-video", N_("Video Window"), N_("Shows or hides the video window"),
     "Ctrl+1", CommandMenu::kWindow},
    {kShowVideo2, kPicture, kEverywhere, "show-video-2", N_("Second Video Window"),
     N_("Shows or hides the second video window"), "Ctrl+2", CommandMenu::kWindow},
    {kShowPreview, kPicture, kEverywhere, "show-preview", N_("Preview"),
     N_("Shows in the main window what the room sees, or the cover of the song"), "Ctrl+5", CommandMenu::kWindow},

    {kOpenFiles, kSongs, kBrowser, "open-files", N_("Add Files…"), N_("Adds songs to the library"), "Ctrl+O",
     CommandMenu::kFile},
    {kOpenFolder, kSongs, kBrowser, "open-folder", N_("Add Folder…"), N_("Adds all songs of a folder to the library"),
     "Ctrl+Shift+O", CommandMenu::kFile},
    {kPlaySelected, kSongs, kInSongs, "play-selected", N_("Play This Song"), N_("Plays the selected row"),
     "Return Enter", CommandMenu::kSongs},
    {kPlayNext, kSongs, kInSongs, "play-next", N_("Play Next"), N_("Puts the selected songs behind the one that plays"),
     "Ctrl+Return Ctrl+Enter", CommandMenu::kSongs},
    {kAddToList, kSongs, kInSongs, "add-to-list", N_("Add to List…"),
     N_("Puts the selected songs on a list that you choose"), "Ctrl+Shift+A", CommandMenu::kSongs},
    {kCopy, kSongs, kInSongs, "copy", N_("Copy"), N_("For another list, or as text and files for other programs"),
     "Ctrl+C", CommandMenu::kSongs, kLine},
    {kPaste, kSongs, kBrowser, "paste", N_("Paste"), N_("Puts copied songs or files on the list that is shown"),
     "Ctrl+V", CommandMenu::kSongs},
    {kEditCell, kSongs, kInSongs, "edit-cell", N_("Edit"),
     N_("Changes the text under the cursor; Tab goes on to the next"), "F2", CommandMenu::kSongs},
    {kFind, kSongs, kBrowser, "find", N_("Find"), N_("Puts the cursor into the search field"), "Ctrl+F /",
     CommandMenu::kSongs, kLine},
    {kShowPlaying, kSongs, kBrowser, "show-playing", N_("Show the Playing Song"), N_("Goes to the row that plays"),
     "Ctrl+L", CommandMenu::kSongs},
    {kShowUserOrder, kSongs, kBrowser, "show-user-order", N_("Show in My Order"),
     N_("The rows stand as you put them, and can be moved"), "Ctrl+Shift+M", CommandMenu::kSongs},
    {kUserOrder, kSongs, kBrowser, "user-order", N_("Keep This Order"), N_("The order shown becomes the list's own"),
     "", CommandMenu::kSongs},
    {kReveal, kSongs, kInSongs, "reveal", N_("Show Files"), N_("Opens the folders of the selected songs"),
     "Ctrl+Shift+R", CommandMenu::kSongs, kLine},
    {kConformNames, kSongs, kInSongs, "conform-names", N_("Conform Names"),
     N_("Names the files of the selected songs after them"), "", CommandMenu::kSongs},
    {kZip, kSongs, kInSongs, "zip", N_("Zip"), N_("Packs sound and graphics of each selected song into one file"), "",
     CommandMenu::kSongs},
    {kUnzip, kSongs, kInSongs, "unzip", N_("Unzip to Folder…"),
     N_("Puts the files of the selected zips into a folder; the songs keep their zips"), "", CommandMenu::kSongs},
    {kFindMissing, kSongs, kBrowser, "find-missing", N_("Find Missing"),
     N_("Looks for the files of the selected songs, or of all, and marks what is missing"), "", CommandMenu::kSongs,
     kLine},
    {kLocateMissing, kSongs, kInSongs, "locate-missing", N_("Locate Files…"),
     N_("Asks for the folder in which the files of a missing song lie now"), "", CommandMenu::kSongs},
    {kRemoveDuplicates, kSongs, kBrowser, "remove-duplicates", N_("Remove Duplicates…"),
     N_("Of a song that stands in the library twice one row stays: of the selected rows, or of all"), "",
     CommandMenu::kSongs},
    {kRemoveFromList, kSongs, kInSongs, "remove-from-list", N_("Remove"),
     N_("Takes the selected rows out of this list"), "Del", CommandMenu::kSongs, kLine},
    {kRemoveFromLibrary, kSongs, kInSongs, "remove-from-library", N_("Remove from Library"),
     N_("Takes the selected songs out of the library and of all lists; their files stay"), "Ctrl+Del",
     CommandMenu::kSongs},
    {kTrashOriginals, kSongs, kInSongs, "trash-originals", N_("Move Files to Trash…"),
     N_("The selected songs leave the library, and their files go to the trash"), "", CommandMenu::kSongs},

    {kNewList, kLists, kBrowser, "new-list", N_("New List"), N_("Makes an empty list"), "Ctrl+N", CommandMenu::kFile,
     kLine},
    {kRenameList, kLists, kInLists, "rename-list", N_("Rename List"), N_("Gives the list another name"), "F2",
     CommandMenu::kFile},
    {kOpenList, kLists, kInLists, "open-list", N_("Go to Its Songs"), N_("Puts the cursor into the songs of the list"),
     "Return Enter", CommandMenu::kNone},
    {kDeleteList, kLists, kInLists, "delete-list", N_("Delete List"),
     N_("Deletes the list; its songs stay in the library"), "Del", CommandMenu::kFile},

    {kPreferences, kProgram, kEverywhere, "preferences", N_("Preferences…"),
     N_("What plays how, windows, sound, library, look and keys"), "Ctrl+,", CommandMenu::kFile, kLine},
    {kQuit, kProgram, kEverywhere, "quit", N_("Quit"), N_("Ends the program"), "Ctrl+Q", CommandMenu::kFile, kLine},
    {kShowTasks, kProgram, kEverywhere, "show-tasks", N_("Tasks"),
     N_("Shows what works in the background, and how far it is"), "Ctrl+3", CommandMenu::kWindow},
    {kShowNotices, kProgram, kEverywhere, "show-notices", N_("Notices"), N_("Shows all that was told since the start"),
     "Ctrl+4", CommandMenu::kWindow},
    {kShortcuts, kProgram, kEverywhere, "shortcuts", N_("Keyboard Shortcuts"), N_("Shows all keys on one sheet"), "?",
     CommandMenu::kHelp},
    {kAbout, kProgram, kBrowser, "about", N_("About Vopla"),
     N_("The version of the program, and of what it is built on"), "", CommandMenu::kHelp},
};

}   // namespace

std::span<const CommandRow> CommandTable() noexcept { return kCommands; }

const CommandRow& RowOf(Command command) noexcept { return kCommands[static_cast<std::size_t>(command)]; }

const char* TitleOf(CommandGroup group) noexcept {
    switch (group) {
        case CommandGroup::kPlaying:
            return N_("Playing");
        case CommandGroup::kSound:
            return N_("Sound");
        case CommandGroup::kPicture:
            return N_("Picture");
        case CommandGroup::kSongs:
            return N_("Songs");
        case CommandGroup::kLists:
            return N_("Lists");
        case CommandGroup::kProgram:
            return N_("Program");
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
