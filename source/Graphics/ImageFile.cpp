#include "Graphics/ImageFile.h"

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/dict.h>
#include <libavutil/frame.h>
}

#include <cstdlib>
#include <span>
#include <string_view>

#include "Audio/SongSource.h"
#include "Graphics/CGraphicsPort.h"
#include "Graphics/ImageDecode.h"
#include "Media/CMediaFormat.h"

namespace {

constexpr const char* kFormatsZ = "png_pipe,jpeg_pipe,webp_pipe,bmp_pipe,tiff_pipe,gif,apng";

/** How a camera was held, by the numbers of its files: 3 upside down, 6 to be turned right, 8 to be turned left. */
int CameraTurn(const AVFrame& frame) {
    const AVDictionaryEntry* const entryP = av_dict_get(frame.metadata, "Orientation", nullptr, 0);
    return entryP == nullptr ? 1 : std::atoi(entryP->value);
}

std::unique_ptr<COffscreen> Upright(std::unique_ptr<COffscreen> picture, int turn, OSErr& err) {
    if (picture == nullptr || (turn != 3 && turn != 6 && turn != 8)) return picture;
    const int width = picture->bounds().Width(), height = picture->bounds().Height();
    auto turned = COffscreen::Make(turn == 3 ? picture->bounds() : MakeRect(0, 0, height, width), 32, err);
    if (turned == nullptr) return nullptr;
    for (int y = 0; y < height; ++y) {
        const std::span<const Pixel32> row = std::as_const(*picture).Row32(y);
        for (int x = 0; x < width; ++x) {
            const int toX = turn == 3 ? width - 1 - x : turn == 6 ? height - 1 - y : y;
            const int toY = turn == 3 ? height - 1 - y : turn == 6 ? x : width - 1 - x;
            turned->Row32(toY)[static_cast<std::size_t>(toX)] = row[static_cast<std::size_t>(x)];
        }
    }
    return turned;
}

/** Upright, in the size that fits. */
std::unique_ptr<COffscreen> Shape(const ImageFrame& frame, const Rect& most, OSErr& err) {
    err = paramErr;
    if (frame == nullptr || frame->width <= 0 || frame->height <= 0) return nullptr;

    const int turn = CameraTurn(*frame);
    const bool sidewaysB = turn == 6 || turn == 8;
    const Rect room = sidewaysB ? MakeRect(0, 0, most.Height(), most.Width()) : most;
    Rect size{0, 0, ToCoordinate(frame->height), ToCoordinate(frame->width)};
    if (frame->width > room.Width() || frame->height > room.Height()) size = CGraphicsPort::FitInto(size, room);
    auto picture = PixelsOf(*frame, std::max(1, size.Width()), std::max(1, size.Height()), err);
    picture = Upright(std::move(picture), turn, err);
    if (picture != nullptr)
        err = picture->SetAlpha(0xFF);   // the colours are multiplied: over black they are what they are
    return picture;
}

/** Of the pictures inside the file, the one that says so, else the first; null for none. */
const AVStream* FindCover(const AVFormatContext& format) {
    const AVStream* foundP = nullptr;
    for (const AVStream* const streamP : std::span(format.streams, format.nb_streams)) {
        if ((streamP->disposition & AV_DISPOSITION_ATTACHED_PIC) == 0) continue;
        const AVDictionaryEntry* const kindP = av_dict_get(streamP->metadata, "comment", nullptr, 0);
        if (kindP != nullptr && std::string_view(kindP->value) == "Cover (front)") return streamP;
        if (foundP == nullptr) foundP = streamP;
    }
    return foundP;
}

}   // namespace

std::unique_ptr<COffscreen> ReadImageFile(const std::filesystem::path& file, const Rect& most, OSErr& err) {
    std::error_code ignored;
    err = std::filesystem::is_regular_file(file, ignored) ? paramErr : fnfErr;
    if (err == fnfErr) return nullptr;
    const ImageFormat format = OpenImage(file, kFormatsZ);
    const int streamIndex = format == nullptr ? -1 : LargestStream(*format);
    return streamIndex < 0 ? nullptr : Shape(DecodeFirst(*format, streamIndex), most, err);
}

std::unique_ptr<COffscreen> ReadCover(const CFileRef& file, const Rect& most, OSErr& err) {
    SongBytes song;
    std::unique_ptr<CByteSource> bytesP;
    CMediaFormat format(MediaKind::kSound);   // the cover is in its directory; only the sound would be read
    err = FindSongBytes(file, MediaKind::kSound, song);
    if (!Failed(err)) err = song.make(bytesP);
    if (!Failed(err)) err = format.Open(*bytesP, song.extension);
    if (err == paramErr) err = noErr;   // it is no song
    const AVStream* const coverP = Failed(err) || format.Format() == nullptr ? nullptr : FindCover(*format.Format());
    return coverP == nullptr ? nullptr : Shape(DecodePicture(*coverP->codecpar, coverP->attached_pic), most, err);
}
