#include "Storage/CSongRecordMeta.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "Meta/TempoSteps.h"

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

/** What a narrow field holds of `value`: 0 for what does not fit, which then stands among the rest. */
template <typename Field>
Field Fitting(std::int32_t value) {
    const bool fitsB = value >= std::numeric_limits<Field>::min() && value <= std::numeric_limits<Field>::max();
    return fitsB ? static_cast<Field>(value) : Field{0};
}

/** Four characters, the last ones blanks perhaps, which nobody sees: "MP3" is "MP3 ". */
bool IsFormat(std::string_view text, OSType& code) {
    constexpr std::size_t kCode_Length = 4;
    std::string four(text);
    if (!four.empty() && four.size() < kCode_Length && four.back() != ' ') four.resize(kCode_Length, ' ');
    return !Failed(SuperString(four).ToOSType(code));
}

std::string WithoutBlanks(std::string text) {
    const std::size_t last = text.find_last_not_of(' ');
    if (last != std::string::npos) text.resize(last + 1);
    return text;
}

std::uint16_t PipFlags(std::int32_t pip) {
    return pip == 2 ? kSongFlag_Pip2 : pip == 3 ? kSongFlag_Pip3 : pip == 4 ? kSongFlag_Pip4 : std::uint16_t{0};
}

/** What is stored of a song, looked up without its lock: a song is asked some twenty times. */
class StoredValues {
public:
    explicit StoredValues(std::span<const MetaEntry> entries) : i_entries(entries) {}
    [[nodiscard]] const CMetaValue& operator[](MetaKey key) const {
        static const CMetaValue s_none;
        const auto it = std::ranges::find(i_entries, key, &MetaEntry::key);
        return it == i_entries.end() ? s_none : it->value;
    }
    [[nodiscard]] std::int32_t Integer(MetaKey key, std::int32_t none = 0) const {
        const CMetaValue& value = (*this)[key];
        return value ? value.Integer() : none;
    }

private:
    std::span<const MetaEntry> i_entries;
};

/** A relative path that is its own normal form for sure: nothing in it goes up, stays, or is empty. (One with a name
    that begins with a dot is none of these, and is taken the long way.) */
bool IsPlain(std::string_view path) {
    return !path.empty() && path.front() != '/' && path.front() != '.' && path.back() != '/' &&
           path.find("//") == std::string_view::npos && path.find("/.") == std::string_view::npos;
}

/** The music folder with a "/" behind it; empty when it is not in its normal form. */
std::string MusicPrefix(const std::filesystem::path& music) {
    const std::string& text = music.native();
    const bool normalB = music.is_absolute() && text.back() != '/' && music.lexically_normal().native() == text;
    return normalB ? text + '/' : std::string();
}

}   // namespace

CSongRecordMeta::CSongRecordMeta(std::filesystem::path musicFolder, CSongStatus status)
    : i_music(std::move(musicFolder)), i_musicPrefix(MusicPrefix(i_music)), i_status(std::move(status)) {}

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
        put("Frmt"_key, CMetaValue(CMetaText::Interned(WithoutBlanks(SuperString::FromOSType(record.format).UTF8()))));
    if ((record.flags & kSongFlag_Missing) != 0) put("Msng"_key, CMetaValue(BoolValueType::kTrue));
    if (const auto date = SongDateOf(record.date)) put("Date"_key, CMetaValue(*date));
    if (const auto date = UnpackDateAdded(record.dateAdded)) put("DAdd"_key, CMetaValue(*date));
    for (const PathField& field : kPaths) LoadPath(field, record);
    song.Load(i_entries);
}

void CSongRecordMeta::LoadPath(const PathField& field, const SongRecord& record) {
    const std::string_view text = record.Text(field.text);
    if (text.empty()) return;
    if ((record.flags & field.relativeFlag) != 0 && !i_musicPrefix.empty() && IsPlain(text)) {   // nearly all
        i_entries.push_back(
            {SongFileKey(field.type), CMetaValue::File(SDB_SongFileStatus_MUSIC, i_musicPrefix + std::string(text))});
        return;
    }
    std::filesystem::path path(text);
    if ((record.flags & field.relativeFlag) != 0 && path.is_relative()) {
        const std::filesystem::path inside = (i_music / path).lexically_normal();
        if (IsInside(inside, i_music)) path = inside;
    }
    i_entries.push_back({SongFileKey(field.type), CMetaValue::File(i_status.Of(field.type, path), path.native())});
}

