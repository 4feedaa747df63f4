#pragma once
#include <array>
#include <cmath>
#include <span>
#include <stdexcept>
#include <string_view>

#include "Values/CCFDictionary.h"
#include "Values/PrefTypes.h"

// The preferences: the table, and the constants by which the program names its rows.

/** When the table's default gets into the dictionary. */
enum class PrefRule {
    kStored,     // at start, when the file lacks the key
    kAtSave,     // only when the file is written
    kFixed,      // at every start, whatever the file says
    kTypeOnly,   // never: the getter's default argument serves until somebody sets it
    kFolder,     // as kTypeOnly: a reference to a folder, which a person names by its path
};

/** One preference: its key, its type, its default. */
struct PrefRow {
    std::string_view key;
    CFType type;
    PrefRule rule;
    bool defaultB = false;
    std::int64_t defaultL = 0;
    double defaultF = 0;
    std::string_view defaultText = {};
    /** For a default that depends on the machine or on what is stored already. */
    CCFValue (*computeP)(const CCFDictionary& stored) = nullptr;
    /** Nobody reads it yet, so it is offered nowhere; tools/check_preferences holds that to the sources. */
    bool laterB = false;
    /** Numbers that mean something. */
    double least = -HUGE_VAL, most = HUGE_VAL;
    /** While the program runs it keeps what its windows show here; nobody else sets it then. */
    bool ownB = false;

    /** `stored` is what the dictionary holds so far. */
    [[nodiscard]] CCFValue Default(const CCFDictionary& stored) const;
};

/** What the defaults of some rows are computed by. */
struct PrefDefaults {
    static CCFValue ProcessorCount(const CCFDictionary& stored);
    static CCFValue ArtworkHeight(const CCFDictionary& stored);
    static CCFValue MediaStreamFont(const CCFDictionary& stored);
};

