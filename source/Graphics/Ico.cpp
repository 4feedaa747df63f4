#include "Graphics/Ico.h"

extern "C" {
#include <libavutil/frame.h>
}

#include "Graphics/ImageDecode.h"

std::unique_ptr<COffscreen> ReadIco(const std::filesystem::path& file, OSErr& err) {
    std::error_code ignored;
    err = std::filesystem::is_regular_file(file, ignored) ? paramErr : fnfErr;
    if (Failed(err) && err == fnfErr) return nullptr;

    const ImageFormat format = OpenImage(file, "ico");
    const int streamIndex = format == nullptr ? -1 : LargestStream(*format);
    if (streamIndex < 0) return nullptr;
    const ImageFrame frame = DecodeFirst(*format, streamIndex);
    if (frame == nullptr || frame->width <= 0 || frame->height <= 0) return nullptr;
    if (frame->width > 32767 || frame->height > 32767) {
        err = memFullErr;
        return nullptr;
    }
    return PixelsOf(*frame, frame->width, frame->height, err);
}
