#include "Core/ForeignRoom.h"

#include <algorithm>
#include <memory>
#include <random>

#include "Graphics/CHq4x.h"
#include "Graphics/ImageDecode.h"
#include "Movies/CMoviePainter.h"
#include "Movies/GuardedMemory.h"
#include "Movies/MovieFrame.h"

extern "C" {
#include <libavutil/cpu.h>
#include <libavutil/frame.h>
#include <libavutil/pixdesc.h>
}

namespace {

constexpr int kMost_Width = 200;
constexpr int kSse2 = AV_CPU_FLAG_MMX | AV_CPU_FLAG_MMXEXT | AV_CPU_FLAG_SSE | AV_CPU_FLAG_SSE2;
constexpr int kSse4 = kSse2 | AV_CPU_FLAG_SSE3 | AV_CPU_FLAG_SSSE3 | AV_CPU_FLAG_SSE4 | AV_CPU_FLAG_SSE42;
constexpr int kAvx2 = kSse4 | AV_CPU_FLAG_AVX | AV_CPU_FLAG_AVX2 | AV_CPU_FLAG_FMA3;
constexpr struct {
    const char* nameZ;
    int flags;
} kProcessors[] = {{"no vectors", 0}, {"SSE2", kSse2}, {"SSE4.2", kSse4}, {"AVX2", kAvx2}, {"all there is", ~0}};

/** A frame of one grey, in memory of the library. */
AVFramePtr Grey(int width, int height, AVPixelFormat format) {
    AVFramePtr frameP(av_frame_alloc());
    frameP->width = width;
    frameP->height = height;
    frameP->format = format;
    if (av_frame_get_buffer(frameP.get(), 0) < 0) return nullptr;
    const bool deepB = av_pix_fmt_desc_get(format)->comp[0].depth > 8;   // 10 bits: 0x0202 is grey enough
    for (const AVBufferRef* bufferP : frameP->buf)
        if (bufferP != nullptr) std::fill_n(bufferP->data, bufferP->size, deepB ? 0x02 : 0x80);
    return frameP;
}

/** Every pixel was painted, up to the last column: all are opaque, and the same but for a rounding. */
bool IsPainted(const COffscreen& pixels) {
    const auto green = [](Pixel32 pixel) { return static_cast<int>(pixel >> 8 & 0xFFU); };
    const int first = green(pixels.Row32(0)[0]);
    for (int y = 0; y < pixels.bounds().Height(); ++y)
        for (const Pixel32 pixel : pixels.Row32(y))
            if (pixel >> 24 != 0xFF || std::abs(green(pixel) - first) > 2) return false;
    return true;
}

class ForeignRoom : public testing::TestWithParam<std::size_t> {
protected:
    void SetUp() override {
        av_force_cpu_flags(-1);
        av_force_cpu_flags(kProcessors[GetParam()].flags & av_get_cpu_flags());
    }
    void TearDown() override { av_force_cpu_flags(-1); }
    /** From 1 to 200; without vectors the library paints pairs of pixels, and leaves out one that is alone. */
    [[nodiscard]] static std::vector<int> Widths() {
        std::vector<int> widths;
        for (int width = 1; width <= kMost_Width; ++width)
            if (kProcessors[GetParam()].flags != 0 || width % 2 == 0) widths.push_back(width);
        return widths;
    }
};

TEST_P(ForeignRoom, MoviesOfEveryWidthStayInTheirMemory) {
    const GuardedMemory guarded;
    constexpr AVPixelFormat kForms[] = {AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUV422P,     AV_PIX_FMT_YUV444P,
                                        AV_PIX_FMT_NV12,    AV_PIX_FMT_YUV420P10LE, AV_PIX_FMT_BGR24};
    for (const AVPixelFormat format : kForms)
        for (const int width : Widths())
            for (const PictureSize from : {PictureSize{width, 2}, {width, 3}, {width * 2 + 1, 7}, {width / 2 + 1, 2}}) {
                SCOPED_TRACE(testing::Message() << av_get_pix_fmt_name(format) << ' ' << from.width << " x "
                                                << from.height << " as " << width);
                const AVFramePtr frameP = Grey(from.width, from.height, format);
                ASSERT_NE(frameP, nullptr);
                const PictureSize size{width, from.height > 3 ? 4 : from.height};
                COffscreen plain, turned;
                ASSERT_EQ(CMoviePainter().Paint(*frameP, size, plain), noErr);
                ASSERT_TRUE(IsPainted(plain));
                if (width % 16 != 5) continue;
                ASSERT_EQ(CMoviePainter({0, 1, -1, 0}).Paint(*frameP, {size.height, size.width}, turned), noErr);
                ASSERT_TRUE(IsPainted(turned));
            }
}

TEST_P(ForeignRoom, ImagesOfEveryWidthStayInTheirMemory) {
    const GuardedMemory guarded;
    constexpr AVPixelFormat kForms[] = {AV_PIX_FMT_YUVJ420P, AV_PIX_FMT_YUVJ444P, AV_PIX_FMT_RGB24,
                                        AV_PIX_FMT_GRAY8,    AV_PIX_FMT_YUV420P,  AV_PIX_FMT_RGB48LE};
    for (const AVPixelFormat format : kForms)
        for (const int width : Widths())
            for (const int scale : {1, 3}) {
                SCOPED_TRACE(testing::Message() << av_get_pix_fmt_name(format) << ' ' << width << ", 1 : " << scale);
                const AVFramePtr frameP = Grey(width * scale, 2 * scale, format);
                ASSERT_NE(frameP, nullptr);
                OSErr err = noErr;
                const auto picture = PixelsOf(*frameP, width, 2, err);
                ASSERT_EQ(err, noErr);
                ASSERT_TRUE(IsPainted(*picture));
            }
}

INSTANTIATE_TEST_SUITE_P(Processors, ForeignRoom, testing::Range(std::size_t{0}, std::size(kProcessors)),
                         [](const auto& one) {
                             std::string name = kProcessors[one.param].nameZ;
                             std::erase_if(name,
                                           [](char c) { return std::isalnum(static_cast<unsigned char>(c)) == 0; });
                             return name;
                         });

TEST(ForeignRoomHq4x, PicturesOfEveryWidthStayInTheirMemory) {
    const GuardedMemory guarded;
    std::mt19937 random(5);
    CHq4x hq4x;
    for (int width = 1; width <= kMost_Width; ++width) {
        COffscreen from, to;
        ASSERT_EQ(from.Create(MakeRect(0, 0, width, 3), 32), noErr);
        ASSERT_EQ(to.Create(MakeRect(0, 0, width * 4, 12), 32), noErr);
        for (int y = 0; y < 3; ++y)
            for (Pixel32& pixel : from.Row32(y)) pixel = random() % 3 == 0 ? 0xFFFFFFFF : 0xFF202020;
        ASSERT_EQ(hq4x.Scale(from, to), noErr);
        for (int y = 0; y < 12; ++y)
            ASSERT_TRUE(std::ranges::all_of(to.Row32(y), [](Pixel32 pixel) { return pixel >> 24 == 0xFF; })) << width;
    }
}

}   // namespace
