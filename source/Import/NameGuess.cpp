#include "Import/NameGuess.h"

#include <algorithm>
#include <unordered_set>

#include "Core/CLog.h"
#include "Files/CDataFork.h"

namespace {

constexpr std::uint64_t kFile_MaxBytes = 1 << 20;
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

Trial Try(const NameParser& parser, std::span<const std::string> names, NameHabits habits,
          const std::function<bool(const std::string&)>& knownArtist) {
    Trial trial{.parserP = &parser, .valuesL = parser.ValueCount()};
    std::unordered_set<std::string> artists, songs;
    std::size_t againstL = 0;
    bool artistB = false;
    for (const std::string& name : names) {
        const auto parsed = parser.InterpretWithFallback(name, habits);
        if (!parsed || parsed->Value(NameToken::kSong).empty()) continue;
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

std::vector<NameTemplateLine> ReadNameTemplates(std::string_view text) {
    std::vector<NameTemplateLine> lines;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.ends_with('\r')) line.remove_suffix(1);
        const std::size_t tab = std::min(line.find('\t'), line.size());
        if (tab == 0) continue;   // a remark alone
        if (auto parser = NameParser::Of(line.substr(0, tab)))
            lines.push_back({std::move(*parser), std::string(line.substr(std::min(tab + 1, line.size())))});
        else
            LogF("### Error no template: <%s>", std::string(line.substr(0, tab)).c_str());
    }
    return lines;
}

std::vector<NameTemplateLine> LoadNameTemplates(const std::filesystem::path& preferences,
                                                const std::filesystem::path& resources) {
    for (const std::filesystem::path& folder : {preferences, resources}) {
        const CFileRef file(folder / "Name Parser Templates.txt");
        std::string text;
        const OSErr err = ReadWholeFile(file, text, kFile_MaxBytes);
        if (!Failed(err)) return ReadNameTemplates(text);
        if (err != fnfErr) (void)LogStep(err, "reading name templates", file.GetPath());
    }
    return {};
}

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
    if (bestP != nullptr) guess.parserP = bestP->parserP;
    for (std::size_t n = 0; n < names.size(); ++n) {
        const auto parsed =
            guess.parserP == nullptr ? std::nullopt : guess.parserP->InterpretWithFallback(names[n], habits);
        if (parsed && !parsed->Value(NameToken::kSong).empty())
            ++guess.matchedL;
        else
            guess.misfits.push_back(n);
    }
    return guess;
}
