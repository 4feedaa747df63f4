#include "Media/MP3Length.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <string_view>
#include <vector>

#include "Media/MP3Frame.h"

namespace {

constexpr std::size_t kSearch_First = 16U << 10, kSearch_Most = 128U << 10;   // for the first frame
constexpr std::size_t kChain_Proof = 4;                                       // frames one behind the other: no chance
constexpr std::size_t kTail_Bytes = 64U << 10;                                // in which the last frame is found
constexpr std::uint64_t kTag_Bytes = 2U << 10;   // behind the last frame, and no part of the encoder's count
constexpr std::size_t kSample_Bytes = 8U << 10, kSamples = 12;
constexpr std::size_t kWalk_Bytes = 256U << 10;
constexpr std::uint64_t kMP3Walk_Most = 512U << 20;
constexpr std::size_t kFrame_Most = 2881;   // bytes: layer II, 384 kbit/s, 32 kHz, and then some

std::uint32_t Big(std::span<const std::byte> bytes) {
    std::uint32_t number = 0;
    for (const std::byte b : bytes.first(std::min<std::size_t>(bytes.size(), 4)))
        number = number << 8U | std::to_integer<std::uint32_t>(b);
    return number;
}

bool Begins(std::span<const std::byte> bytes, std::string_view words) {
    return bytes.size() >= words.size() && std::memcmp(bytes.data(), words.data(), words.size()) == 0;
}

/** One file on its way to its length. */
class Search {
public:
    explicit Search(CByteSource& source) : i_source(source), i_endL(source.Size()) {}

    OSErr Run(MP3Length& length) {
        if (const OSErr err = SkipTags(); Failed(err)) return err;
        if (const OSErr err = FindFirst(); Failed(err)) return err;
        length.rateL = i_first.rateL;
        if (HasCount(length.samplesL)) return noErr;
        const bool nearB = i_source.WayTo(i_endL) == 0;
        if (nearB && IsConstant(length.samplesL)) return noErr;
        return Count(length.samplesL);
    }

private:
    /** What lies there; less than was asked for at the end. */
    OSErr Load(std::uint64_t at, std::size_t bytesL) {
        i_bytes.resize(static_cast<std::size_t>(std::min<std::uint64_t>(bytesL, i_endL - std::min(i_endL, at))));
        if (i_bytes.empty()) return noErr;
        if (const OSErr err = i_source.Seek(at); Failed(err)) return err;
        std::size_t gotL = 0;
        const OSErr err = i_source.Read(i_bytes, gotL);
        i_bytes.resize(gotL);
        return err == eofErr ? noErr : err;
    }
    [[nodiscard]] std::span<const std::byte> At(std::size_t offset) const {
        return std::span(i_bytes).subspan(std::min(offset, i_bytes.size()));
    }
    [[nodiscard]] std::optional<MP3Frame> FrameAt(std::size_t offset) const {
        const auto frame = MP3Frame::Read(At(offset));
        return frame && (i_first.stream == 0 || frame->stream == i_first.stream) ? frame : std::nullopt;
    }

    /** In front: cover and texts, perhaps several times; they tell their size. */
    OSErr SkipTags() {
        for (int tags = 0; tags < 4; ++tags) {
            if (const OSErr err = Load(i_beginL, 10); Failed(err)) return err;
            if (i_bytes.size() < 10 || !Begins(i_bytes, "ID3")) break;
            std::uint64_t sizeL = 0;
            for (const std::byte b : std::span(i_bytes).subspan(6, 4))
                sizeL = sizeL << 7U | (std::to_integer<std::uint64_t>(b) & 0x7FU);
            const bool footerB = (i_bytes[5] & std::byte{0x10}) != std::byte{0};
            sizeL += footerB ? 20 : 10;
            if (sizeL >= i_endL - i_beginL) return paramErr;   // a tag that is all of the file, and more
            i_beginL += sizeL;
        }
        return noErr;
    }

    /** How many frames stand one behind the other from `offset` on, up to `mostL`; `endB`: they end with the file. */
    [[nodiscard]] std::size_t Chain(std::size_t offset, std::size_t mostL, bool& endB) const {
        std::size_t countL = 0;
        endB = false;
        std::uint32_t stream = i_first.stream;
        while (countL < mostL) {
            const auto frame = MP3Frame::Read(At(offset));
            if (!frame || (stream != 0 && frame->stream != stream)) break;
            stream = frame->stream;
            ++countL;
            offset += frame->bytesL;
            if (offset + MP3Frame::kHeader_Bytes > i_bytes.size()) {
                endB = i_loadedAllB;
                break;
            }
        }
        return countL;
    }

