#pragma once
#include <filesystem>
#include <string>
#include <vector>

/** How a helper program ended. */
struct HelperResult {
    int errnoL = 0;           // why it could not be started or waited for; 0
    bool timedOutB = false;   // it took too long and was ended
    int exitCode = 0;         // its own, or 128 + the signal that ended it
};

/** Runs `program` (searched in PATH when it has no "/") with `arguments`, without a shell, and waits for its end.
    It reads from nothing, has no handle of ours and its own process group; after `seconds` it is asked to end, and
    killed a second later.
    Threads  any; blocks up to seconds + 1. */
[[nodiscard]] HelperResult RunHelper(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                                     double seconds);

/** Starts it and does not wait. An errno, 0 for started.
    Threads  any. */
[[nodiscard]] int StartHelper(const std::filesystem::path& program, const std::vector<std::string>& arguments);
