#pragma once
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "Files/CByteSource.h"

/** What a file says of its sound. */
struct MediaFacts {
    std::string container, codec;   // FFmpeg's names: "mp3", "matroska,webm"; "mp3float", "aac"
    int channels = 0;
    int rate = 0;         // frames a second in the file
    double seconds = 0;   // as told by the file; 0: not told
};

/** Any sound that FFmpeg reads, of an audio file or of the sound track of a movie, as the chain's sound: 44.1 kHz,
    stereo, 16 bits, left first. The encoder's delay and padding are not heard. One channel comes out of both sides at
    its full level, more than two are mixed down. A damaged packet is silence of its length, a file that was cut off
    plays what it has, a stream that changes its form goes on.
    Units    frames: two samples.
    Threads  one at a time; Abort any.
    Owner    whoever plays. The source, not owned, outlives it.
    Errors   statuses. paramErr: no sound in it that can be read; eofErr: the end; abortErr; what the source says. */
class CMediaAudio {
public:
    CMediaAudio();
    ~CMediaAudio();
    CMediaAudio(const CMediaAudio&) = delete;
    CMediaAudio& operator=(const CMediaAudio&) = delete;

    /** Once. Reads the head of the file, never all of it. `extension` without its dot is a hint; "pcm" and "raw" are
        headerless 16-bit stereo. */
    OSErr Open(CByteSource& source, std::string_view extension = {});
    /** Whole frames into the front of `to`; `gotL` samples. Less than `to` only at the end. eofErr with nothing got. */
    OSErr Read(std::span<std::int16_t> to, std::size_t& gotL);
    /** The next Read begins at `frame`, with the samples that a straight reading has there. After the end is the end.
        Where the table of packets does not reach, what lies between is read, in some formats decoded. Codecs that fill
        in noise of their own (AAC, Opus, WMA) may fill in another. */
    OSErr Seek(std::uint64_t frame);
    [[nodiscard]] std::uint64_t Position() const noexcept;

    /** An estimate until IsTotalExact, which is at the latest when the end was read. */
    [[nodiscard]] std::uint64_t TotalFrames() const noexcept;
    [[nodiscard]] bool IsTotalExact() const noexcept;
    [[nodiscard]] const MediaFacts& Facts() const noexcept;
    /** Packets that could not be decoded so far. */
    [[nodiscard]] std::uint64_t DamagedPackets() const noexcept;
    /** Any thread: Open, Read and Seek answer abortErr from now on, soon. */
    void Abort() noexcept;

private:
    class Decoder;
    const std::unique_ptr<Decoder> i_decoderP;
};
