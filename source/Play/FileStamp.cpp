#include "Play/FileStamp.h"

#include <chrono>

FileStamp FileStamp::Of(const std::filesystem::path& file) {
    std::error_code err;
    FileStamp stamp{.bytesL = std::filesystem::file_size(file, err)};
    if (err) stamp.bytesL = kGone;
    const auto time = std::filesystem::last_write_time(file, err);
    if (!err) {
        const auto since = std::chrono::file_clock::to_sys(time).time_since_epoch();
        stamp.secondsL = std::chrono::duration_cast<std::chrono::seconds>(since).count();
    }
    return stamp;
}
