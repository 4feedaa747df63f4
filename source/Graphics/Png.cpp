#include "Graphics/Png.h"

#include <cairo.h>

#include <cstring>
#include <vector>

#include "Core/Assertions.h"
#include "Core/CLog.h"
#include "Files/ReplaceFile.h"
#include "Graphics/PixelCopy.h"

namespace {

struct SurfaceFree {
    void operator()(cairo_surface_t* surfaceP) const noexcept { cairo_surface_destroy(surfaceP); }
};
using Surface = std::unique_ptr<cairo_surface_t, SurfaceFree>;

cairo_status_t TakeBytes(void* leftP, unsigned char* outP, unsigned length) {
    auto& left = *static_cast<std::span<const std::uint8_t>*>(leftP);
    if (length > left.size()) return CAIRO_STATUS_READ_ERROR;
    std::memcpy(outP, left.data(), length);
    left = left.subspan(length);
    return CAIRO_STATUS_SUCCESS;
}

cairo_status_t PutBytes(void* bytesP, const unsigned char* moreP, unsigned length) {
    const auto more = std::as_bytes(std::span(moreP, length));
    static_cast<std::vector<std::byte>*>(bytesP)->insert(static_cast<std::vector<std::byte>*>(bytesP)->end(),
                                                         more.begin(), more.end());
    return CAIRO_STATUS_SUCCESS;
}

/** Width or height out of the header chunk: four bytes, high one first. */
std::size_t BigEndian(std::span<const std::uint8_t> bytes) {
    std::size_t value = 0;
    for (const std::uint8_t byte : bytes) value = value << 8 | byte;
    return value;
}

}   // namespace

std::unique_ptr<COffscreen> ReadPng(std::span<const std::uint8_t> bytes, OSErr& err) {
    // The size is looked at before the decoder makes room for it: 30 bytes may ask for gigabytes.
    static constexpr std::uint8_t kPng_Start[] = {0x89, 'P', 'N', 'G', 13, 10, 26, 10, 0, 0, 0, 13, 'I', 'H', 'D', 'R'};
    err = paramErr;
    if (bytes.size() < 24 || !std::equal(std::begin(kPng_Start), std::end(kPng_Start), bytes.begin())) return nullptr;
    const std::size_t widthL = BigEndian(bytes.subspan(16, 4)), heightL = BigEndian(bytes.subspan(20, 4));
    if (widthL == 0 || heightL == 0) return nullptr;
    if (widthL > 32767 || heightL > 32767 || widthL > COffscreen::kMaxPixels / heightL) {
        err = memFullErr;
        return nullptr;
    }

    const Surface surface(cairo_image_surface_create_from_png_stream(TakeBytes, &bytes));
    if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) return nullptr;
    const cairo_format_t format = cairo_image_surface_get_format(surface.get());
    if (format != CAIRO_FORMAT_ARGB32 && format != CAIRO_FORMAT_RGB24) return nullptr;   // 16 bits a component
    cairo_surface_flush(surface.get());
    auto picture = COffscreen::Make(MakeRect(0, 0, static_cast<int>(widthL), static_cast<int>(heightL)), 32, err);
    if (picture == nullptr) return nullptr;
    const unsigned char* fromP = cairo_image_surface_get_data(surface.get());
    const auto strideL = static_cast<std::size_t>(cairo_image_surface_get_stride(surface.get()));
    for (std::size_t y = 0; y < heightL; ++y)
        std::memcpy(picture->Row(static_cast<int>(y)), fromP + y * strideL, widthL * sizeof(Pixel32));
    if (format == CAIRO_FORMAT_RGB24) err = picture->SetAlpha(0xFF);   // the surface leaves that byte open
    return picture;
}

OSErr WritePng(const CPixels& pixels, const Rect& part, const std::filesystem::path& file) {
    if (!AssertWords(pixels.depth() == 4 || pixels.depth() == 32, "depth() == 32")) return paramErr;
    if (part.Empty() || Intersect(part, pixels.bounds()) != part) return paramErr;
    // A copy: the surface wants memory that it may write, rows from 0 and a stride of its own liking.
    COffscreen copy;
    if (const OSErr err = copy.Create(part, 32); Failed(err)) return err;
    if (const OSErr err = CopyPixels(pixels, copy, part, part); Failed(err)) return err;
    bool opaqueB = true;
    for (int y = part.top; opaqueB && y < part.bottom; ++y)
        opaqueB = std::ranges::all_of(copy.Row32(y), [](Pixel32 pixel) { return pixel >> 24 == 0xFF; });

    const Surface surface(
        cairo_image_surface_create_for_data(copy.base(), opaqueB ? CAIRO_FORMAT_RGB24 : CAIRO_FORMAT_ARGB32,
                                            part.Width(), part.Height(), static_cast<int>(copy.rowBytes())));
    std::vector<std::byte> bytes;
    if (cairo_surface_write_to_png_stream(surface.get(), PutBytes, &bytes) != CAIRO_STATUS_SUCCESS)
        return LogStep(memFullErr, "make PNG", file);
    std::error_code fault;   // a folder of a mistyped name is not made
    const auto folder = file.has_parent_path() ? file.parent_path() : std::filesystem::path(".");
    if (!std::filesystem::is_directory(folder, fault)) return LogStep(fnfErr, "write PNG", file);
    return LogStep(ReplaceFile(file, bytes), "write PNG", file);
}
