#include "Shell/Options.h"

#include "Widgets/CGraphicsCard.h"

std::optional<Options> ReadOptions(std::span<const std::string> words) {
    Options options;
    bool onlyFilesB = false;
    for (std::size_t n = 0; n < words.size(); ++n) {
        const std::string& word = words[n];
        if (!onlyFilesB && word == "--") {
            onlyFilesB = true;
        } else if (!onlyFilesB && word == "--headless") {
            options.headlessB = true;
        } else if (words.size() == 1 && word == CGraphicsCard::kOptionZ) {
            options.askCardB = true;
        } else if (!onlyFilesB && (word == "--help" || word == "-h")) {
            options.helpB = true;
        } else if (!onlyFilesB && word == "--version") {
            options.versionB = true;
        } else if (!onlyFilesB && word == "--root" && n + 1 < words.size() && !words[n + 1].empty()) {
            options.root = words[++n];
        } else if ((!onlyFilesB && word.starts_with("-")) || word.empty()) {
            return std::nullopt;
        } else {
            std::error_code err;   // no current folder: the path stays as it was given
            const auto absolute = std::filesystem::absolute(word, err);
            options.files.push_back(err ? word : absolute.string());
        }
    }
    return options;
}
