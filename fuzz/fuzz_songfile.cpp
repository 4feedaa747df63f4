#include <sys/mman.h>
#include <unistd.h>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "Storage/CSongFileReader.h"

// Whatever is read can be written, and reads back the same, unless an offset falls on a number that the form misreads.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* dataP, std::size_t sizeL) {
    const int handle = ::memfd_create("songs", 0);
    if (handle < 0 || ::write(handle, dataP, sizeL) != static_cast<ssize_t>(sizeL)) std::abort();
    CSongFileReader reader;
    if (!Failed(reader.Open(CFileRef("/proc/self/fd/" + std::to_string(handle))))) {
        for (SongRecord song; reader.Next(song);) {
            std::string bytes;
            if (Failed(song.Encode(bytes))) __builtin_trap();
            if (song.graphicChannels == 3) song.graphicChannels = 0;
            const auto all = std::as_bytes(std::span<const char>(bytes));
            SongRecord again;
            const unsigned misread =
                again.Decode(all.first<SongRecord::kBytes>(), all.subspan(SongRecord::kBytes), SongFileOrder::kBig);
            if (misread == 0 && !(again == song)) __builtin_trap();
            if (misread != 0 && bytes.size() < 65536) __builtin_trap();
        }
    }
    if (!Failed(reader.Finish()) && reader.Header().Version() > CSongFileReader::kNewestVersion) __builtin_trap();
    ::close(handle);
    return 0;
}
