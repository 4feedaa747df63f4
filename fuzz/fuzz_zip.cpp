#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "../tests/Files/MemorySource.h"
#include "Zip/CByteSource_Zip.h"
#include "Zip/CZipArchive.h"
#include "Zip/CZipSongMembers.h"

namespace {

void Check(bool goodB) {
    if (!goodB) __builtin_trap();
}

/** No more than was told; and what a seek gives is what the straight read gave there. */
void ReadMember(const std::string& zip, const CZipMember& member) {
    constexpr std::uint64_t kMost = 1 << 20;   // of one member: the rest would only take time
    CByteSource_Zip source;
    if (Failed(source.Open(std::make_unique<MemorySource>(zip), member))) {
        Check(source.Fault() != ZipFault::kNone);
        return;
    }
    std::vector<std::byte> whole;
    for (;;) {
        std::byte part[4'096];
        std::size_t got = 0;
        const OSErr err = source.Read(part, got);
        whole.insert(whole.end(), part, part + got);
        Check(whole.size() <= member.sizeL && source.Position() == whole.size());
        Check((err == eofErr) ==
              (whole.size() == member.sizeL && source.Fault() == ZipFault::kNone && got < sizeof part));
        if (Failed(err) || whole.size() > kMost) break;
    }
    for (std::size_t at = whole.size(); at > 0; at /= 2) {
        std::byte part[100];
        std::size_t got = 0;
        Check(!Failed(source.Seek(at)));
        static_cast<void>(source.Read(part, got));
        const std::size_t sameL = std::min(got, whole.size() - at);
        Check(std::equal(part, part + sameL, whole.begin() + static_cast<std::ptrdiff_t>(at)));
    }
}

}   // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* dataP, std::size_t sizeL) {
    const std::string zip(reinterpret_cast<const char*>(dataP), sizeL);
    MemorySource source(zip);
    CZipArchive archive;
    const bool openB = !Failed(archive.Open(source));
    Check(openB == (archive.Fault() == ZipFault::kNone));
    const CZipSongMembers song = CZipSongMembers::Choose(archive.Members());
    Check(!song.audio || *song.audio < archive.Members().size());
    for (const CZipMember& member : archive.Members()) {
        const std::string safe = member.SafeName();
        Check(!safe.empty() && safe != "." && safe != ".." && safe.size() <= 240 &&
              safe.find_first_of(std::string_view("/\\\0", 3)) == std::string::npos);
        ReadMember(zip, member);
    }
    return 0;
}
