// Command lines of vopla-cli: any words end in one of the three exit statuses, and a failure says something.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "Cli/CliCommand.h"
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
        const std::vector<unsigned char> song{9,  30, 0,  0,  0,  0,  63, 63, 0, 0, 0, 0, 0, 0,  0,  0,  0,  0,  0,
                                              0,  0,  0,  0,  0,  9,  6,  0,  0, 0, 1, 5, 5, 63, 33, 63, 33, 63, 33,
                                              63, 33, 63, 33, 63, 33, 0,  0,  0, 0, 9, 2, 0, 0,  1,  0,  0,  0};
        std::ofstream("a.cdg", std::ios::binary)
            .write(reinterpret_cast<const char*>(song.data()), static_cast<long>(song.size()));
        // A hundredth of a second of nothing.
        std::ofstream("a.wav", std::ios::binary)
            << std::string(
                   "RIFF\x08\x07\0\0WAVEfmt \x10\0\0\0\1\0\2\0\x44\xAC\0\0\x10\xB1\2\0\4\0\x10\0data\xE4\x06\0\0", 44)
            << std::string(1764, '\0');
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

/** The vocabulary, so that random bytes get past the first word: all of the table's, then values. A byte above it is
   taken as text. */
const std::vector<std::string>& Words() {
    static const std::vector<std::string> s_words = [] {
        std::set<std::string> words{"--", "--json", "--help", "--version"};
        for (const CliCommand& command : CliCommands()) {
            std::istringstream in{std::string(command.words)};
            words.insert(std::istream_iterator<std::string>(in), {});
            for (const CliOption& option : command.options) words.emplace(option.name);
        }
        std::vector<std::string> all(words.begin(), words.end());
        for (const char* const valueZ : {"a.cdg", "a.wav", "1", "-1", "0.1", "1e308", "nan", "65536", "true", "dummy",
                                         "Number of undos", "name", "Slip", "", "\xFF\xFE"})
            all.emplace_back(valueZ);
        return all;
    }();
    return s_words;
}

}   // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* dataP, std::size_t sizeL) {
    std::vector<std::string> words{"--root", Root().string()};
    for (std::size_t n = 0; n < sizeL && words.size() < 16; ++n) {
        if (dataP[n] < Words().size()) {
            words.push_back(Words()[dataP[n]]);
        } else {
            const std::size_t length = std::min<std::size_t>(dataP[n] % 32U, sizeL - n - 1);
            words.emplace_back(reinterpret_cast<const char*>(dataP + n + 1), length);
            n += length;
        }
    }
    for (std::size_t n = 2; n < words.size(); ++n) {   // no path leaves the root
        if (words[n] == "bench") words[n] = "info";    // takes a second by design
        if (words[n].starts_with("--ro")) words[n] = "--json";
        if (words[n].starts_with("--se") || words[n].starts_with("--ou"))
            words[n] = words[n] == "--out" ? "--out" : "--gain";
        if (words[n].find('/') != std::string::npos || words[n].find("..") != std::string::npos) words[n] = "x";
        if (words[n - 1] == "--out") words[n] = (Root() / (n % 2 == 0 ? "out.png" : "out.wav")).string();
    }
    // A song is heard by nobody, and not for long.
    if (const auto play = std::find(words.begin() + 2, words.end(), "play"); play != words.end())
        words.insert(play + 1, {"--output=dummy", "--seconds=0.01"});
    std::ostringstream out, err;
    const int status = RunCommand(words, out, err);
    if (status < 0 || status > 2 || (status != 0 && err.str().empty())) __builtin_trap();
    return 0;
}
