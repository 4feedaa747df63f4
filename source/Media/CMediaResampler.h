#pragma once
#include <cstddef>
#include <cstdint>
#include <vector>

struct AVChannelLayout;
struct AVCodecContext;
struct AVFrame;
struct SwrContext;

/** Whatever a decoder gives, as the chain's sound: 44.1 kHz, stereo, 16 bits. One channel comes out of both sides at
    its full level. Of more than two the front ones come at their full level, as stereo does, centre and surrounds 3 dB
    below, and the deep effects not at all; what adds up to more than full scale is bent to it, sample by sample, so
    that a seek gives the same samples as playing there. Samples at 44.1 kHz come out at once, others a filter's length
    later.
    Threads  one at a time.
    Owner    CMediaAudio.
    Errors   false: no room, or a form of sound that cannot be. */
class CMediaResampler {
public:
    CMediaResampler() = default;
    ~CMediaResampler();
    CMediaResampler(const CMediaResampler&) = delete;
    CMediaResampler& operator=(const CMediaResampler&) = delete;

    /** Forgets all sound. */
    void Reset();
    /** Would a frame of this form go on where the last one ended? */
    [[nodiscard]] bool Fits(const AVFrame& frame) const;
    /** Takes the form of `frame` from now on. */
    bool Configure(const AVFrame& frame);
    /** Takes the form that a decoder says it will give. */
    bool Configure(const AVCodecContext& codec);
    /** Appends to `to` what comes out for `countL` samples from `fromL` on. */
    bool Convert(const AVFrame& frame, std::size_t fromL, std::size_t countL, std::vector<std::int16_t>& to);
    /** The same for silence, in the form of the last frame; as if there were none before the first one. */
    bool ConvertSilence(std::size_t countL, std::vector<std::int16_t>& to);
    /** What the filter still holds; then it is as after Reset. */
    bool Flush(std::vector<std::int16_t>& to);
    [[nodiscard]] int Rate() const noexcept { return i_rate; }

private:
    bool Configure(const AVChannelLayout& layout, int format, int rate);
    bool Push(const std::uint8_t* const* planesPP, std::size_t countL, std::vector<std::int16_t>& to);
    [[nodiscard]] bool IsMixed() const noexcept { return i_channels > 2; }

    SwrContext* i_swrP = nullptr;
    int i_rate = 0, i_channels = 0, i_format = -1;
    std::uint64_t i_mask = 0;
    std::vector<float> i_mixed;   // what a mix gives, before it is bent
};
