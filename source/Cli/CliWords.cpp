#include "Cli/CliWords.h"

std::optional<CliWords> CliWords::Read(std::span<const std::string> words, const std::set<std::string_view>& options) {
    CliWords read;
    bool plainB = false;
    for (std::size_t n = 0; n < words.size(); ++n) {
        const std::string& word = words[n];
        if (!plainB && word == "--") {
            plainB = true;
        } else if (plainB || !word.starts_with('-')) {
            read.files.push_back(word);
        } else if (!options.contains(word) || n + 1 == words.size() ||
                   !read.values.emplace(word, words[n + 1]).second) {
            return {};
        } else {
            ++n;
        }
    }
    return read;
}

const std::string* CliWords::Value(std::string_view option) const {
    const auto it = values.find(option);
    return it == values.end() ? nullptr : &it->second;
}
