#pragma once
#include <cstdint>
#include <filesystem>

/** What tells a file from one that was put in its place. */
struct FileStamp {
    static constexpr std::uintmax_t kGone = static_cast<std::uintmax_t>(-1);
    std::uintmax_t bytesL = kGone;
    std::int64_t secondsL = 0;   // of its last change, since 1970
    bool operator==(const FileStamp&) const = default;

    /** Looks at the disc. */
    [[nodiscard]] static FileStamp Of(const std::filesystem::path& file);
};
