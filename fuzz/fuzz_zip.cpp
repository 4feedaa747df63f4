#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "Core/CByteSource_Zip.h"
#include "Core/CZipArchive.h"
#include "Core/CZipSongMembers.h"

namespace {

class CByteSource_Span final : public CByteSource {
public:
    explicit CByteSource_Span(std::span<const std::byte> bytes) : i_bytes(bytes) {}
    OSErr Read(std::span<std::byte> to, std::size_t& got) override {
        got = std::min(to.size(), i_bytes.size() - i_atL);
        if (got > 0) std::memcpy(to.data(), i_bytes.data() + i_atL, got);
        i_atL += got;
        return got < to.size() ? eofErr : noErr;
    }
    OSErr Seek(std::uint64_t position) override {
        if (position > i_bytes.size()) return paramErr;
        i_atL = static_cast<std::size_t>(position);
        return noErr;
    }
    std::uint64_t Position() const override { return i_atL; }
    std::uint64_t Size() const override { return i_bytes.size(); }

private:
    std::span<const std::byte> i_bytes;
    std::size_t i_atL = 0;
};

void Check(bool goodB) {
    if (!goodB) __builtin_trap();
}

/** No more than was told; and what a seek gives is what the straight read gave there. */
void ReadMember(std::span<const std::byte> zip, const CZipMember& member) {
    constexpr std::uint64_t kMost = 1 << 20;   // of one member: the rest would only take time
    CByteSource_Zip source;
    if (Failed(source.Open(std::make_unique<CByteSource_Span>(zip), member))) {
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
    const auto zip = std::as_bytes(std::span(dataP, sizeL));
    CByteSource_Span source(zip);
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
