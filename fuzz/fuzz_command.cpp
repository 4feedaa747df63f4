// Command lines of vopla-cli: any words end in one of the three exit statuses, and a failure says something.
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "Cli/Command.h"

namespace {

namespace fs = std::filesystem;

/** Where all that is written lands: the current folder, with one small song in it. Goes with the process. */
class Room {
public:
    Room() {
        std::string pattern = (fs::temp_directory_path() / "fuzz-command-XXXXXX").string();
        i_root = ::mkdtemp(pattern.data());
        fs::current_path(i_root);
        // Colours, a border, a tile and half a packet.
        const std::vector<unsigned char> song{9, 30, 0, 0, 0, 0, 63, 63, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                                              9, 6,  0, 0, 0, 1, 5,  5,  63, 33, 63, 33, 63, 33, 63, 33, 63, 33, 63, 33, 0, 0, 0, 0,
                                              9, 2,  0, 0, 1, 0, 0,  0};
        std::ofstream("a.cdg", std::ios::binary).write(reinterpret_cast<const char*>(song.data()), static_cast<long>(song.size()));
    }
    ~Room() {
        std::error_code ignored;   // the process ends
        fs::current_path("/", ignored);
        fs::remove_all(i_root, ignored);
    }
    Room(const Room&) = delete;
    Room& operator=(const Room&) = delete;
    const fs::path& Root() const { return i_root; }

private:
    fs::path i_root;
};

const fs::path& Root() {
    static const Room s_room;
    return s_room.Root();
}

/** The vocabulary, so that random bytes get past the first word; a byte above it is taken as text. */
constexpr const char* kWords[] = {"cdg",   "frame",    "info", "bench", "prefs",     "get",    "set",  "list", "name",
                                  "parse", "conform",  "--at", "--out", "--visible", "--hq4x", "--",   "--json", "--channels",
                                  "a.cdg", "1",     "-1",       "1e308", "nan",  "65536",     "true",   "Number of undos", "", "\xFF\xFE"};

}   // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* dataP, std::size_t sizeL) {
    std::vector<std::string> words{"--root", Root().string()};
    for (std::size_t n = 0; n < sizeL && words.size() < 16; ++n) {
        if (dataP[n] < std::size(kWords)) {
            words.emplace_back(kWords[dataP[n]]);
        } else {
            const std::size_t length = std::min<std::size_t>(dataP[n] % 32U, sizeL - n - 1);
            words.emplace_back(reinterpret_cast<const char*>(dataP + n + 1), length);
            n += length;
        }
    }
    for (std::size_t n = 2; n < words.size(); ++n) {   // no path leaves the root
        if (words[n] == "bench") words[n] = "info";   // takes a second by design
        if (words[n] == "--root") words[n] = "--json";
        if (words[n].find('/') != std::string::npos || words[n].find("..") != std::string::npos) words[n] = "x";
        if (n > 0 && words[n - 1] == "--out") words[n] = (Root() / "out.png").string();
    }
    std::ostringstream out, err;
    const int status = RunCommand(words, out, err);
    if (status < 0 || status > 2 || (status != 0 && err.str().empty())) __builtin_trap();
    return 0;
}
