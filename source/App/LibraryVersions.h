#pragma once
#include <string>
#include <vector>

struct LibraryVersion {
    std::string name, version;
};

/** The libraries that the engine runs with, as each of them says itself: those that are installed, not those that it was
    built with. Any thread. */
[[nodiscard]] std::vector<LibraryVersion> LibraryVersions();
