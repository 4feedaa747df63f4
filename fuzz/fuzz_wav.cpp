// A WAV head that is taken names bytes that are in the file, and the head that we would write for them is taken again.
#include <algorithm>
#include <span>
#include <vector>

#include "Audio/CWavHeader.h"

namespace {
class Bytes final : public CByteSource {
public:
    explicit Bytes(std::span<const std::byte> bytes) : i_bytes(bytes) {}
    OSErr Read(std::span<std::byte> to, std::size_t& got) override {
        got = std::min(to.size(), i_bytes.size() - i_atL);
        std::copy_n(i_bytes.begin() + static_cast<std::ptrdiff_t>(i_atL), got, to.begin());
        i_atL += got;
        return got < to.size() ? eofErr : noErr;
    }
    OSErr Seek(std::uint64_t position) override {
        if (position > i_bytes.size()) return paramErr;
        i_atL = position;
        return noErr;
    }
    [[nodiscard]] std::uint64_t Position() const override { return i_atL; }
    [[nodiscard]] std::uint64_t Size() const override { return i_bytes.size(); }

private:
    std::span<const std::byte> i_bytes;
    std::size_t i_atL = 0;
};
}   // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* dataP, std::size_t sizeL) {
    Bytes source(std::as_bytes(std::span(dataP, sizeL)));
    CWavHeader header;
    if (Failed(header.Read(source))) return 0;
    if (header.dataAtL > sizeL || header.dataBytesL > sizeL - header.dataAtL || header.dataBytesL % 4 != 0)
        __builtin_trap();
    const auto head = CWavHeader::Make(header.dataBytesL);
    std::vector<std::byte> whole(head.begin(), head.end());
    whole.resize(whole.size() + header.dataBytesL);
    Bytes ours(whole);
    CWavHeader again;
    if (Failed(again.Read(ours)) || again.dataAtL != CWavHeader::kBytes || again.dataBytesL != header.dataBytesL)
        __builtin_trap();
    return 0;
}
