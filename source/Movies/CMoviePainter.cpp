#include "Movies/CMoviePainter.h"

#include <utility>

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

namespace {

constexpr int kMovie_HighDefinition = 720;   // rows from which untold colours are those of high definition
constexpr int kSws_One = 1 << 16;

int ColorsOf(const AVFrame& frame) {
    if (frame.colorspace == AVCOL_SPC_UNSPECIFIED)
        return frame.height >= kMovie_HighDefinition ? SWS_CS_ITU709 : SWS_CS_DEFAULT;
    return frame.colorspace;
}

/** The old names of the forms whose samples span the whole byte are told as such to the library by the range. */
int FormatOf(const AVFrame& frame, bool& fullRangeB) {
    fullRangeB = frame.color_range == AVCOL_RANGE_JPEG;
    switch (frame.format) {
        case AV_PIX_FMT_YUVJ420P:
            fullRangeB = true;
            return AV_PIX_FMT_YUV420P;
        case AV_PIX_FMT_YUVJ422P:
            fullRangeB = true;
            return AV_PIX_FMT_YUV422P;
        case AV_PIX_FMT_YUVJ444P:
            fullRangeB = true;
            return AV_PIX_FMT_YUV444P;
        case AV_PIX_FMT_YUVJ440P:
            fullRangeB = true;
            return AV_PIX_FMT_YUV440P;
        case AV_PIX_FMT_YUVJ411P:
            fullRangeB = true;
            return AV_PIX_FMT_YUV411P;
        default:
            return frame.format;
    }
}

OSErr MakeSize(const PictureSize& size, COffscreen& pixels) {
    const Rect wanted = MakeRect(0, 0, size.width, size.height);
    return pixels.depth() == 32 && pixels.bounds() == wanted ? noErr : pixels.Create(wanted, 32);
}

}   // namespace

CMoviePainter::~CMoviePainter() { sws_freeContext(i_swsP); }

OSErr CMoviePainter::Prepare(const Form& form) {
    if (i_swsP != nullptr && form == i_form) return noErr;
    // Without scaling the library has a fast road of its own; scaled, bilinear is what the window would do.
    i_swsP =
        sws_getCachedContext(i_swsP, form.width, form.height, static_cast<AVPixelFormat>(form.format), form.to.width,
                             form.to.height, AV_PIX_FMT_0RGB32, SWS_BILINEAR, nullptr, nullptr, nullptr);
    if (i_swsP == nullptr) return paramErr;
    // A form that has no such details (RGB) answers -1 and is right as it is.
    static_cast<void>(sws_setColorspaceDetails(i_swsP, sws_getCoefficients(form.colors), form.fullRangeB ? 1 : 0,
                                               sws_getCoefficients(SWS_CS_DEFAULT), 1, 0, kSws_One, kSws_One));
    i_form = form;
    return noErr;
}

OSErr CMoviePainter::Paint(const AVFrame& frame, const PictureSize& size, COffscreen& to) {
    const bool plainB = i_orientation.IsPlain();
    PictureSize lying = size;
    if (i_orientation.IsTurned()) std::swap(lying.width, lying.height);
    COffscreen& target = plainB ? to : i_lying;
    if (const OSErr err = MakeSize(lying, target); Failed(err)) return err;

    Form form{.width = frame.width, .height = frame.height, .to = lying, .colors = ColorsOf(frame)};
    form.format = FormatOf(frame, form.fullRangeB);
    if (const OSErr err = Prepare(form); Failed(err)) return err;
    std::uint8_t* const rowsP[4] = {target.base()};
    const int rowBytes[4] = {static_cast<int>(target.rowBytes())};
    if (sws_scale(i_swsP, frame.data, frame.linesize, 0, frame.height, rowsP, rowBytes) <= 0) return paramErr;
    if (plainB) return noErr;
    if (const OSErr err = MakeSize(size, to); Failed(err)) return err;
    Turn(target, to);
    return noErr;
}

void CMoviePainter::Turn(const COffscreen& from, COffscreen& to) const {
    const int height = from.bounds().Height();
    const auto stride = static_cast<std::ptrdiff_t>(to.rowBytes() / sizeof(Pixel32));
    const std::ptrdiff_t right = i_orientation.rightX + i_orientation.rightY * stride,
                         down = i_orientation.downX + i_orientation.downY * stride;
    // Where the first pixel goes: to the far end of each axis that runs backwards.
    const bool leftwardsB = i_orientation.rightX + i_orientation.downX < 0,
               upwardsB = i_orientation.rightY + i_orientation.downY < 0;
    std::ptrdiff_t row =
        (upwardsB ? to.bounds().Height() - 1 : 0) * stride + (leftwardsB ? to.bounds().Width() - 1 : 0);
    Pixel32* const toP = to.Row32(0).data();
    for (int y = 0; y < height; ++y, row += down) {
        std::ptrdiff_t at = row;
        for (const Pixel32 pixel : from.Row32(y)) {
            toP[at] = pixel;
            at += right;
        }
    }
}
