#include <sys/mman.h>
#include <unistd.h>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "Storage/LibraryFiles.h"
#include "Values/CCFXmlWriter.h"
#include "Values/PropertyList.h"

// Whatever reads as a playlist is written so that it reads back the same; the other readers bear the same bytes.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* dataP, std::size_t sizeL) {
    const int handle = ::memfd_create("list", 0);
    if (handle < 0 || ::write(handle, dataP, sizeL) != static_cast<ssize_t>(sizeL)) std::abort();
    const CFileRef file("/proc/self/fd/" + std::to_string(handle));
    LibraryIndex index;
    SingerRecord singer;
    std::vector<SingerRecord> singers;
    SongDictionaries songs;
    static_cast<void>(ReadLibraryIndex(file, index));
    static_cast<void>(ReadSingerFile(file, singer));
    static_cast<void>(ReadSingersFile(file, singers));
    static_cast<void>(ReadSongTable(file, SongTable::kMeta, songs));
    PlaylistRecord playlist;
    if (!Failed(ReadPlaylistFile(file, playlist))) {
        std::string text;
        CCFXmlWriter writer([&text](std::string_view bytes) {
            text += bytes;
            return noErr;
        });
        playlist.Write(writer);
        if (Failed(writer.Finish())) __builtin_trap();
        if (::ftruncate(handle, 0) != 0 ||
            ::pwrite(handle, text.data(), text.size(), 0) != static_cast<ssize_t>(text.size()))
            std::abort();
        PlaylistRecord again;
        if (Failed(ReadPlaylistFile(file, again)) || !(again == playlist)) __builtin_trap();
    }
    ::close(handle);
    return 0;
}
