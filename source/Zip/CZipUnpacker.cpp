#include "Zip/CZipUnpacker.h"

#include <zlib.h>

#include <algorithm>
#include <limits>

#include "Zip/CInflate64.h"

namespace {

/** zlib's inflate without a header. */
class CUnpacker_Deflate final : public CZipUnpacker {
public:
    CUnpacker_Deflate() : i_readyB(inflateInit2(&i_stream, -MAX_WBITS) == Z_OK) {}
    CUnpacker_Deflate(const CUnpacker_Deflate& other)
        : CZipUnpacker(other),
          i_readyB(other.i_readyB && inflateCopy(&i_stream, const_cast<z_stream*>(&other.i_stream)) == Z_OK) {}
    ~CUnpacker_Deflate() override {
        if (i_readyB) inflateEnd(&i_stream);
    }
    [[nodiscard]] bool IsReady() const { return i_readyB; }

    Step Run(std::span<const std::byte> in, std::span<std::byte> out) override {
        constexpr std::size_t kMost = std::numeric_limits<uInt>::max();
        const uInt inL = static_cast<uInt>(std::min(in.size(), kMost));
        const uInt outL = static_cast<uInt>(std::min(out.size(), kMost));
        i_stream.next_in = reinterpret_cast<Bytef*>(const_cast<std::byte*>(in.data()));
        i_stream.avail_in = inL;
        i_stream.next_out = reinterpret_cast<Bytef*>(out.data());
        i_stream.avail_out = outL;
        const int answer = inflate(&i_stream, Z_NO_FLUSH);
        Step step{Status::kMore, inL - i_stream.avail_in, outL - i_stream.avail_out};
        if (answer == Z_STREAM_END)
            step.status = Status::kEnd;
        else if (answer != Z_OK && answer != Z_BUF_ERROR)
            step.status = Status::kBad;
        return step;
    }
    std::unique_ptr<CZipUnpacker> Clone() const override {
        auto copy = std::make_unique<CUnpacker_Deflate>(*this);
        return copy->IsReady() ? std::move(copy) : nullptr;
    }

private:
    z_stream i_stream{};
    bool i_readyB = false;
};

class CUnpacker_Deflate64 final : public CZipUnpacker {
public:
    Step Run(std::span<const std::byte> in, std::span<std::byte> out) override {
        const CInflate64::Step step = i_inflate.Run(in, out);
        Status status = Status::kMore;
        if (step.status == CInflate64::Status::kEnd) status = Status::kEnd;
        if (step.status == CInflate64::Status::kBad) status = Status::kBad;
        return {status, step.takenL, step.givenL};
    }
    std::unique_ptr<CZipUnpacker> Clone() const override { return std::make_unique<CUnpacker_Deflate64>(*this); }

private:
    CInflate64 i_inflate;
};

}   // namespace

std::unique_ptr<CZipUnpacker> CZipUnpacker::Make(std::uint16_t method) {
    switch (static_cast<ZipMethod>(method)) {
        case ZipMethod::kStored:
            break;
        case ZipMethod::kDeflate: {
            auto made = std::make_unique<CUnpacker_Deflate>();
            return made->IsReady() ? std::move(made) : nullptr;
        }
        case ZipMethod::kDeflate64:
            return std::make_unique<CUnpacker_Deflate64>();
    }
    return nullptr;
}

std::uint64_t CZipUnpacker::MostUnpacked(std::uint16_t method, std::uint64_t packed) noexcept {
    // A match of 258 bytes from two bits; one of 65,538 from 18, for which 32,768 a byte is a round bound.
    std::uint64_t times = 1;
    if (method == static_cast<std::uint16_t>(ZipMethod::kDeflate)) times = 1032;
    if (method == static_cast<std::uint16_t>(ZipMethod::kDeflate64)) times = 32768;
    constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();
    return packed > kMost / times ? kMost : packed * times;
}
