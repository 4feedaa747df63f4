#include "Library/CSongRecordMeta.h"
#include "Library/TempoSteps.h"

#include <cmath>
#include <limits>
#include <set>

namespace {

struct TextField {
    MetaKey key;
    SongText text;
    bool sharedB;   // many songs have the same one
};
constexpr TextField kTexts[] = {{"name"_key, SongText::kName, false},
                                {"arts"_key, SongText::kArtist, true},
                                {"albm"_key, SongText::kAlbum, true},
                                {"genr"_key, SongText::kGenre, true},
                                {"cmmt"_key, SongText::kComment, false}};

struct WordField {
    MetaKey key;
    std::uint32_t SongRecord::*field;
};
constexpr WordField kWords[] = {{"drtn"_key, &SongRecord::duration},
                                {"trak"_key, &SongRecord::track},
                                {"tsng"_key, &SongRecord::timesSung},
                                {"SIZE"_key, &SongRecord::size},
                                {"strt"_key, &SongRecord::start}};

constexpr std::int32_t kRating_None = 255;

std::int32_t IntegerOf(const CMeta& song, MetaKey key, std::int32_t none = 0) {
    const CMetaValue value = song.Stored(key);
    return value ? value.Integer() : none;
}

/** What a narrow field holds of `value`: 0 for what does not fit, which then stands among the rest. */
template <typename Field>
Field Fitting(std::int32_t value) {
    const bool fitsB = value >= std::numeric_limits<Field>::min() && value <= std::numeric_limits<Field>::max();
    return fitsB ? static_cast<Field>(value) : Field{0};
}

std::uint16_t PipFlags(std::int32_t pip) {
    return pip == 2 ? kSongFlag_Pip2 : pip == 3 ? kSongFlag_Pip3 : pip == 4 ? kSongFlag_Pip4 : std::uint16_t{0};
}

}   // namespace

struct CSongRecordMeta::PathField {
    SDB_SongFile type;
    SongText text;
    std::uint16_t relativeFlag;
};
const std::array<CSongRecordMeta::PathField, 5> CSongRecordMeta::kPaths = {
    {{SDB_SongFile_VIDEO, SongText::kVideoPath, kSongFlag_VideoRelative},
     {SDB_SongFile_AUDIO, SongText::kAudioPath, kSongFlag_AudioRelative},
     {SDB_SongFile_ZIP, SongText::kZipPath, kSongFlag_ZipRelative},
     {SDB_SongFile_PROJECT, SongText::kProjectPath, kSongFlag_ProjectRelative},
     {SDB_SongFile_LAUNCH, SongText::kLaunchPath, kSongFlag_LaunchRelative}}};

void CSongRecordMeta::Load(const SongRecord& record, CMeta& song) {
    i_entries.clear();
    const auto put = [this](MetaKey key, CMetaValue value) { i_entries.push_back({key, std::move(value)}); };
    const auto putNumber = [&put](MetaKey key, std::int32_t value) { put(key, CMetaValue(value)); };
    for (const auto& [key, which, sharedB] : kTexts)
        if (const std::string_view text = record.Text(which); !text.empty())
            put(key, CMetaValue(sharedB ? CMetaText::Interned(text) : CMetaText::Of(text)));
    for (const auto& [key, field] : kWords)
        if (record.*field != 0) putNumber(key, static_cast<std::int32_t>(record.*field));
    putNumber("rtng"_key, record.rating);
    putNumber("vChn"_key, record.vocalChannel);
    putNumber("PICH"_key, record.pitch);
    put("TMPO"_key, CMetaValue(TempoOfStep(record.tempo)));
    putNumber("cryr"_key, record.year);
    if (record.graphicChannels != 0) putNumber("gChn"_key, record.graphicChannels);
    for (const std::int32_t pip : {2, 3, 4})
        if ((record.flags & PipFlags(pip)) != 0) putNumber("mPip"_key, pip);
    if (record.format != SongRecord::kNoFormat)
        put("Frmt"_key, CMetaValue(CMetaText::Interned(SuperString::FromOSType(record.format))));
    if (const auto date = SongDateOf(record.date)) put("Date"_key, CMetaValue(*date));
    if (const auto date = UnpackDateAdded(record.dateAdded)) put("DAdd"_key, CMetaValue(*date));
    for (const PathField& field : kPaths) LoadPath(field, record);
    song.Load(i_entries);
}

void CSongRecordMeta::LoadPath(const PathField& field, const SongRecord& record) {
    const std::string_view text = record.Text(field.text);
    if (text.empty()) return;
    std::filesystem::path path(text);
    if ((record.flags & field.relativeFlag) != 0 && path.is_relative()) {
        const std::filesystem::path inside = (i_music / path).lexically_normal();
        if (IsInside(inside, i_music)) path = inside;
    }
    i_entries.push_back({SongFileKey(field.type), CMetaValue::File(i_status.Of(field.type, path), path.native())});
}

