#include "Library/NameParser.h"

#include <algorithm>

namespace {

constexpr std::string_view kDigitSigns = "0123456789";

using Part = NameParser::Part;
using Level = NameParser::Level;

/** The levels of a legal template, the file's last; empty for another one. */
std::vector<Level> LevelsOf(std::string_view text) {
    const auto tokens = NameTokens(text);
    const auto slashes = std::ranges::count(text, '/');
    if (!tokens || tokens->size() == 2 || (slashes != 0 && (!text.starts_with('/') || slashes < 2 || slashes > 3)))
        return {};
    std::vector<Level> levels(1);
    for (const NameToken token : std::span(*tokens).subspan(1, tokens->size() - 2)) {
        Level& level = levels.back();
        if (token == NameToken::kLevel)
            levels.emplace_back();
        else if (IsNameValue(token))
            level.push_back({token, {}});
        else if (level.empty() || level.back().value)
            level.push_back({std::nullopt, std::string(NameTokenText(token))});
        else
            level.back().literal += NameTokenText(token);
    }
    if (slashes != 0) levels.erase(levels.begin());   // in front of the first "/"
    return levels;
}

/** One level of a template and one part of a path. */
class LevelMatch {
public:
    LevelMatch(const Level& level, std::string_view name, bool oneDigitB, ParsedName& parsed)
        : i_level(level), i_rest(name), i_oneDigitB(oneDigitB), i_parsed(parsed) {}

    bool Run() {
        for (i_at = 0; i_at < i_level.size(); ++i_at) {
            const Part& part = i_level[i_at];
            const bool fitsB = !part.value                       ? Literal(part)
                               : part.value == NameToken::kTrack ? Track()
                                                                 : Value(*part.value);
            if (!fitsB) return false;
        }
        return i_rest.empty();
    }

private:
    [[nodiscard]] std::string& Store(NameToken token) { return i_parsed.values[static_cast<std::size_t>(token)]; }
    [[nodiscard]] bool IsLabel(std::size_t at) const {
        return at < i_level.size() && i_level[at].value == NameToken::kLabel;
    }

    bool Literal(const Part& part) {
        // In front of the first value the name may have more.
        const std::size_t at = i_at == 0                          ? i_rest.find(part.literal)
                               : i_rest.starts_with(part.literal) ? 0
                                                                  : i_rest.npos;
        if (at == i_rest.npos) return false;
        i_rest.remove_prefix(at + part.literal.size());
        if (i_at > 0 && IsLabel(i_at - 1) && IsLabel(i_at + 1)) Store(NameToken::kLabel) += part.literal;
        return true;
    }

    bool Value(NameToken token) {
        const auto next = std::find_if(i_level.begin() + static_cast<std::ptrdiff_t>(i_at), i_level.end(),
                                       [](const Part& part) { return !part.value; });
        const std::size_t end = next == i_level.end() ? i_rest.size() : i_rest.find(next->literal);
        if (end == i_rest.npos) return false;
        Store(token) += i_rest.substr(0, end);
        i_rest.remove_prefix(end);
        return true;
    }

    /** The first run of digits behind which the template goes on. */
    bool Track() {
        const Part* const nextP = i_at + 1 < i_level.size() ? &i_level[i_at + 1] : nullptr;
        for (std::string_view rest = i_rest;;) {
            const std::size_t from = rest.find_first_of(kDigitSigns);
            if (from == rest.npos) return false;
            rest.remove_prefix(from);
            const std::string_view run = rest.substr(0, rest.find_first_not_of(kDigitSigns));
            rest.remove_prefix(run.size());
            if (run.size() == 1 && !i_oneDigitB) continue;
            if (nextP == nullptr ? !rest.empty() : !nextP->value && !rest.starts_with(nextP->literal)) continue;
            Store(NameToken::kTrack) += run;
            i_parsed.digitsL += run.size();
            i_rest = rest;
            return true;
        }
    }

    const Level& i_level;
    std::string_view i_rest;
    const bool i_oneDigitB;
    ParsedName& i_parsed;
    std::size_t i_at = 0;
};

/** Takes a text in parentheses, with the blank before it, from the end of the file's name. */
std::string TakeParens(std::string_view& name) {
    if (!name.ends_with(')')) return {};
    int depthL = 0;
    for (std::size_t at = name.size(); at-- > 0 && name[at] != '/';) {
        depthL += name[at] == ')' ? 1 : name[at] == '(' ? -1 : 0;
        if (depthL > 0) continue;
        std::string text(name.substr(at + 1, name.size() - at - 2));
        name = name.substr(0, at);
        if (name.ends_with(' ')) name.remove_suffix(1);
        return text;
    }
    return {};   // never opened
}

}   // namespace

std::optional<NameParser> NameParser::Of(std::string_view text) {
    NameParser parser;
    parser.i_text = text;
    parser.i_levels = LevelsOf(text);
    return parser.i_levels.empty() ? std::nullopt : std::optional(std::move(parser));
}

std::size_t NameParser::ValueCount() const {
    const auto isThere = [this](char letter) { return i_text.find(letter) != i_text.npos; };
    return static_cast<std::size_t>(std::ranges::count_if(std::string_view("LTSRV"), isThere));
}

std::optional<ParsedName> NameParser::Interpret(std::string_view name, NameHabits habits) const {
    ParsedName parsed;
    if (habits.parensB) parsed.values[static_cast<std::size_t>(NameToken::kVersion)] = TakeParens(name);
    bool moreB = true;
    for (auto level = i_levels.rbegin(); level != i_levels.rend(); ++level) {
        if (!moreB) return std::nullopt;   // fewer folders than levels
        const std::size_t slash = name.rfind('/');
        moreB = slash != name.npos;
        if (!LevelMatch(*level, name.substr(moreB ? slash + 1 : 0), habits.oneDigitB, parsed).Run())
            return std::nullopt;
        name = name.substr(0, moreB ? slash : 0);
    }
    return parsed;
}

std::optional<ParsedName> Interpret(std::string_view name, std::string_view text, NameHabits habits) {
    const auto parser = NameParser::Of(text);
    return parser ? parser->Interpret(name, habits) : std::nullopt;
}

std::optional<ParsedName> NameParser::InterpretWithFallback(std::string_view name, NameHabits habits) const {
    static const NameParser s_fallback = *Of("L-T R-S");
    auto parsed = Interpret(name, habits);
    return parsed || i_text != "L-T-R-S" ? parsed : s_fallback.Interpret(name, habits);
}

std::optional<ParsedName> InterpretWithFallback(std::string_view name, std::string_view text, NameHabits habits) {
    const auto parser = NameParser::Of(text);
    return parser ? parser->InterpretWithFallback(name, habits) : std::nullopt;
}
