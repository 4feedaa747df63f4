#include <limits>

#include "Audio/CTimePitchVoice.h"
#include "Cli/CliAudio.h"
#include "Cli/CliCdg.h"
#include "Cli/CliCommand.h"
#include "Cli/CliLibrary.h"
#include "Cli/CliName.h"
#include "Cli/CliPlay.h"
#include "Cli/CliPrefs.h"

// The one table of what vopla-cli can do.

namespace {

constexpr double kAny = std::numeric_limits<double>::infinity();

// ---- Words without a dash ----

constexpr CliArgument kSoundFile[] = {{"FILE", "a sound file, a video or a zip"}};
constexpr CliArgument kSongFiles[] = {
    {"FILE", "sound or graphics of a song, a video or a zip", CliArgument::Count::kSome}};
constexpr CliArgument kGraphicsFile[] = {{"FILE", "a file of CD+G graphics"}};
constexpr CliArgument kKey[] = {{"KEY", "the name of a setting, as `prefs list` has it"}};
constexpr CliArgument kKeyAndValue[] = {{"KEY", "the name of a setting, as `prefs list` has it"},
                                        {"VALUE", "true or false, a number, a text, a date or a folder"}};
constexpr CliArgument kText[] = {{"TEXT", "a name as somebody typed it"}};
constexpr CliArgument kTemplateAndName[] = {
    {"TEMPLATE", "L label, T track, S song, R artist, V version, I ignored, and what stands between them"},
    {"NAME", "a file's name without its extension; folders before it, with slashes"}};
constexpr CliArgument kNames[] = {
    {"NAME", "a file's name without its extension; folders before it, with slashes", CliArgument::Count::kSome}};
constexpr CliArgument kSongID[] = {{"ID", "the number of a song"}};
constexpr CliArgument kSongValue[] = {{"ID", "the number of a song"},
                                      {"KEY", "a key of four characters, as `library show` has it"},
                                      {"VALUE", "the new value; nothing, or two dashes behind the first, clears it"}};
constexpr CliArgument kCopy[] = {
    {"COPY", "a kept copy by its name; without one they are listed", CliArgument::Count::kMaybe}};

// ---- Options ----

constexpr CliOption kSound_Pitch = {
    "--pitch", "N", "semitones up or down", CliKind::kNumber, -kTimePitch_MostPitch, kTimePitch_MostPitch};
constexpr CliOption kSound_Tempo = {"--tempo",           "X", "times as fast", CliKind::kNumber, kTimePitch_LeastTempo,
                                    kTimePitch_MostTempo};
constexpr CliOption kSound_Volume = {"--volume",       "V", "1 is as recorded",
                                     CliKind::kNumber, 0,   std::numeric_limits<float>::max()};
constexpr CliOption kSound_Gain = {"--gain", "DB", "decibels on top of the volume", CliKind::kNumber, -60, 60};

constexpr CliOption kRender[] = {
    {"--out", "FILE.wav|.mp3|.m4a|.flac", "the file that is made", CliKind::kText, 0, 0, true},
    kSound_Pitch,
    kSound_Tempo,
    kSound_Volume,
    kSound_Gain,
    {"--vocal", "0|1|2|3", "0 both channels, 1 the right one, 2 the left one, 3 without what is the same on both",
     CliKind::kWhole, 0, 3},
};
constexpr CliOption kPlay[] = {
    {"--seconds", "N", "so much of each song", CliKind::kNumber, 0, kAny},
    {"--output", "dummy|disk:PATH|NAME", "nothing that is heard, a file, or a sound output by its name"},
    kSound_Pitch,
    kSound_Tempo,
    kSound_Volume,
    kSound_Gain,
    {"--vocal", "M", "0 both channels, 1 the right one, 2 the left one, 3 without what is the same on both",
     CliKind::kWhole, 0, 3},
};
constexpr CliOption kFrame[] = {
    {"--at", "SECONDS", "the moment", CliKind::kNumber, 0, kCdg_MostSeconds, true},
    {"--out", "PNG", "the picture that is made", CliKind::kText, 0, 0, true},
    {"--visible", {}, "without the border", CliKind::kSwitch},
    {"--hq4x", {}, "four times as large, smoothed", CliKind::kSwitch},
    {"--channels", "MASK", "the graphic channels that are shown, a bit for each; 3, the first two, without it",
     CliKind::kWhole, 0, 65535},
};
constexpr CliOption kCheck[] = {{"--no-files", {}, "leave out whether the songs' files are there", CliKind::kSwitch}};

// ---- The commands ----

constexpr CliCommand kCommands[] = {
    {"audio render", "Writes a song's sound into a file, as it would be heard.", kSoundFile, kRender,
     CliNeeds::kNothing, &RenderAudio},
    {"audio autocue",
     "Where the music of a song begins, in 300ths of a second.",
     kSoundFile,
     {},
     CliNeeds::kNothing,
     &FindAutoCue},
    {"audio loudness",
     "How loud a song is, and the gain to the common level.",
     kSoundFile,
     {},
     CliNeeds::kNothing,
     &MeasureLoudness},
    {"play", "Plays songs, and tells four times a second where they are.", kSongFiles, kPlay, CliNeeds::kNothing,
     &PlaySongs},
    {"cdg frame", "The picture of a moment as a PNG.", kGraphicsFile, kFrame, CliNeeds::kNothing, &MakeCdgFrame},
    {"cdg info", "What is in a file of graphics.", kGraphicsFile, {}, CliNeeds::kNothing, &ShowCdgInfo},
    {"cdg bench", "How many packets are decoded in a second.", kGraphicsFile, {}, CliNeeds::kNothing, &BenchCdg},
    {"prefs get", "One setting.", kKey, {}, CliNeeds::kNothing, &GetPreference},
    {"prefs set",
     "Changes a setting, also of the host that runs on this root.",
     kKeyAndValue,
     {},
     CliNeeds::kNothing,
     &SetPreference},
    {"prefs list", "All settings.", {}, {}, CliNeeds::kNothing, &ListPreferences},
    {"name parse", "What a template reads out of a name.", kTemplateAndName, {}, CliNeeds::kNothing, &ParseName},
    {"name guess", "The template that reads most of some names.", kNames, {}, CliNeeds::kNothing, &GuessNames},
    {"name conform", "A name in the capitals that the library uses.", kText, {}, CliNeeds::kNothing, &ConformName},
    {"library list", "All songs.", {}, {}, CliNeeds::kLibrary, &ListSongs},
    {"library show", "One song.", kSongID, {}, CliNeeds::kLibrary, &ShowSong},
    {"library set", "Changes a value of a song.", kSongValue, {}, CliNeeds::kLibraryTaken, &SetSong},
    {"library check", "What is wrong with the library's files.", {}, kCheck, CliNeeds::kNothing, &CheckLibrary},
    {"library rebuild",
     "Adds the songs of the library's folders that it lacks.",
     {},
     {},
     CliNeeds::kNothing,
     &RebuildLibrary},
    {"library restore", "Brings back a kept copy of the library.", kCopy, {}, CliNeeds::kNothing, &RestoreLibrary},
};

constexpr struct {
    std::string_view word, help;
} kGroups[] = {
    {"audio", "A song's sound."},         {"cdg", "Graphics of CD+G discs."},
    {"prefs", "The settings."},           {"name", "Names of songs and artists."},
    {"library", "The library of songs."},
};

}   // namespace

std::span<const CliCommand> CliCommands() { return kCommands; }

std::string_view CliGroupHelp(std::string_view word) {
    for (const auto& group : kGroups)
        if (group.word == word) return group.help;
    return {};
}
