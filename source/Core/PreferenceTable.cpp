#include "Core/PreferenceTable.h"

#include <algorithm>
#include <cmath>
#include <thread>

namespace {

CCFValue ProcessorCount(const CCFDictionary& /*stored*/) {
    return static_cast<std::int64_t>(std::max(1U, std::thread::hardware_concurrency()));
}
/** The panel keeps the proportions of a record sleeve beside the width that the user gave the sources. */
CCFValue ArtworkHeight(const CCFDictionary& stored) {
    constexpr double kWidthToHeight = 1.3888888359069824;
    return static_cast<std::int64_t>(static_cast<double>(stored.GetInteger("Sources Panel Width", 185)) /
                                     kWidthToHeight);
}
/** The font of new lyrics. */
CCFValue MediaStreamDefaults(const CCFDictionary& /*stored*/) {
    return CCFDictionary{{"MediaStream Defaut Font", "Futura Condensed"}, {"MediaStream Defaut Font Size", 16.0}};
}

constexpr PrefRow On(std::string_view key) { return {key, CFType::kBool, PrefRule::kStored, true}; }
constexpr PrefRow Off(std::string_view key) { return {key, CFType::kBool, PrefRule::kStored, false}; }
constexpr PrefRow Whole(std::string_view key, std::int64_t defaultL) {
    return {key, CFType::kInteger, PrefRule::kStored, false, defaultL};
}
constexpr PrefRow Real(std::string_view key, double defaultF) {
    return {key, CFType::kFloat, PrefRule::kStored, false, 0, defaultF};
}
constexpr PrefRow Text(std::string_view key, std::string_view defaultText) {
    return {key, CFType::kString, PrefRule::kStored, false, 0, 0, defaultText};
}
constexpr PrefRow Computed(std::string_view key, CFType type, CCFValue (*computeP)(const CCFDictionary&)) {
    return {key, type, PrefRule::kStored, false, 0, 0, {}, computeP};
}
constexpr PrefRow Fixed(std::string_view key, bool valueB) { return {key, CFType::kBool, PrefRule::kFixed, valueB}; }
constexpr PrefRow AtSave(std::string_view key, CFType type, std::int64_t defaultL = 0) {
    return {key, type, PrefRule::kAtSave, false, defaultL};
}
constexpr PrefRow Typed(std::string_view key, CFType type) { return {key, type, PrefRule::kTypeOnly}; }
constexpr PrefRow Folder(std::string_view key) { return {key, CFType::kDictionary, PrefRule::kFolder}; }

constexpr PrefRow kPreferences[] = {
    // Fixed at each start.
    Fixed("Enable Logging", true),
    Fixed("Use Apple AUTimePitch for pitch bending", false),
    Fixed("Use maximum quality for pitch bending", true),

    // On by default.
    On("Automatic Version Checking"),
    On("Auto-cue"),
    On("Show Messages in the Video Window"),
    On("Use native pitch bending"),
    On("Require Audio (no naked CDG files)"),
    On("Zip ripped files"),
    On("Play sound when done ripping"),
    On("Move 'The' to end of Artits title"),
    On("Remember pitch / tempo in all playlists"),
    On("Automatically mark singer as here when editing 'Tonight'"),
    On("Diacritic Insensitive Searching"),
    On("Automatically query freedb for disc info"),
    On("Automatically query MusicBrainz for disc info"),
    On("Automatically query TrackType for disc info"),
    On("Allow Name Editing"),
    On("Auto logout Sessions"),
    On("Use KJ Pro Online"),
    On("Warn if there is a possibly corrupted MP3"),
    On("Show Rotation Between Songs"),
    On("Bring Video Window to front when playing"),
    On("Auto-play when you add single song to Library"),
    On("warn about deleting last song"),
    On("Always confirm music purchases"),
    On("Always confirm music store web launch"),
    On("Always confirm music store updates"),
    On("Producer: black background"),
    On("Producer: high quality"),
    On("Enable Music Stores"),
    On("Conform Song Names"),
    On("Show Messenger Rotation Between Songs"),
    On("BIN Export name prepend track index"),
    On("Some errors can launch URLs or email notifications"),
    On("KaraokeCloud Needs To Sync"),
    On("KaraokeCloud stale account info"),
    On("Enable Music Store TRI"),
    On("pre-cache next song"),
    On("Burn Dialog Expanded"),
    On("update media meta tags"),
    On("producer: interpret hyphens as syllable markers"),
    On("Use CGLayers"),
    On("KaraokeCloud Auto Login"),

    // Off by default.
    Off("Pause between tracks"),
    Off("Auto Full Screen During Play"),
    Off("Always on top"),
    Off("Hide on pause"),
    Off("Show Artwork Panel"),
    Off("Create Playlist on Import"),
    Off("Trash non-library original files after converting format"),
    Off("Automatically mark singer as NOT here when no songs in 'Tonight'"),
    Off("Pad QuickTime Export to 320 x 240"),
    Off("When exporting QuickTime, also export .xml meta"),
    Off("When exporting files, also export producer meta"),
    Off("Enable web server"),
    Off("Look for shared libraries"),
    Off("Share my library"),
    Off("Delay start of song playback until unpacked"),
    Off("Use Stuffit Expander as a last resort to unzip files"),
    Off("QT Export only 30 seconds"),
    Off("Always confirm manual song changes"),
    Off("Track Number can be single digit"),
    Off("Parens in File name always means 'rendition'"),
    Off("Producer Intro Start Early"),
    Off("Stop between tracks"),
    Off("QT Export no em-dash in album name"),
    Off("Dont replace missing Producer Templates"),
    Off("Always use multiple bin files for burning"),
    Off("Show Singer ID"),
    Off("Transparent Video Window"),
    Off("Stop at playlist end"),
    Off("Stores Twirled Down"),
    Off("Include songs that have Lead vocals in Chartbuster store"),
    Off("Include songs that have special licensing privileges"),
    Off("Use KaraokeCloud Gift Pack"),
    Off("Enable Music Store KL"),
    Off("16x9 aspect ratio"),
    Off("Use hq4x upscaling (fast computers only)"),
    Off("QT Export with transparency"),
    Off("QT Export with green screen"),
    Off("Log Strings"),
    Off("Search only song name and artist"),

    // Numbers.
    Whole("Sources Panel Width", 185),
    Computed("Artwork Panel height", CFType::kInteger, &ArtworkHeight),
    Whole("Number of cached songs", 25),
    Real("Tempo change increment (percent)", 5.0),
    Computed("Max number of audio encoders at once when ripping / converting", CFType::kInteger, &ProcessorCount),
    Whole("ignore CDG errors before block", 40),
    Whole("ignore CDG errors after block", 400),
    Whole("Max Cache Burn Images", 1),
    Whole("freedb server timeout (seconds)", 30),
    Real("Seconds to wait after click to edit", 0.75),
    Whole("Scan Meta Style (1=ask, 2=fileNae, 3=tags)", 3),
    Whole("Max number of zips at once when pushing meta", 6),
    Whole("Seconds to wait after edit to push meta", 10),
    Whole("Web server port number", 80),
    Whole("Timeout in seconds", 120),
    Real("Show Rotation when less than time remaining (seconds)", 3.0),
    Real("Show Rotation Duration (seconds)", 10.0),
    Whole("Max number of simultaneous QuickTime Exports", 2),
    Real("QT Export sample start time (seconds)", 15.0),
    Real("QT Export sample actual duration (seconds)", 30.0),
    Real("Long messenger duration", 7.0),
    Whole("High Quality Output Width", 480),
    Whole("High Quality Output Height", 360),
    Whole("Sync Slip increment (300ths)", 30),
    Whole("Maximum simultaneous BIN Exports", 20),
    Real("How long to keep curent song in rotation screen (seconds)", 15.0),
    Whole("Browser Font Size", 11),
    Real("Auto Cue Threshold (0..1) (smaller is more sensitive)", 0.001),
    Real("Auto Cue rollback (seconds)", 0.1),
    Whole("interval for all music store checks", 2678400),   // seconds: 31 days
    Whole("On CD Insert", 2),
    Real("Percent song done to show messenger rotation", 0.88),
    Whole("Pre-Fetched Audio Blocks (must be > 2)", 5),
    Whole("Audio Engine sleep time (should be zero)", 0),
    Whole("Maximum number of items in web search results list", 200),
    Whole("KaraokeCloud Simultaneous DL", 5),
    Whole("Messenger Y Position", 10),
    Whole("Default Music Store Panel", 1100),
    Whole("Songs per Singer per rotation", 1),
    Whole("Number of undos", 99),
    Real("minimum gap between last sweep and next page (seconds)", 0.25),
    Real("minimum gap between last page and next sweep (seconds)", 0.25),
    Whole("Include store songs in Library", 1),

    // Texts.
    Text("Conform song name template", "L-L-T - R - S"),
    Text("QuickTime Export name template", "S"),
    Text("QT Sample Export Name Template", "L-sample"),
    Text("BIN Export name template", "S (V)"),
    Text("Rotation Screen Template", "Rotation"),
    Text("Messenger Rotation Template", "[name]"),
    Text("Producer Intro Template", "Vopla Producer"),
    Text("Producer Outro Template", "Created With Vopla"),
    Text("Producer Break Template", "Sunfly Break"),
    Text("QT Export Frame Rate", "15 fps"),
    Text("CDPedia Code", "CustomThree"),
    Text("CDPedia Key", "CustomFour"),
    Text("CDPedia Publisher", "Custom5"),
    Text("CDPedia Actual Duration", "Custom6"),
    Text("CDPedia Rendition", "Custom7"),
    Text("CDPedia Backing Vocals", "Custom8"),
    Text("CDPedia Copyright", "Custom9"),
    Text("CDPedia Album", "CustomOne"),
    Text("CDPedia Track", "CustomTwo"),
    Text("FreeDB domain", "gnudb.gnudb.org"),   // the public successor of the closed service, same protocol
    Text("MusicBrainz domain", "freedb.musicbrainz.org"),
    Text("TrackType domain", "tracktype.org"),
    Text("User email address", ""),
    Text("Chartbusters Customer ID", ""),
    Text("KaraokeCloud Customer ID", ""),
    Text("KaraokeCloud Customer email", ""),

    // Dictionaries.
    Computed("MediaStream Defauts", CFType::kDictionary, &MediaStreamDefaults),
    Typed("Global Song Sync Slip (300ths)", CFType::kInteger),
    Folder("Music Library Location"),
    Folder("Cache Folder Location"),
    Typed("Default Columns", CFType::kDictionary),
    Typed("Picture Delays (ms)", CFType::kDictionary),   // by the name of the audio output
    Typed("Key Map", CFType::kDictionary),               // by the command's id, what is not the factory's
    Typed("Browser Columns", CFType::kDictionary),       // of the library's list

    // Written only at save.
    AtSave("Prefs file version (do not change!)", CFType::kInteger, 2),
    AtSave("Time display: (0=elapsed, 1=remain)", CFType::kInteger, 0),
    AtSave("Calculate file sizes", CFType::kBool),
    AtSave("Current Volume (0-100)", CFType::kInteger, 100),
    AtSave("Microphone 1 Volume (0-100)", CFType::kInteger, 100),
    AtSave("Singers Twirled Down", CFType::kBool),
    AtSave("Mailer preference has been set", CFType::kBool),
    AtSave("Use Apple Mail", CFType::kBool),
    Typed("Date of last RAM warning", CFType::kDate),
    Typed("Date and time of last crash report", CFType::kDate),   // at save too, once there has been one
    AtSave("Selected Pref Resource ID", CFType::kInteger, 0),

    // No default of their own.
    Typed("Log Threads", CFType::kBool),
    Typed("Log Networking", CFType::kBool),
    Typed("Log Memory", CFType::kBool),
    Typed("Full Screen", CFType::kBool),
    Typed("Full Screen2", CFType::kBool),
    Typed("Full Screen Display", CFType::kString),   // by the name that the system gives it; empty: the window's own
    Typed("Full Screen2 Display", CFType::kString),
    Typed("Video Window Opacity", CFType::kFloat),   // 0.1 to 1.0, which it is without
    Typed("4x3 aspect ratio", CFType::kBool),        // "16x9 aspect ratio" goes before it
    Typed("Add Files Folder", CFType::kString),
    Typed("Audio Output Device", CFType::kString),   // by its name; empty: the system's choice
    Typed("Launch Midi Files", CFType::kBool),
    Typed("Save Library at Start", CFType::kBool),   // all of it anew, whatever has changed
    Typed("Date Added Field *really* Updated", CFType::kBool),
    Typed("Warn if there is a problem updating meta", CFType::kBool),   // on without it
    Typed("Look (0=desktop, 1=dark, 2=light)", CFType::kInteger),
    Typed("Video Drawing (0=automatic, 1=processor, 2=OpenGL)", CFType::kInteger),
    Typed("Break Picture", CFType::kString),   // the path of what the video windows show between songs
    Typed("Ignore CD+G Ripping errors (You'll just get black video)", CFType::kBool),
    Typed("Update while typing", CFType::kBool),
    Typed("Always confirm manual song changes (transport buttons)", CFType::kBool),

    // Marks of corrections that ran.
    Typed("Server Timeout reset", CFType::kBool),
    Typed("Reset Ignore CD+G Ripping errors", CFType::kBool),
    Typed("reset expander pref to OFF on startup", CFType::kBool),
    Typed("Update while typing has been reset", CFType::kBool),
};

}   // namespace