/** Every preference of the program, in the order in which the defaults are stored. */
inline constexpr auto kPreferenceTable = [] {
    constexpr auto On = [](std::string_view key) { return PrefRow{key, CFType::kBool, PrefRule::kStored, true}; };
    constexpr auto Off = [](std::string_view key) { return PrefRow{key, CFType::kBool, PrefRule::kStored, false}; };
    constexpr auto Whole = [](std::string_view key, std::int64_t defaultL) {
        return PrefRow{key, CFType::kInteger, PrefRule::kStored, false, defaultL};
    };
    constexpr auto Real = [](std::string_view key, double defaultF) {
        return PrefRow{key, CFType::kFloat, PrefRule::kStored, false, 0, defaultF};
    };
    constexpr auto Text = [](std::string_view key, std::string_view defaultText) {
        return PrefRow{key, CFType::kString, PrefRule::kStored, false, 0, 0, defaultText};
    };
    constexpr auto Computed = [](std::string_view key, CFType type, CCFValue (*computeP)(const CCFDictionary&)) {
        return PrefRow{key, type, PrefRule::kStored, false, 0, 0, {}, computeP};
    };
    constexpr auto Fixed = [](std::string_view key, bool valueB) {
        return PrefRow{key, CFType::kBool, PrefRule::kFixed, valueB};
    };
    constexpr auto AtSave = [](std::string_view key, CFType type, std::int64_t defaultL = 0) {
        return PrefRow{key, type, PrefRule::kAtSave, false, defaultL};
    };
    constexpr auto Typed = [](std::string_view key, CFType type, double defaultF = 0) {
        return PrefRow{key, type, PrefRule::kTypeOnly, defaultF != 0, static_cast<std::int64_t>(defaultF), defaultF};
    };
    constexpr auto Folder = [](std::string_view key) { return PrefRow{key, CFType::kDictionary, PrefRule::kFolder}; };
    // Of a room that is not built: the file keeps the value, and nobody reads it.
    constexpr auto Later = [](PrefRow row) {
        row.laterB = true;
        return row;
    };
    constexpr auto Within = [](double least, double most, PrefRow row) {
        row.least = least;
        row.most = most;
        return row;
    };
    // What the windows and the transport show.
    constexpr auto Own = [](PrefRow row) {
        row.ownB = true;
        return row;
    };
    return std::to_array<PrefRow>({
        // Fixed at each start.
        Fixed("Enable Logging", true),
        Fixed("Use Apple AUTimePitch for pitch bending", false),
        Fixed("Use maximum quality for pitch bending", true),

        // On by default.
        Later(On("Automatic Version Checking")),
        On("Auto-cue"),
        Later(On("Show Messages in the Video Window")),
        Later(On("Use native pitch bending")),
        On("Require Audio (no naked CDG files)"),
        Later(On("Zip ripped files")),
        Later(On("Play sound when done ripping")),
        On("Move 'The' to end of Artits title"),
        On("Remember pitch / tempo in all playlists"),
        Later(On("Automatically mark singer as here when editing 'Tonight'")),
        On("Diacritic Insensitive Searching"),
        Later(On("Automatically query freedb for disc info")),
        Later(On("Automatically query MusicBrainz for disc info")),
        Later(On("Automatically query TrackType for disc info")),
        On("Allow Name Editing"),
        Later(On("Auto logout Sessions")),
        Later(On("Use KJ Pro Online")),
        On("Warn if there is a possibly corrupted MP3"),
        Later(On("Show Rotation Between Songs")),
        On("Bring Video Window to front when playing"),
        On("Auto-play when you add single song to Library"),
        On("warn about deleting last song"),
        Later(On("Always confirm music purchases")),
        Later(On("Always confirm music store web launch")),
        Later(On("Always confirm music store updates")),
        Later(On("Producer: black background")),
        Later(On("Producer: high quality")),
        Later(On("Enable Music Stores")),
        On("Conform Song Names"),
        Later(On("Show Messenger Rotation Between Songs")),
        Later(On("BIN Export name prepend track index")),
        Later(On("Some errors can launch URLs or email notifications")),
        Later(On("KaraokeCloud Needs To Sync")),
        Later(On("KaraokeCloud stale account info")),
        Later(On("Enable Music Store TRI")),
        On("pre-cache next song"),
        Later(On("Burn Dialog Expanded")),
        On("update media meta tags"),
        Later(On("producer: interpret hyphens as syllable markers")),
        Later(On("Use CGLayers")),
        Later(On("KaraokeCloud Auto Login")),

        // Off by default.
        Off("Pause between tracks"),
        Off("Auto Full Screen During Play"),
        Off("Always on top"),
        Off("Hide on pause"),
        Off("Show Artwork Panel"),
        Later(Off("Create Playlist on Import")),
        Later(Off("Trash non-library original files after converting format")),
        Later(Off("Automatically mark singer as NOT here when no songs in 'Tonight'")),
        Later(Off("Pad QuickTime Export to 320 x 240")),
        Later(Off("When exporting QuickTime, also export .xml meta")),
        Later(Off("When exporting files, also export producer meta")),
        Later(Off("Enable web server")),
        Later(Off("Look for shared libraries")),
        Later(Off("Share my library")),
        Off("Delay start of song playback until unpacked"),
        Off("Use Stuffit Expander as a last resort to unzip files"),
        Later(Off("QT Export only 30 seconds")),
        Off("Always confirm manual song changes"),
        Off("Track Number can be single digit"),
        Off("Parens in File name always means 'rendition'"),
        Later(Off("Producer Intro Start Early")),
        Off("Stop between tracks"),
        Later(Off("QT Export no em-dash in album name")),
        Later(Off("Dont replace missing Producer Templates")),
        Later(Off("Always use multiple bin files for burning")),
        Off("Show Singer ID"),
        Off("Transparent Video Window"),
        Off("Stop at playlist end"),
        Later(Off("Stores Twirled Down")),
        Later(Off("Include songs that have Lead vocals in Chartbuster store")),
        Later(Off("Include songs that have special licensing privileges")),
        Later(Off("Use KaraokeCloud Gift Pack")),
        Later(Off("Enable Music Store KL")),
        Off("16x9 aspect ratio"),
        Off("Use hq4x upscaling (fast computers only)"),
        Later(Off("QT Export with transparency")),
        Later(Off("QT Export with green screen")),
        Later(Off("Log Strings")),
        Later(Off("Search only song name and artist")),

        // Numbers.
        Own(Whole("Sources Panel Width", 185)),
        Own(Computed("Artwork Panel height", CFType::kInteger, &PrefDefaults::ArtworkHeight)),
        Within(0, 10000, Whole("Number of cached songs", 25)),
        Within(0.1, 25, Real("Tempo change increment (percent)", 5.0)),
        Later(Computed("Max number of audio encoders at once when ripping / converting", CFType::kInteger,
                       &PrefDefaults::ProcessorCount)),
        Later(Whole("ignore CDG errors before block", 40)),
        Later(Whole("ignore CDG errors after block", 400)),
        Within(0, 10000, Whole("Max Cache Burn Images", 1)),
        Whole("freedb server timeout (seconds)", 30),
        Within(0, 10, Real("Seconds to wait after click to edit", 0.75)),
        Later(Whole("Scan Meta Style (1=ask, 2=fileNae, 3=tags)", 3)),
        Later(Whole("Max number of zips at once when pushing meta", 6)),
        Within(0, 600, Whole("Seconds to wait after edit to push meta", 10)),
        Within(1, 65535, Whole("Web server port number", 80)),
        Within(1, 3600, Whole("Timeout in seconds", 120)),
        Later(Real("Show Rotation when less than time remaining (seconds)", 3.0)),
        Later(Real("Show Rotation Duration (seconds)", 10.0)),
        Later(Whole("Max number of simultaneous QuickTime Exports", 2)),
        Later(Real("QT Export sample start time (seconds)", 15.0)),
        Later(Real("QT Export sample actual duration (seconds)", 30.0)),
        Later(Real("Long messenger duration", 7.0)),
        Later(Whole("High Quality Output Width", 480)),
        Later(Whole("High Quality Output Height", 360)),
        Within(1, 3000, Whole("Sync Slip increment (300ths)", 30)),
        Later(Whole("Maximum simultaneous BIN Exports", 20)),
        Later(Real("How long to keep curent song in rotation screen (seconds)", 15.0)),
        Within(8, 32, Whole("Browser Font Size", 11)),
        Within(0, 1, Real("Auto Cue Threshold (0..1) (smaller is more sensitive)", 0.001)),
        Within(0, 5, Real("Auto Cue rollback (seconds)", 0.1)),
        Later(Whole("interval for all music store checks", 2678400)),   // seconds: 31 days
        Later(Whole("On CD Insert", 2)),
        Later(Real("Percent song done to show messenger rotation", 0.88)),
        Within(2, 25, Whole("Pre-Fetched Audio Blocks (must be > 2)", 5)),
        Within(0, 1000, Whole("Audio Engine sleep time (should be zero)", 0)),
        Later(Whole("Maximum number of items in web search results list", 200)),
        Later(Whole("KaraokeCloud Simultaneous DL", 5)),
        Later(Whole("Messenger Y Position", 10)),
        Later(Whole("Default Music Store Panel", 1100)),
        Later(Whole("Songs per Singer per rotation", 1)),
        Later(Whole("Number of undos", 99)),
        Later(Real("minimum gap between last sweep and next page (seconds)", 0.25)),
        Later(Real("minimum gap between last page and next sweep (seconds)", 0.25)),
        Later(Whole("Include store songs in Library", 1)),

        // Texts.
        Text("Conform song name template", "L-L-T - R - S"),
        Later(Text("QuickTime Export name template", "S")),
        Later(Text("QT Sample Export Name Template", "L-sample")),
        Later(Text("BIN Export name template", "S (V)")),
        Later(Text("Rotation Screen Template", "Rotation")),
        Text("Messenger Rotation Template", "[name]"),
        Later(Text("Producer Intro Template", "Vopla Producer")),
        Later(Text("Producer Outro Template", "Created With Vopla")),
        Later(Text("Producer Break Template", "Sunfly Break")),
        Later(Text("QT Export Frame Rate", "15 fps")),
        Later(Text("CDPedia Code", "CustomThree")),
        Later(Text("CDPedia Key", "CustomFour")),
        Later(Text("CDPedia Publisher", "Custom5")),
        Later(Text("CDPedia Actual Duration", "Custom6")),
        Later(Text("CDPedia Rendition", "Custom7")),
        Later(Text("CDPedia Backing Vocals", "Custom8")),
        Later(Text("CDPedia Copyright", "Custom9")),
        Later(Text("CDPedia Album", "CustomOne")),
        Later(Text("CDPedia Track", "CustomTwo")),
        Later(Text("FreeDB domain", "gnudb.gnudb.org")),   // the public successor of the closed service, same protocol
        Later(Text("MusicBrainz domain", "freedb.musicbrainz.org")),
        Later(Text("TrackType domain", "tracktype.org")),
        Later(Text("User email address", "")),
        Later(Text("Chartbusters Customer ID", "")),
        Later(Text("KaraokeCloud Customer ID", "")),
        Later(Text("KaraokeCloud Customer email", "")),

        // Dictionaries.
        Later(Computed("MediaStream Defauts", CFType::kDictionary, &PrefDefaults::MediaStreamFont)),
        Typed("Global Song Sync Slip (300ths)", CFType::kInteger),
        Folder("Music Library Location"),
        Folder("Cache Folder Location"),
        Typed("Default Columns", CFType::kDictionary),
        Typed("Picture Delays (ms)", CFType::kDictionary),   // by the name of the audio output
        Typed("Key Map", CFType::kDictionary),               // by the command's id, what is not the factory's
        Typed("Browser Columns", CFType::kDictionary),       // of the library's list

        // Written only at save.
        AtSave("Prefs file version (do not change!)", CFType::kInteger, 2),
        Own(Within(0, 1, AtSave("Time display: (0=elapsed, 1=remain)", CFType::kInteger, 0))),
        Later(AtSave("Calculate file sizes", CFType::kBool)),
        Own(Within(0, 100, AtSave("Current Volume (0-100)", CFType::kInteger, 100))),
        Later(AtSave("Microphone 1 Volume (0-100)", CFType::kInteger, 100)),
        Later(AtSave("Singers Twirled Down", CFType::kBool)),
        Later(AtSave("Mailer preference has been set", CFType::kBool)),
        Later(AtSave("Use Apple Mail", CFType::kBool)),
        Own(Typed("Date of last RAM warning", CFType::kDate)),
        Later(Typed("Date and time of last crash report", CFType::kDate)),   // at save too, once there has been one
        Own(AtSave("Selected Pref Resource ID", CFType::kInteger, 0)),

        // No default of their own.
        Typed("Log Threads", CFType::kBool),
        Typed("Log Networking", CFType::kBool),
        Typed("Log Memory", CFType::kBool),
        Own(Typed("Full Screen", CFType::kBool)),
        Own(Typed("Full Screen2", CFType::kBool)),
        Own(Typed("Full Screen Display",
                  CFType::kString)),   // by the name that the system gives it; empty: the window's own
        Own(Typed("Full Screen2 Display", CFType::kString)),
        Within(0.1, 1, Typed("Video Window Opacity", CFType::kFloat, 1)),   // 0.1 to 1.0, which it is without
        Typed("4x3 aspect ratio", CFType::kBool),                           // "16x9 aspect ratio" goes before it
        Own(Typed("Add Files Folder", CFType::kString)),
        Typed("Audio Output Device", CFType::kString),   // by its name; empty: the system's choice
        Typed("Launch Midi Files", CFType::kBool),
        Typed("Save Library at Start", CFType::kBool),   // all of it anew, whatever has changed
        Typed("Date Added Field *really* Updated", CFType::kBool),
        Typed("Warn if there is a problem updating meta", CFType::kBool, 1),   // on without it
        Typed("Play all songs at one level", CFType::kBool),
        Within(0, 2, Typed("Look (0=desktop, 1=dark, 2=light)", CFType::kInteger)),
        Within(0, 2, Typed("Video Drawing (0=automatic, 1=processor, 2=OpenGL)", CFType::kInteger)),
        Typed("Break Picture", CFType::kString),   // the path of what the video windows show between songs
        Typed("Ignore CD+G Ripping errors (You'll just get black video)", CFType::kBool),
        Typed("Update while typing", CFType::kBool),
        Typed("Always confirm manual song changes (transport buttons)", CFType::kBool),
        Typed("Single-key commands", CFType::kBool),

        // Marks of corrections that ran.
        Typed("Server Timeout reset", CFType::kBool),
        Typed("Reset Ignore CD+G Ripping errors", CFType::kBool),
        Typed("reset expander pref to OFF on startup", CFType::kBool),
        Typed("Update while typing has been reset", CFType::kBool),
    });
}();