    OSErr FindFirst() {
        for (const std::size_t bytesL : {kSearch_First, kSearch_Most}) {
            if (const OSErr err = Load(i_beginL, bytesL); Failed(err)) return err;
            i_loadedAllB = i_beginL + i_bytes.size() >= i_endL;
            const std::size_t lastL = i_bytes.size() - std::min(i_bytes.size(), MP3Frame::kHeader_Bytes);
            for (std::size_t at = 0; at < lastL; ++at) {
                if (i_bytes[at] != std::byte{0xFF}) continue;
                bool endB = false;
                const std::size_t countL = Chain(at, kChain_Proof, endB);
                if (countL < kChain_Proof && !(endB && countL > 1)) continue;
                i_first = *MP3Frame::Read(At(at));
                i_beginL += at;
                return noErr;
            }
            if (i_loadedAllB) break;
        }
        return paramErr;
    }

    /** The encoder's count, when it agrees with the size of the file. */
    [[nodiscard]] bool HasCount(std::uint64_t& samplesL) {
        if (Failed(Load(i_beginL, kFrame_Most))) return false;
        std::uint64_t framesL = 0, bytesL = 0, cutL = 0;
        const auto hidden = At(MP3Frame::kHeader_Bytes + i_first.sideInfoL);
        const auto vbri = At(MP3Frame::kHeader_Bytes + 32);
        if (Begins(hidden, "Xing") || Begins(hidden, "Info")) {
            i_countFrameB = true;
            const std::uint32_t flags = hidden.size() > 8 ? Big(hidden.subspan(4)) : 0;
            std::size_t at = 8;
            for (const auto& [bit, numberP] : {std::pair{1U, &framesL}, std::pair{2U, &bytesL}}) {
                if ((flags & bit) == 0 || hidden.size() < at + 4) continue;
                *numberP = Big(hidden.subspan(at));
                at += 4;
            }
            at += (flags & 4U) != 0 ? 100 : 0;
            at += (flags & 8U) != 0 ? 4 : 0;
            if (hidden.size() >= at + 24 && (Begins(hidden.subspan(at), "LAME") || Begins(hidden.subspan(at), "Lav"))) {
                const std::uint32_t both = Big(hidden.subspan(at + 21)) >> 8U;
                cutL = (both >> 12U) + (both & 0xFFFU);
            }
        } else if (Begins(vbri, "VBRI") && vbri.size() >= 18) {
            i_countFrameB = true;
            bytesL = Big(vbri.subspan(10));
            framesL = Big(vbri.subspan(14));
        }
        i_cutL = cutL;
        if (framesL == 0) return false;
        const std::uint64_t thereL = i_endL - i_beginL;
        if (bytesL != 0) {   // a file that was cut off, or two that were joined
            const std::uint64_t apartL = std::max(bytesL, thereL) - std::min(bytesL, thereL);
            if (apartL > thereL / 16 + kTag_Bytes) return false;
        } else if (const std::uint64_t bitsL = thereL * 8 * i_first.rateL / (framesL * i_first.samplesL);
                   bitsL < 7000 || bitsL > 500'000) {
            return false;
        }
        samplesL = framesL * i_first.samplesL;
        samplesL -= std::min(samplesL, cutL);
        return true;
    }

