#include "Media/CMediaResampler.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "Media/SampleForms.h"
#include "Media/SpoolUnits.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/channel_layout.h>
#include <libavutil/frame.h>
#include <libavutil/opt.h>
#include <libavutil/samplefmt.h>
#include <libswresample/swresample.h>
}

namespace {
constexpr int kMedia_Channels = 2;
constexpr int kMedia_MostChannels = 64;   // of libswresample
constexpr int kMedia_LeastRate = 1000, kMedia_MostRate = 768000;
constexpr std::size_t kMedia_SilenceStep = 4096;

/** Up to a knee just below full scale as it is, then less and less, never beyond. */
float Bent(float value) {
    constexpr float kKnee = 0.9F;
    const float size = std::abs(value);
    if (!(size > kKnee)) return value;
    return std::copysign(kKnee + (1 - kKnee) * std::tanh((size - kKnee) / (1 - kKnee)), value);
}

std::uint64_t Mask(const AVChannelLayout& layout) {
    return layout.order == AV_CHANNEL_ORDER_NATIVE ? layout.u.mask : 0;
}
}   // namespace

CMediaResampler::~CMediaResampler() { swr_free(&i_swrP); }

void CMediaResampler::Reset() {
    swr_free(&i_swrP);
    i_rate = i_channels = 0;
    i_format = -1;
    i_mask = 0;
}

bool CMediaResampler::Fits(const AVFrame& frame) const {
    return i_swrP != nullptr && i_rate == frame.sample_rate && i_channels == frame.ch_layout.nb_channels &&
           i_format == frame.format && i_mask == Mask(frame.ch_layout);
}

bool CMediaResampler::Configure(const AVFrame& frame) {
    return Configure(frame.ch_layout, frame.format, frame.sample_rate);
}

bool CMediaResampler::Configure(const AVCodecContext& codec) {
    return Configure(codec.ch_layout, codec.sample_fmt, codec.sample_rate);
}

bool CMediaResampler::Configure(const AVChannelLayout& layout, int format, int rate) {
    Reset();
    const int channels = layout.nb_channels;
    if (channels < 1 || channels > kMedia_MostChannels) return false;
    if (rate < kMedia_LeastRate || rate > kMedia_MostRate || format < 0) return false;
    AVChannelLayout in{}, out{};
    if (Mask(layout) != 0)
        av_channel_layout_from_mask(&in, Mask(layout));
    else
        av_channel_layout_default(&in, channels);
    av_channel_layout_default(&out, kMedia_Channels);
    if (in.order == AV_CHANNEL_ORDER_UNSPEC) {   // a number of channels without a usual layout: refused
        av_channel_layout_uninit(&in);
        return false;
    }
    const bool mixedB = channels > kMedia_Channels;   // floats, which the library's rule leaves at their level
    const int result = swr_alloc_set_opts2(&i_swrP, &out, mixedB ? AV_SAMPLE_FMT_FLT : AV_SAMPLE_FMT_S16,
                                           static_cast<int>(kSamplesPerSecond), &in,
                                           static_cast<AVSampleFormat>(format), rate, 0, nullptr);
    av_channel_layout_uninit(&in);
    if (result < 0) return false;
    constexpr std::array<double, 2> kMono{1.0, 1.0};   // the library's own rule takes 3 dB off
    if (channels == 1) swr_set_matrix(i_swrP, kMono.data(), 1);
    if (mixedB) av_opt_set_double(i_swrP, "rematrix_maxval", kMedia_MostChannels, 0);
    if (swr_init(i_swrP) < 0) {
        swr_free(&i_swrP);
        return false;
    }
    i_rate = rate;
    i_channels = channels;
    i_format = format;
    i_mask = Mask(layout);
    return true;
}

bool CMediaResampler::Push(const std::uint8_t* const* planesPP, std::size_t countL, std::vector<std::int16_t>& to) {
    const int roomL = swr_get_out_samples(i_swrP, static_cast<int>(countL));
    if (roomL < 0) return false;
    const std::size_t beforeL = to.size(), mostL = static_cast<std::size_t>(roomL) * kMedia_Channels;
    to.resize(beforeL + mostL);
    if (IsMixed()) i_mixed.resize(mostL);
    std::uint8_t* outP = IsMixed() ? reinterpret_cast<std::uint8_t*>(i_mixed.data())
                                   : reinterpret_cast<std::uint8_t*>(to.data() + beforeL);
    const int gotL =
        swr_convert(i_swrP, &outP, roomL, const_cast<const std::uint8_t**>(planesPP), static_cast<int>(countL));
    to.resize(beforeL + static_cast<std::size_t>(std::max(gotL, 0)) * kMedia_Channels);
    if (IsMixed()) {
        const std::span<float> mixed = std::span(i_mixed).first(to.size() - beforeL);
        std::ranges::transform(mixed, mixed.begin(), Bent);
        FloatToInteger(mixed, std::span(to).subspan(beforeL));
    }
    return gotL >= 0;
}

bool CMediaResampler::Convert(const AVFrame& frame, std::size_t fromL, std::size_t countL,
                              std::vector<std::int16_t>& to) {
    const auto format = static_cast<AVSampleFormat>(frame.format);
    const bool planarB = av_sample_fmt_is_planar(format) != 0;
    const auto planesL = static_cast<std::size_t>(planarB ? i_channels : 1);
    const auto stepL = static_cast<std::size_t>(av_get_bytes_per_sample(format) * (planarB ? 1 : i_channels));
    std::array<const std::uint8_t*, kMedia_MostChannels> planes{};
    for (std::size_t n = 0; n < planesL; ++n) planes[n] = frame.extended_data[n] + fromL * stepL;
    return Push(planes.data(), countL, to);
}

bool CMediaResampler::ConvertSilence(std::size_t countL, std::vector<std::int16_t>& to) {
    if (i_swrP == nullptr) return true;
    const auto format = static_cast<AVSampleFormat>(i_format);
    const auto bytesL = static_cast<std::size_t>(av_get_bytes_per_sample(format) * i_channels) * kMedia_SilenceStep;
    std::vector<std::uint8_t> quiet(bytesL, format == AV_SAMPLE_FMT_U8 || format == AV_SAMPLE_FMT_U8P ? 0x80 : 0);
    std::array<const std::uint8_t*, kMedia_MostChannels> planes{};
    planes.fill(quiet.data());
    while (countL > 0) {
        const std::size_t stepL = std::min(countL, kMedia_SilenceStep);
        if (!Push(planes.data(), stepL, to)) return false;
        countL -= stepL;
    }
    return true;
}

bool CMediaResampler::Flush(std::vector<std::int16_t>& to) {
    const bool doneB = i_swrP == nullptr || Push(nullptr, 0, to);
    Reset();
    return doneB;
}