SongRecord CSongRecordMeta::Make(std::uint32_t songID, const CMeta& song) {
    SongRecord record;
    record.songID = songID;
    i_values.clear();
    for (const auto& [key, which, sharedB] : kTexts) {
        i_values.push_back(song.Stored(key));
        record.Text(which) = i_values.back().Text();   // in the value's box, which stays where it is
    }
    for (const auto& [key, field] : kWords) record.*field = static_cast<std::uint32_t>(IntegerOf(song, key));
    record.rating = Fitting<std::uint8_t>(IntegerOf(song, "rtng"_key, kRating_None));
    record.vocalChannel = Fitting<std::uint8_t>(IntegerOf(song, "vChn"_key));
    record.pitch = Fitting<std::int8_t>(IntegerOf(song, "PICH"_key));   // 255, no pitch, becomes 0
    const CMetaValue tempo = song.Stored("TMPO"_key);
    record.tempo = StoredTempo(tempo ? tempo.Float() : 1.0);
    record.year = Fitting<std::uint16_t>(IntegerOf(song, "cryr"_key));
    record.graphicChannels = Fitting<std::uint16_t>(IntegerOf(song, "gChn"_key));
    record.flags = PipFlags(IntegerOf(song, "mPip"_key));
    OSType format = 0;
    const CMetaValue formatText = song.Stored("Frmt"_key);
    if (formatText && !Failed(SuperString(formatText.Text()).ToOSType(format))) record.format = format;
    if (const CMetaValue date = song.Stored("Date"_key)) record.date = StoredSongDate(date.Date());
    if (const CMetaValue date = song.Stored("DAdd"_key)) record.dateAdded = PackDateAdded(date.Date());
    for (const PathField& field : kPaths) {
        std::string& path = i_paths[static_cast<std::size_t>(field.text)];
        path = song.Stored(SongFileKey(field.type)).FilePath();
        if (!i_music.empty() && IsInside(path, i_music)) {
            path = std::filesystem::path(path).lexically_relative(i_music).native();
            record.flags |= field.relativeFlag;
        }
        record.Text(field.text) = path;
    }
    const bool wholeB = !record.Text(SongText::kAudioPath).empty() && !record.Text(SongText::kVideoPath).empty();
    if (!wholeB && record.Text(SongText::kZipPath).empty()) record.flags |= kSongFlag_Missing;
    return record;
}

CCFDictionary CSongRecordMeta::Rest(const CMeta& song) const {
    std::set<std::string> held = {"soID", "DAdd", "Date", "TMPO", "Msng"};
    for (const auto& field : kTexts) held.insert(MetaKeyText(field.key));
    for (const auto& field : kWords) held.insert(MetaKeyText(field.key));
    for (const PathField& field : kPaths) held.insert(MetaKeyText(SongFileKey(field.type)));
    const auto holdIf = [&held](MetaKey key, bool fitsB) {
        if (fitsB) held.insert(MetaKeyText(key));
    };
    const auto in = [&song](MetaKey key, std::int32_t low, std::int32_t high) {
        const std::int32_t value = IntegerOf(song, key);
        return value >= low && value <= high;
    };
    holdIf("rtng"_key, in("rtng"_key, 0, 255));
    holdIf("vChn"_key, in("vChn"_key, 0, 255));
    holdIf("PICH"_key, in("PICH"_key, -128, 127));
    holdIf("cryr"_key, in("cryr"_key, 0, 65535));
    holdIf("gChn"_key, in("gChn"_key, 1, 65535));
    holdIf("mPip"_key, in("mPip"_key, 2, 4));
    OSType format = 0;
    holdIf("Frmt"_key, !Failed(SuperString(song.Stored("Frmt"_key).Text()).ToOSType(format)));

    CCFDictionary rest;
    for (const auto& [key, value] : song.ToDictionary(CMeta::FileSlots::kWith))
        if (!held.contains(key)) rest.Set(key, value);
    return rest;
}

void CSongRecordMeta::LoadRest(const CCFDictionary& rest, CMeta& song) {
    const CMeta::QuietChanges quiet(song);
    song.FromDictionary(rest);
    i_entries.clear();
    for (std::int16_t n = 0; n < static_cast<std::int16_t>(SDB_SongFile_numtypes); ++n) {
        const auto type = static_cast<SDB_SongFile>(n);
        const MetaKey key = SongFileKey(type);
        if (!rest.Has(MetaKeyText(key))) continue;
        const CMetaValue value = song.Stored(key);
        if (!value) continue;
        CMetaSongFile file = value.SongFile();   // a dictionary names the file, and not whose it is
        file.status = i_status.Of(type, file.ref.GetPath());
        i_entries.push_back({key, CMetaValue(file)});
    }
    song.Load(i_entries);
    song.SetDirty(false);
}
