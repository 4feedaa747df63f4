#include "Library/NameTemplate.h"

#include <algorithm>

namespace {

constexpr struct {
    std::string_view text;
    NameToken token;
} kTokens[] = {
    {" - ", NameToken::kSeparator},   // before the blank that it begins with
    {"L", NameToken::kLabel},       {"T", NameToken::kTrack},        {"S", NameToken::kSong},
    {"R", NameToken::kArtist},      {"I", NameToken::kIgnored},      {"V", NameToken::kVersion},
    {"-", NameToken::kHyphen},      {"(", NameToken::kParenLeft},    {")", NameToken::kParenRight},
    {"[", NameToken::kBracketLeft}, {"]", NameToken::kBracketRight}, {"/", NameToken::kLevel},
    {".", NameToken::kDot},         {" ", NameToken::kBlank},
};

}   // namespace

std::string_view NameTokenText(NameToken token) {
    const auto it = std::ranges::find(kTokens, token, [](const auto& row) { return row.token; });
    return it == std::ranges::end(kTokens) ? std::string_view() : it->text;
}

std::optional<std::vector<NameToken>> NameTokens(std::string_view text) {
    std::vector<NameToken> tokens = {NameToken::kLineStart};
    while (!text.empty()) {
        const auto it = std::ranges::find_if(kTokens, [&](const auto& row) { return text.starts_with(row.text); });
        if (it == std::ranges::end(kTokens)) return std::nullopt;
        tokens.push_back(it->token);
        text.remove_prefix(it->text.size());
    }
    tokens.push_back(NameToken::kLineEnd);
    return tokens;
}

std::optional<BuiltName> BuildName(std::string_view text, const NameValues& values) {
    auto tokens = NameTokens(text);
    if (!tokens) return std::nullopt;
    const auto level = std::ranges::find(tokens->rbegin(), tokens->rend(), NameToken::kLevel);
    tokens->erase(tokens->begin(), level.base());
    BuiltName built;
    for (std::size_t n = 0; n < tokens->size(); ++n) {
        const NameToken token = (*tokens)[n];
        if (!IsNameValue(token)) {
            built.text += NameTokenText(token);
            continue;
        }
        if (token == NameToken::kLabel && n + 2 < tokens->size() && (*tokens)[n + 2] == NameToken::kLabel &&
            !IsNameValue((*tokens)[n + 1]))
            n += 2;
        const std::string& value = values[static_cast<std::size_t>(token)];
        built.unknownsB |= value.empty();
        built.text += value.empty() ? "$$" : value;
    }
    return built;
}
