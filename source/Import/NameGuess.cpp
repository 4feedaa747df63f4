#include "Import/NameGuess.h"

#include <algorithm>
#include <unordered_set>

namespace {

constexpr double kWithin = 0.98;
constexpr std::size_t kManySongs = 5;       // with more of them, what is the same in all is no artist and no title
constexpr std::size_t kDigits_OfCode = 3;   // "SC812", but "U2" sings

/** How one template reads the names. */
struct Trial {
    const NameParser* parserP = nullptr;
    double scoreF = 0;
    std::size_t matchedL = 0, valuesL = 0, artistsL = 0, knownL = 0;
};

bool IsDigit(char letter) { return letter >= '0' && letter <= '9'; }

/** A code or a track: digits alone, or several among letters, without a blank. */
bool IsCode(std::string_view text) {
    const auto digitsL = static_cast<std::size_t>(std::ranges::count_if(text, IsDigit));
    return !text.empty() && text.find(' ') == text.npos && (digitsL == text.size() || digitsL >= kDigits_OfCode);
}

/** An album code has digits and something else; a front part without any is somebody's word, digits alone are a track. */
bool IsLabel(std::string_view text) {
    const auto digitsL = static_cast<std::size_t>(std::ranges::count_if(text, IsDigit));
    return digitsL > 0 && digitsL < text.size();
}

/** What speaks against a template that reads a name so. */
bool IsOdd(const ParsedName& parsed) {
    const std::string& label = parsed.Value(NameToken::kLabel);
    const auto cutB = [](const std::string& value) { return value.starts_with(' ') || value.ends_with(' '); };
    return IsCode(parsed.Value(NameToken::kArtist)) || IsCode(parsed.Value(NameToken::kSong)) ||
           (!label.empty() && !IsLabel(label)) || std::ranges::any_of(parsed.values, cutB);
}

/** Nothing when the template does not fit, or finds no song. */
std::optional<ParsedName> Read(const NameParser& parser, const std::string& name, NameHabits habits) {
    auto parsed = parser.InterpretWithFallback(name, habits);
    return parsed && parsed->Value(NameToken::kSong).empty() ? std::nullopt : parsed;
}

Trial Try(const NameParser& parser, std::span<const std::string> names, NameHabits habits,
          const std::function<bool(const std::string&)>& knownArtist) {
    Trial trial{.parserP = &parser, .valuesL = parser.ValueCount()};
    std::unordered_set<std::string> artists, songs;
    std::size_t againstL = 0;
    bool artistB = false;
    for (const std::string& name : names) {
        const auto parsed = Read(parser, name, habits);
        if (!parsed) continue;
        ++trial.matchedL;
        const std::string& artist = parsed->Value(NameToken::kArtist);
        artistB = artistB || !artist.empty();
        againstL += IsOdd(*parsed);
        songs.insert(parsed->Value(NameToken::kSong));
        if (artists.insert(artist).second && !artist.empty() && knownArtist && knownArtist(artist)) ++trial.knownL;
    }
    trial.artistsL = artists.size();
    const bool sameB = songs.size() == 1 || (artistB && artists.size() == 1);
    if (trial.matchedL > kManySongs && sameB) againstL = trial.matchedL;
    trial.scoreF = static_cast<double>(trial.matchedL) - static_cast<double>(againstL) / 2;
    return trial;
}

/** The template with artist and song changed. */
std::string Mirrored(std::string text) {
    for (char& letter : text) letter = letter == 'R' ? 'S' : letter == 'S' ? 'R' : letter;
    return text;
}

bool IsBetterMirror(const Trial& trial, const Trial& best) {
    if (Mirrored(best.parserP->Text()) != trial.parserP->Text()) return false;
    return trial.knownL != best.knownL ? trial.knownL > best.knownL : trial.artistsL < best.artistsL;
}

}   // namespace

NameGuess GuessNameTemplate(std::span<const std::string> names, std::span<const NameTemplateLine> templates,
                            NameHabits habits, const std::function<bool(const std::string& artist)>& knownArtist) {
    std::vector<Trial> trials;
    for (const NameTemplateLine& line : templates)
        if (Trial trial = Try(line.parser, names, habits, knownArtist); trial.matchedL > 0) trials.push_back(trial);
    NameGuess guess;
    double mostF = 0;
    for (const Trial& trial : trials) mostF = std::max(mostF, trial.scoreF);
    std::erase_if(trials, [mostF](const Trial& trial) { return trial.scoreF < kWithin * mostF; });
    const Trial* bestP = nullptr;
    for (const Trial& trial : trials)
        if (bestP == nullptr || trial.valuesL > bestP->valuesL || IsBetterMirror(trial, *bestP)) bestP = &trial;
    if (bestP != nullptr) guess.parserP = bestP->parserP, guess.matchedL = bestP->matchedL;
    for (std::size_t n = 0; n < names.size(); ++n)
        if (bestP == nullptr || !Read(*bestP->parserP, names[n], habits)) guess.misfits.push_back(n);
    return guess;
}
