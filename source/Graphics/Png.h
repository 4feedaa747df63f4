#pragma once
#include <cstddef>
#include <filesystem>
#include <memory>
#include <span>

#include "Graphics/COffscreen.h"

/** The picture of a PNG file in memory, depth 32, colours multiplied with their alpha.
    Errors   null and `err`: paramErr for bytes that are no whole PNG, memFullErr past COffscreen::kMaxPixels. */
[[nodiscard]] std::unique_ptr<COffscreen> ReadPng(std::span<const std::uint8_t> bytes, OSErr& err);

/** Writes `part` of pixels of depth 4 or 32 as a PNG file. It has an alpha channel only if some pixel is not opaque.
    Errors   paramErr for another depth or a part outside; what the disc says and a log line when the file cannot be
             written: a file that was there stays as it was then. */
OSErr WritePng(const CPixels& pixels, const Rect& part, const std::filesystem::path& file);
inline OSErr WritePng(const CPixels& pixels, const std::filesystem::path& file) {
    return WritePng(pixels, pixels.bounds(), file);
}
