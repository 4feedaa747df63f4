#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

#include "Zip/CInflate64.h"

namespace {

struct Result {
    CInflate64::Status status = CInflate64::Status::kNeedInput;
    std::vector<std::byte> bytes;
    std::uint64_t usedL = 0;
};

constexpr std::size_t kMost = 1 << 20;

/** Until nothing comes any more, or there are kMost bytes. `turn` chooses the pieces; 0 for all at once. */
Result Run(std::span<const std::byte> in, unsigned turn) {
    auto inflate = std::make_unique<CInflate64>();
    Result result;
    result.bytes.resize(kMost);
    std::size_t gotL = 0;
    for (;;) {
        turn = turn * 1'103'515'245U + (turn != 0 ? 12'345U : 0U);
        const std::size_t inL = turn == 0 ? in.size() : std::min<std::size_t>(in.size(), turn >> 16 & 31);
        const std::size_t outL =
            turn == 0 ? kMost - gotL : std::min<std::size_t>(kMost - gotL, (turn >> 21 & 1023) + 1);
        if (turn >> 28 == 7) inflate = std::make_unique<CInflate64>(*inflate);   // a copy goes on the same way
        const CInflate64::Step step = inflate->Run(in.first(inL), std::span(result.bytes).subspan(gotL, outL));
        if (step.takenL > inL || step.givenL > outL) __builtin_trap();
        in = in.subspan(step.takenL);
        gotL += step.givenL;
        result.status = step.status;
        const bool overB = step.status == CInflate64::Status::kEnd || step.status == CInflate64::Status::kBad;
        if (overB || gotL == kMost || (in.empty() && step.status == CInflate64::Status::kNeedInput)) break;
    }
    result.bytes.resize(gotL);
    result.usedL = inflate->UsedBytes();
    return result;
}

}   // namespace

// No crash, no byte outside, and pieces of any size give what the whole gives.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* dataP, std::size_t sizeL) {
    const auto in = std::as_bytes(std::span(dataP, sizeL));
    const Result whole = Run(in, 0), pieces = Run(in, static_cast<unsigned>(sizeL) * 2 + 1);
    if (whole.bytes != pieces.bytes) __builtin_trap();
    if (whole.bytes.size() < kMost && (whole.status != pieces.status || whole.usedL > sizeL)) __builtin_trap();
    if (whole.status == CInflate64::Status::kEnd && pieces.status == whole.status && whole.usedL != pieces.usedL)
        __builtin_trap();
    return 0;
}
