#pragma once
#include <filesystem>
#include <memory>

#include "Graphics/COffscreen.h"

/** The largest picture of an icon file, depth 32, colours multiplied with their alpha.
    Errors   null and `err`: fnfErr without the file, paramErr for bytes that are no icon, memFullErr past
             COffscreen::kMaxPixels. */
[[nodiscard]] std::unique_ptr<COffscreen> ReadIco(const std::filesystem::path& file, OSErr& err);
