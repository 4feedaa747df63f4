#pragma once
#include <filesystem>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/** Tells where volumes came or went. The machine's list of mounts is read, no volume is touched: one that does not
    answer holds up nobody.
    Threads  one.
    Source   proc_pid_mountinfo(5). */
class CMountTable {
public:
    using Path = std::filesystem::path;

    explicit CMountTable(Path file = "/proc/self/mountinfo") : i_file(std::move(file)) {}
    /** The folders at which something else is mounted than at the last call, or nothing any more. None at the first
        call, or when the list cannot be read. */
    [[nodiscard]] std::vector<Path> Changed();
    /** Where the desktop, or the user, has mounted discs. Any thread. */
    [[nodiscard]] std::vector<Path> Volumes() const;

private:
    using Mounts = std::set<std::pair<std::string, std::string>>;   // folder, number of its volume
    static Mounts Parse(std::string_view text);

    const Path i_file;
    std::string i_text;
    Mounts i_mounts;
};
