#include "Library/SongFileTypes.h"

#include <array>

#include "Core/SmallExtension.h"
#include "Files/ZipSongKinds.h"

namespace {

using Texts = std::span<const std::string_view>;
using Types = std::span<const SDB_SongFile>;

constexpr std::string_view kAudio[] = {".aif", ".aiff", ".wav", ".aac", ".mp4", ".m4a",
                                       ".mov", ".mp3",  ".ogg", ".wma", ".amr"};
constexpr std::string_view kVideo[] = {".cdg", ".mcg", ".ncg"}, kZip[] = {".zip"}, kPcm[] = {".pcm"}, kCdg[] = {".cdg"},
                           kXml[] = {".xml"}, kProject[] = {".vlp", ".lrc", ".txt", ".fly"};

constexpr SDB_SongFile kFor_Audio[] = {SDB_SongFile_VIDEO, SDB_SongFile_META, SDB_SongFile_PROJECT},
                       kFor_Video[] = {SDB_SongFile_AUDIO, SDB_SongFile_META, SDB_SongFile_PROJECT},
                       kFor_Zip[] = {SDB_SongFile_META, SDB_SongFile_PROJECT},
                       kFor_AudioCache[] = {SDB_SongFile_VIDEO_CACHE}, kFor_VideoCache[] = {SDB_SongFile_AUDIO_CACHE},
                       kFor_Meta[] = {SDB_SongFile_AUDIO,   SDB_SongFile_VIDEO,       SDB_SongFile_ZIP,
                                      SDB_SongFile_PROJECT, SDB_SongFile_AUDIO_CACHE, SDB_SongFile_VIDEO_CACHE},
                       kFor_Project[] = {SDB_SongFile_AUDIO, SDB_SongFile_VIDEO, SDB_SongFile_ZIP, SDB_SongFile_META};

struct TypeRow {
    std::string_view logWord, extension;
    Texts search;
    Types bases;
};
const std::array<TypeRow, 12> kTypes = {{{"Audio ", ".mp3", kAudio, kFor_Audio},
                                         {"Video ", ".cdg", kVideo, kFor_Video},
                                         {"Zip   ", ".zip", kZip, kFor_Zip},
                                         {"AudCsh", ".pcm", kPcm, kFor_AudioCache},
                                         {"VidCsh", ".cdg", kCdg, kFor_VideoCache},
                                         {"Meta  ", ".xml", kXml, kFor_Meta},
                                         {"Aud CD", "", {}, {}},
                                         {"Vid CD", "", {}, {}},
                                         {"Unpack", "", {}, {}},
                                         {"TmpZip", "", {}, {}},
                                         {"Proj  ", ".vlp", kProject, kFor_Project},
                                         {"Launch", "", {}, {}}}};
const TypeRow kNone = {"None  ", "", {}, {}};

const TypeRow& RowOf(SDB_SongFile type) {
    const auto number = static_cast<std::size_t>(type);   // NONE becomes huge
    return number < kTypes.size() ? kTypes[number] : kNone;
}

}   // namespace

std::string_view SongFileLogWord(SDB_SongFile type) { return RowOf(type).logWord; }
std::string_view SongFileExtension(SDB_SongFile type) { return RowOf(type).extension; }
Texts SongFileSearchExtensions(SDB_SongFile type) { return RowOf(type).search; }
bool IsMovieFile(const std::filesystem::path& file) {
    const ZipSongKinds kinds = ZipSongKindsOf(file.filename().string());
    return kinds.videoB && !kinds.graphicsB;
}
bool IsMidiFile(const std::filesystem::path& file) {
    const std::string extension = SmallExtension(file);
    return extension == "mid" || extension == "midi" || extension == "kar";
}
Types SongFileSearchBases(SDB_SongFile type) { return RowOf(type).bases; }