    /** The bit rate is the same wherever one looks: the size tells the frames. */
    [[nodiscard]] bool IsConstant(std::uint64_t& samplesL) {
        const std::uint64_t bytesL = i_endL - i_beginL;
        if (bytesL < kTail_Bytes) return false;   // counted as fast
        for (std::size_t n = 0; n < kSamples; ++n)
            if (!IsConstantAt(i_beginL + bytesL / kSamples * n)) return false;
        std::uint64_t lastL = 0;
        if (!FindEnd(lastL)) return false;
        // Padding makes the bit rate true on the average; some encoders never pad.
        const bool mixedB = i_paddedSeenB && i_plainSeenB;
        const std::uint64_t eachL = mixedB ? std::uint64_t{i_first.samplesL} * i_first.kilobitsL * 125
                                           : std::uint64_t{i_first.bytesL} * i_first.rateL;   // bytes, times the rate
        std::uint64_t framesL = ((lastL - i_beginL) * i_first.rateL + eachL / 2) / eachL;
        if (i_countFrameB && framesL > 0) --framesL;
        samplesL = framesL * i_first.samplesL;
        samplesL -= std::min(samplesL, i_cutL);
        return true;
    }
    [[nodiscard]] bool IsConstantAt(std::uint64_t at) {
        if (Failed(Load(at, kSample_Bytes))) return false;
        for (std::size_t offset = 0; offset < std::min(kFrame_Most, i_bytes.size()); ++offset) {
            bool endB = false;
            if (!FrameAt(offset) || Chain(offset, kChain_Proof, endB) < 2) continue;
            for (auto frame = FrameAt(offset); frame; frame = FrameAt(offset)) {
                if (frame->kilobitsL != i_first.kilobitsL) return false;
                (frame->paddedB ? i_paddedSeenB : i_plainSeenB) = true;
                offset += frame->bytesL;
            }
            return true;
        }
        return false;
    }
    /** Behind the last frame, in front of what tags there are. */
    [[nodiscard]] bool FindEnd(std::uint64_t& lastL) {
        const std::uint64_t at = i_endL - std::min<std::uint64_t>(i_endL - i_beginL, kTail_Bytes);
        if (Failed(Load(at, kTail_Bytes))) return false;
        for (std::size_t offset = 0; offset + MP3Frame::kHeader_Bytes <= i_bytes.size(); ++offset) {
            bool endB = false;
            if (!FrameAt(offset) || Chain(offset, kChain_Proof, endB) < 2) continue;
            for (auto frame = FrameAt(offset); frame && offset + frame->bytesL <= i_bytes.size();
                 frame = FrameAt(offset))
                offset += frame->bytesL;
            lastL = at + offset--;   // what follows may be a hole, and more frames behind it
        }
        return lastL > 0;
    }

    /** Goes from frame to frame through all of the file. */
    OSErr Count(std::uint64_t& samplesL) {
        if (i_endL - i_beginL > kMP3Walk_Most) return paramErr;
        std::uint64_t at = i_beginL, framesL = 0, framedL = 0;
        while (at + MP3Frame::kHeader_Bytes <= i_endL) {
            if (const OSErr err = Load(at, kWalk_Bytes); Failed(err)) return err;
            if (i_bytes.size() < MP3Frame::kHeader_Bytes) break;
            i_loadedAllB = at + i_bytes.size() >= i_endL;
            at += CountHere(framesL, framedL);
        }
        if (i_endL - i_beginL - framedL > framedL / 2) return paramErr;   // a third of the file is no sound
        if (i_countFrameB && framesL > 0) --framesL;
        samplesL = framesL * i_first.samplesL;
        samplesL -= std::min(samplesL, i_cutL);
        return samplesL == 0 ? paramErr : noErr;
    }
    /** What is loaded; the bytes that are done with, at least one. */
    [[nodiscard]] std::size_t CountHere(std::uint64_t& framesL, std::uint64_t& framedL) const {
        std::size_t offset = 0;
        bool lostB = false;
        while (offset + MP3Frame::kHeader_Bytes <= i_bytes.size()) {
            const auto frame = FrameAt(offset);
            const std::size_t nextL = frame ? offset + frame->bytesL : 0;
            if (frame && nextL + MP3Frame::kHeader_Bytes > i_bytes.size() && !i_loadedAllB) break;   // more is needed
            // After a gap, what looks like a frame is one when another follows.
            const bool trueB = frame && nextL <= i_bytes.size() && (!lostB || FrameAt(nextL));
            if (trueB) {
                ++framesL;
                framedL += frame->bytesL;
                offset = nextL;
            } else {
                ++offset;
            }
            lostB = !trueB;
        }
        return i_loadedAllB ? i_bytes.size() : std::max<std::size_t>(offset, 1);
    }

    CByteSource& i_source;
    std::uint64_t i_beginL = 0;   // the first frame
    const std::uint64_t i_endL;
    MP3Frame i_first;
    bool i_countFrameB = false;   // which holds the encoder's words, and no sound
    bool i_paddedSeenB = false, i_plainSeenB = false;
    bool i_loadedAllB = false;   // i_bytes end with the file
    std::uint64_t i_cutL = 0;    // samples of delay and padding
    std::vector<std::byte> i_bytes;
};

}   // namespace

OSErr MP3Length::Find(CByteSource& source, MP3Length& length) { return Search(source).Run(length); }