SongRecord CSongRecordMeta::Make(std::uint32_t songID, const CMeta& song, CCFDictionary& rest) {
    i_stored = song.AllStored();   // the texts of the record lie in it
    const StoredValues stored(i_stored);
    SongRecord record;
    record.songID = songID;
    for (const auto& [key, which, sharedB] : kTexts) record.Text(which) = stored[key].Text();
    for (const auto& [key, field] : kWords) record.*field = static_cast<std::uint32_t>(stored.Integer(key));
    record.rating = Fitting<std::uint8_t>(stored.Integer("rtng"_key, kRating_None));
    record.vocalChannel = Fitting<std::uint8_t>(stored.Integer("vChn"_key));
    record.pitch = Fitting<std::int8_t>(stored.Integer("PICH"_key));   // 255, no pitch, becomes 0
    const CMetaValue& tempo = stored["TMPO"_key];
    record.tempo = StoredTempo(tempo ? tempo.Float() : 1.0);
    record.year = Fitting<std::uint16_t>(stored.Integer("cryr"_key));
    record.graphicChannels = Fitting<std::uint16_t>(stored.Integer("gChn"_key));
    record.flags = PipFlags(stored.Integer("mPip"_key));
    OSType format = 0;
    const CMetaValue& formatText = stored["Frmt"_key];
    if (formatText && IsFormat(formatText.Text(), format)) record.format = format;
    if (const CMetaValue& date = stored["Date"_key]) record.date = StoredSongDate(date.Date());
    if (const CMetaValue& date = stored["DAdd"_key]) record.dateAdded = PackDateAdded(date.Date());
    for (const PathField& field : kPaths) {
        const CMetaValue& value = stored[SongFileKey(field.type)];
        if (value) record.Text(field.text) = StoredPath(field, value, record.flags);
    }
    const bool placeB = std::ranges::any_of(std::array{SongText::kAudioPath, SongText::kVideoPath, SongText::kZipPath},
                                            [&record](SongText which) { return !record.Text(which).empty(); });
    if (!placeB || stored["Msng"_key].Bool() == BoolValueType::kTrue) record.flags |= kSongFlag_Missing;
    rest = Rest();
    return record;
}

/** The path as a record has it; a file in the music folder sets its flag. The text belongs to this object. */
std::string_view CSongRecordMeta::StoredPath(const PathField& field, const CMetaValue& value, std::uint16_t& flags) {
    std::string& path = i_paths[static_cast<std::size_t>(field.text)];
    path = value.FilePath();
    const std::string_view whole = path;
    if (!i_musicPrefix.empty() && whole.starts_with(i_musicPrefix) && IsPlain(whole.substr(i_musicPrefix.size()))) {
        flags |= field.relativeFlag;
        return whole.substr(i_musicPrefix.size());
    }
    if (!i_music.empty() && IsInside(path, i_music)) {
        path = std::filesystem::path(path).lexically_relative(i_music).native();
        flags |= field.relativeFlag;
    }
    return path;
}

bool CSongRecordMeta::IsHeld(MetaKey key, const CMetaValue& value) {
    const auto in = [&value](std::int32_t low, std::int32_t high) {
        return value.Integer() >= low && value.Integer() <= high;
    };
    const auto isKey = [key](const auto& field) { return field.key == key; };
    if (std::ranges::any_of(kTexts, isKey) || std::ranges::any_of(kWords, isKey)) return true;
    for (const PathField& field : kPaths)
        if (SongFileKey(field.type) == key) return true;
    switch (static_cast<std::uint32_t>(key)) {
        case static_cast<std::uint32_t>("soID"_key):
        case static_cast<std::uint32_t>("DAdd"_key):
        case static_cast<std::uint32_t>("Date"_key):
        case static_cast<std::uint32_t>("TMPO"_key):
        case static_cast<std::uint32_t>("Msng"_key):
            return true;
        case static_cast<std::uint32_t>("rtng"_key):
        case static_cast<std::uint32_t>("vChn"_key):
            return in(0, 255);
        case static_cast<std::uint32_t>("PICH"_key):
            return in(-128, 127);
        case static_cast<std::uint32_t>("cryr"_key):
            return in(0, 65535);
        case static_cast<std::uint32_t>("gChn"_key):
            return in(1, 65535);
        case static_cast<std::uint32_t>("mPip"_key):
            return in(2, 4);
        case static_cast<std::uint32_t>("Frmt"_key): {
            OSType format = 0;
            return IsFormat(value.Text(), format);
        }
        default:
            return false;
    }
}

/** Keys that nobody knows here too, of a later program perhaps. */
CCFDictionary CSongRecordMeta::Rest() const {
    std::vector<MetaEntry> rest;
    for (const MetaEntry& entry : i_stored)
        if (!IsHeld(entry.key, entry.value)) rest.push_back(entry);
    return CMeta::MakeDictionary(rest);
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