[[nodiscard]] constexpr std::span<const PrefRow> PreferenceTable() noexcept { return kPreferenceTable; }
/** The place of a key in the table; the table's size when it does not stand there. */
[[nodiscard]] constexpr std::size_t PreferenceAt(std::string_view key) noexcept {
    std::size_t n = 0;
    while (n < kPreferenceTable.size() && kPreferenceTable[n].key != key) ++n;
    return n;
}
/** Null for a key that the table does not know. */
[[nodiscard]] constexpr const PrefRow* FindPreference(std::string_view key) noexcept {
    const std::size_t n = PreferenceAt(key);
    return n == kPreferenceTable.size() ? nullptr : &kPreferenceTable[n];
}

/** The row of a key that the table has; another one does not compile. */
[[nodiscard]] consteval const PrefRow& RowOfPreference(std::string_view key) {
    const std::size_t n = PreferenceAt(key);
    if (n == kPreferenceTable.size()) throw "no preference of this key";
    return kPreferenceTable[n];
}

/** A preference of one type, by its key: a constant. A key that the table lacks, or has with another type, does not
    compile. */
template <CFType kType>
class Pref {
public:
    template <std::size_t kLength>
    consteval Pref(const char (&keyZ)[kLength]) : i_rowP(&RowOfPreference({keyZ, kLength - 1})) {
        if (i_rowP->type != kType) throw "a preference of another type";
    }
    /** For a row that is known only at run time; std::logic_error when it is of another type. */
    constexpr explicit Pref(const PrefRow& row) : i_rowP(&row) {
        if (row.type != kType) throw std::logic_error("a preference of another type: " + std::string(row.key));
    }
    [[nodiscard]] constexpr const PrefRow& Row() const noexcept { return *i_rowP; }
    [[nodiscard]] constexpr std::string_view Key() const noexcept { return i_rowP->key; }

private:
    const PrefRow* i_rowP;
};
/** A preference of whichever type; none, too. */
class AnyPref {
public:
    constexpr AnyPref() = default;
    template <std::size_t kLength>
    consteval AnyPref(const char (&keyZ)[kLength]) : i_rowP(&RowOfPreference({keyZ, kLength - 1})) {}
    /** Null for none. */
    [[nodiscard]] constexpr const PrefRow* Row() const noexcept { return i_rowP; }

private:
    const PrefRow* i_rowP = nullptr;
};

/** `value` when it is of `type`, or a number or switch that a person wrote in a neighbouring form (5 for 5.0, 5.0 for
    5, 1 for true); else nothing. */
[[nodiscard]] std::optional<CCFValue> AsType(const CCFValue& value, CFType type);
