#pragma once
#include <filesystem>
#include <memory>

#include "Graphics/COffscreen.h"

struct AVCodecParameters;
struct AVFormatContext;
struct AVFrame;
struct AVPacket;

/** The steps from an image file to pixels, by FFmpeg. Any thread. */
struct ImageFormatClose {
    void operator()(AVFormatContext* contextP) const noexcept;
};
struct ImageFrameFree {
    void operator()(AVFrame* frameP) const noexcept;
};
using ImageFormat = std::unique_ptr<AVFormatContext, ImageFormatClose>;
using ImageFrame = std::unique_ptr<AVFrame, ImageFrameFree>;

/** The file as one of the formats that `formatsZ` names, with commas between; null when it is none of them. The name is
    never read as a protocol or as a pattern of names. */
[[nodiscard]] ImageFormat OpenImage(const std::filesystem::path& file, const char* formatsZ);
/** The stream with the most pixels by the file's directory, where 0 stands for 256 and more; -1 for none. */
[[nodiscard]] int LargestStream(const AVFormatContext& format);
/** The picture in a packet; null when there is none, or more than COffscreen::kMaxPixels are in it. */
[[nodiscard]] ImageFrame DecodePicture(const AVCodecParameters& parameters, const AVPacket& packet);
/** The first picture of the stream. */
[[nodiscard]] ImageFrame DecodeFirst(AVFormatContext& format, int streamIndex);
/** The frame in that size, depth 32, colours multiplied with their alpha; null and `err` on failure. */
[[nodiscard]] std::unique_ptr<COffscreen> PixelsOf(const AVFrame& frame, int width, int height, OSErr& err);
