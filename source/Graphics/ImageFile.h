#pragma once
#include <filesystem>
#include <memory>

#include "Files/CFileRef.h"
#include "Graphics/COffscreen.h"

/** The picture of an image file (PNG, JPEG, WebP, BMP, TIFF, GIF: the first frame), depth 32, opaque, what is clear in
    it over black. It stands upright, by the word of its camera. One that is larger than `most` is made to fit, in its
    proportions. Any thread; takes as long as its decoding. Null and `err`: fnfErr, paramErr for what is no whole image,
    memFullErr. */
[[nodiscard]] std::unique_ptr<COffscreen> ReadImageFile(const std::filesystem::path& file, const Rect& most,
                                                        OSErr& err);

/** The picture inside a song's sound file, or inside the sound in its zip: the front cover if there are several. Shaped
    as above; a worker's, too. Null and noErr when there is none. */
[[nodiscard]] std::unique_ptr<COffscreen> ReadCover(const CFileRef& file, const Rect& most, OSErr& err);
