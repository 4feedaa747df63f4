#pragma once
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

/** Everything that the keyboard and the menus can do. */
enum class Command : std::uint8_t {
    kPlayPause,
    kStop,
    kRewind,
    kPrevious,
    kNext,
    kGoBack,
    kSeekBack,
    kSeekForward,
    kSeekBackFar,
    kSeekForwardFar,
    kVolumeUp,
    kVolumeDown,
    kMute,
    kOneLevel,
    kPitchUp,
    kPitchDown,
    kPitchReset,
    kTempoUp,
    kTempoDown,
    kTempoReset,
    kVocalNext,
    kSlipSongEarlier,
    kSlipSongLater,
    kSlipSongReset,
    kSlipAllEarlier,
    kSlipAllLater,
    kSlipAllReset,
    kFullScreen,
    kLeaveFullScreen,
    kNextDisplay,
    kShowVideo,
    kShowVideo2,
    kShowPreview,
    kOpenFiles,
    kOpenFolder,
    kPlaySelected,
    kPlayNext,
    kAddToList,
    kCopy,
    kPaste,
    kEditCell,
    kFind,
    kShowPlaying,
    kShowUserOrder,
    kUserOrder,
    kReveal,
    kConformNames,
    kZip,
    kUnzip,
    kFindMissing,
    kLocateMissing,
    kRemoveDuplicates,
    kRemoveFromList,
    kRemoveFromLibrary,
    kTrashOriginals,
    kNewList,
    kRenameList,
    kOpenList,
    kDeleteList,
    kPreferences,
    kQuit,
    kShowTasks,
    kShowNotices,
    kShortcuts,
    kAbout,
};

inline constexpr std::size_t kCommand_Count = static_cast<std::size_t>(Command::kAbout) + 1;

/** Where a command's key works. */
enum class CommandScope : std::uint8_t {
    kEverywhere,   // every window of the program
    kVideo,        // a video window
    kBrowser,      // the browser window
    kSongs,        // the table of songs has the focus
    kLists,        // the column of lists has the focus
};

enum class CommandGroup : std::uint8_t { kPlaying, kSound, kPicture, kSongs, kLists, kProgram };

/** The menus of the main window, in their order; kSlip lies within the one before it. */
enum class CommandMenu : std::uint8_t { kNone, kFile, kSongs, kPlay, kSound, kPicture, kSlip, kWindow, kHelp };

/** One line of the table from which the menus, the keys, the page that changes them and the sheet of shortcuts are
    made. */
struct CommandRow {
    Command command;
    CommandGroup group;
    CommandScope scope;
    std::string_view id;     // in the preferences: never changes
    const char* titleZ;      // in menus and tables; looked up in the catalogue where it is shown,
    const char* toolTipZ;    // as is this, one line more
    std::string_view keys;   // the factory keys, portable names between blanks; empty for none
    CommandMenu menu;
    bool lineB = false;   // above it in the menu
};

[[nodiscard]] std::span<const CommandRow> CommandTable() noexcept;
[[nodiscard]] const CommandRow& RowOf(Command command) noexcept;
[[nodiscard]] const char* TitleOf(CommandGroup group) noexcept;
/** A command that the room hears or sees. Its keys without Control or Alt, but Space, function keys and the one for full
    screen, work in the video windows alone, unless the user wants single-key commands: elsewhere they are typed. */
[[nodiscard]] bool IsOfShow(const CommandRow& row) noexcept;
/** True when one key in both scopes could mean either. */
[[nodiscard]] bool ScopesMeet(CommandScope a, CommandScope b) noexcept;
