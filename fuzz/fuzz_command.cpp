// Command lines of vopla-cli: any words end in one of the three exit statuses, and a failure says something.
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "Cli/Command.h"

namespace {

/** All that is written lands in here. */
const std::filesystem::path& Root() {
    static const std::filesystem::path s_root = [] {
        std::string pattern = (std::filesystem::temp_directory_path() / "fuzz-command-XXXXXX").string();
        return std::filesystem::path(::mkdtemp(pattern.data()));
    }();
    return s_root;
}

/** The vocabulary, so that random bytes get past the first word; a byte above it is taken as text. */
constexpr const char* kWords[] = {"cdg",   "frame",    "info", "bench", "prefs",     "get",    "set",  "list", "name",
                                  "parse", "conform",  "--at", "--out", "--visible", "--hq4x", "--",   "--json", "--channels",
                                  "1",     "-1",       "1e308", "nan",  "65536",     "true",   "Number of undos", "", "\xFF\xFE"};

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
        if (words[n] == "--root") words[n] = "--json";
        if (words[n].find('/') != std::string::npos || words[n].find("..") != std::string::npos) words[n] = "x";
        if (n > 0 && words[n - 1] == "--out") words[n] = (Root() / "out.png").string();
    }
    std::ostringstream out, err;
    const int status = RunCommand(words, out, err);
    if (status < 0 || status > 2 || (status != 0 && err.str().empty())) __builtin_trap();
    return 0;
}