std::span<const PrefRow> PreferenceTable() noexcept { return kPreferences; }

const PrefRow* FindPreference(std::string_view key) noexcept {
    const auto* it = std::ranges::find(kPreferences, key, &PrefRow::key);
    return it == std::ranges::end(kPreferences) ? nullptr : it;
}

CCFValue PrefRow::Default(const CCFDictionary& stored) const {
    if (computeP != nullptr) return computeP(stored);
    switch (type) {
        case CFType::kBool:
            return defaultB;
        case CFType::kInteger:
            return defaultL;
        case CFType::kFloat:
            return defaultF;
        case CFType::kString:
            return SuperString(defaultText);
        case CFType::kDate:
            return CFDate{};
        case CFType::kData:
            return CFData{};
        case CFType::kArray:
            return CFArray{};
        case CFType::kDictionary:
            return CCFDictionary{};
    }
    return defaultB;
}

std::optional<CCFValue> AsType(const CCFValue& value, CFType type) {
    if (value.Type() == type) return value;
    const auto number = value.Number();
    if (!number) return std::nullopt;
    if (type == CFType::kFloat) return CCFValue(*number);
    constexpr double kMostWhole = 9007199254740992.0;   // beyond it a double no longer tells whole numbers apart
    if (type == CFType::kInteger && *number == std::floor(*number) && std::abs(*number) <= kMostWhole)
        return CCFValue(static_cast<std::int64_t>(*number));
    if (type == CFType::kBool && (*number == 0 || *number == 1)) return CCFValue(*number == 1);
    return std::nullopt;
}
