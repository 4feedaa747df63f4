#include "Cli/CliParser.h"

#include <algorithm>
#include <array>
#include <CLI/CLI.hpp>
#include <cmath>
#include <map>
#include <memory>

#include "App/CApp.h"

namespace {

constexpr char kShield = 1;
constexpr const char* kFooter =
    "--root and --json may stand anywhere. A value that begins with \"-\" stands behind \"--\".";

/** The help of CLI11, with our form of the usage. */
class HelpText final : public CLI::Formatter {
public:
    explicit HelpText(std::string usage) : i_usage(std::move(usage)) { column_width(28); }
    std::string make_usage(const CLI::App*, std::string) const override { return "usage: vopla-cli " + i_usage + "\n"; }

private:
    const std::string i_usage;
};

std::string BoundText(double value) {
    std::array<char, 32> text{};
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr};
}

/** What is wrong with the word behind an option; empty when nothing is. */
std::string Fault(const CliOption& option, const std::string& word) {
    if (option.kind == CliKind::kText) return word.empty() ? "wants a value" : "";
    const std::optional<double> number = option.kind == CliKind::kNumber ? ReadNumber<double>(word) : [&word] {
        const auto whole = ReadNumber<std::int32_t>(word);
        return whole ? std::optional<double>(*whole) : std::nullopt;
    }();
    if (!number) return "\"" + word + "\" is no " + (option.kind == CliKind::kWhole ? "whole number" : "number");
    if (*number >= option.least && *number <= option.most) return {};
    if (!std::isfinite(option.most) || option.most > 1e15) return word + " is less than " + BoundText(option.least);
    return word + " is not from " + BoundText(option.least) + " to " + BoundText(option.most);
}

std::string Bare(const std::string& word) { return word.starts_with(kShield) ? word.substr(1) : word; }

/** The table as a tree of CLI11: the words of one command line go into `words` and `root`. */
class Tree {
public:
    Tree() {
        i_app.formatter(std::make_shared<HelpText>("[--root DIR] [--json] COMMAND ...\n" + AllUsages()));
        i_app.set_version_flag("--version", CApp::DisplayName(), "Tells the version, and ends.");
        i_app.set_help_flag("-h,--help", "Tells how a command is used, and ends.");
        i_app.footer(kFooter);
        i_app.add_option("--root", i_root, "The folder of a library, or the one that a host has as its root.")
            ->type_name("DIR")
            ->check(
                [](const std::string& word) { return word.empty() ? std::string("wants a folder") : std::string(); });
        i_app.add_flag("--json", i_jsonB, "Answers and errors as JSON, one object a line.");
        i_app.fallthrough();
        i_app.require_subcommand(1, 1);
        for (const CliCommand& command : CliCommands()) Add(command);
    }

    /** Throws CLI::ParseError. */
    void Parse(std::vector<std::string> words) {
        std::ranges::reverse(words);   // it takes them from behind
        i_app.parse(std::move(words));
    }
    /** The last command or group that was met; the whole program when none was. */
    [[nodiscard]] CLI::App& Met() {
        CLI::App* appP = &i_app;
        while (!appP->get_subcommands().empty()) appP = appP->get_subcommands().front();
        return *appP;
    }
    [[nodiscard]] CLI::App& All() noexcept { return i_app; }
    /** Null for the program and a group. */
    [[nodiscard]] const CliCommand* CommandOf(const CLI::App& app) const {
        const auto it = std::ranges::find(i_leaves, &app, &Leaf::appP);
        return it == i_leaves.end() ? nullptr : it->commandP;
    }
    [[nodiscard]] CliWords Words(const CLI::App& app) const {
        CliWords words;
        const auto it = std::ranges::find(i_leaves, &app, &Leaf::appP);
        for (const CliArgument& argument : it->commandP->arguments)
            if (const CLI::Option* const optionP = app.get_option(std::string(argument.name)); optionP->count() != 0)
                for (const std::string& word : optionP->results()) words.arguments.push_back(Bare(word));
        for (const CliOption& option : it->commandP->options)
            if (const CLI::Option* const optionP = app.get_option(std::string(option.name)); optionP->count() != 0)
                words.values[std::string(option.name)] =
                    option.kind == CliKind::kSwitch ? std::string() : Bare(optionP->results().front());
        return words;
    }
    [[nodiscard]] std::string Root() const { return Bare(i_root); }
    [[nodiscard]] bool JSON() const noexcept { return i_jsonB; }

private:
    struct Leaf {
        const CLI::App* appP;
        const CliCommand* commandP;
    };

    static std::string AllUsages() {
        std::string all;
        for (const CliCommand& command : CliCommands()) all += "  " + command.Usage() + "\n";
        return all;
    }

    void Add(const CliCommand& command) {
        const std::size_t blank = command.words.find(' ');
        CLI::App* parentP = &i_app;
        if (blank != std::string_view::npos) parentP = &Group(command.words.substr(0, blank));
        const std::string_view last = blank == std::string_view::npos ? command.words : command.words.substr(blank + 1);
        CLI::App& app = *parentP->add_subcommand(std::string(last), std::string(command.help));
        app.fallthrough();
        app.footer(kFooter);
        app.formatter(std::make_shared<HelpText>(command.Usage()));
        for (const CliArgument& argument : command.arguments) {
            CLI::Option& option = *app.add_option(std::string(argument.name));
            option.description(std::string(argument.help));
            option.type_name("");
            if (argument.count != CliArgument::Count::kMaybe) option.required();
            if (argument.count == CliArgument::Count::kSome)
                option.expected(1, CLI::detail::expected_max_vector_size)->allow_extra_args();
            else
                option.expected(1);
        }
        for (const CliOption& row : command.options) {
            if (row.kind == CliKind::kSwitch) {
                app.add_flag(std::string(row.name))->description(std::string(row.help));
                continue;
            }
            CLI::Option& option = *app.add_option(std::string(row.name));
            option.description(std::string(row.help));
            option.type_name(std::string(row.value))->expected(1);
            option.check([&row](const std::string& word) { return Fault(row, word); });
            if (row.requiredB) option.required();
        }
        i_leaves.push_back({&app, &command});
    }

    CLI::App& Group(std::string_view word) {
        if (const auto it = i_groups.find(word); it != i_groups.end()) return *it->second;
        CLI::App& group = *i_app.add_subcommand(std::string(word), std::string(CliGroupHelp(word)));
        i_groups.emplace(word, &group);
        group.fallthrough();
        group.require_subcommand(1, 1);
        group.footer(kFooter);
        std::string usages = std::string(word) + " COMMAND ...\n";
        for (const CliCommand& command : CliCommands())
            if (command.words.starts_with(std::string(word) + " ")) usages += "  " + command.Usage() + "\n";
        group.formatter(std::make_shared<HelpText>(usages));
        return group;
    }

    CLI::App i_app{"Songs, libraries and settings of Vopla from the command line.", "vopla-cli"};
    std::string i_root;
    bool i_jsonB = false;
    std::vector<Leaf> i_leaves;
    std::map<std::string_view, CLI::App*> i_groups;
};

/** "++", which ends a command of CLI11, and what begins with "[", which is a list there. */
bool IsOfCLI11(std::string_view word) { return word == "++" || word.starts_with('['); }

/** The words behind "--" with a shield in front, and no "--": what they begin with means nothing then. CLI11 itself
   gives them to the wrong command when the one before has enough already. The same for what has a meaning to it alone. */
std::vector<std::string> Shielded(std::span<const std::string> words) {
    std::vector<std::string> shielded;
    bool behindB = false;
    for (const std::string& word : words) {
        const std::size_t valueAt = word.starts_with("--") ? word.find('=') + 1 : 0;   // "--root=[a]"
        if (behindB || IsOfCLI11(word))
            shielded.push_back(kShield + word);
        else if (word == "--")
            behindB = true;
        else if (valueAt > 0 && IsOfCLI11(std::string_view(word).substr(valueAt)))
            shielded.push_back(word.substr(0, valueAt) + kShield + word.substr(valueAt));
        else
            shielded.push_back(word);
    }
    return shielded;
}

bool TakesValue(const std::string& word) {
    if (word == "--root") return true;
    return std::ranges::any_of(CliCommands(), [&word](const CliCommand& command) {
        const auto it = std::ranges::find(command.options, word, &CliOption::name);
        return it != command.options.end() && it->kind != CliKind::kSwitch;
    });
}

/** CLI11 takes "-3" for a value, since it looks like no option, and "--json" for that of the option before it. */
std::string FaultOfDashes(std::span<const std::string> words) {
    for (std::size_t n = 0; n < words.size() && words[n] != "--"; ++n) {
        const std::string& word = words[n];
        const bool valueB = word.size() > 1 && word[0] == '-' && word[1] != '-' && word != "-h";
        const bool behindB = n > 0 && TakesValue(words[n - 1]);
        if (word.ends_with('=') && TakesValue(word.substr(0, word.size() - 1)))
            return word.substr(0, word.size() - 1) + " wants a value";
        if (valueB && !behindB) return "\"" + word + "\" begins with \"-\": put it behind \"--\"";
        if (behindB && word.starts_with("--")) return words[n - 1] + " wants a value";
    }
    return {};
}

/** "VALUE is required; usage: library set ID KEY VALUE". */
std::string WrongText(Tree& tree, std::string fault) {
    CLI::App& app = tree.Met();
    const CliCommand* const commandP = tree.CommandOf(app);
    if (commandP != nullptr) return std::string(commandP->words) + ": " + fault + "; usage: " + commandP->Usage();
    const std::vector<std::string> left = tree.All().remaining(true);
    const std::string where = &app == &tree.All() ? "" : app.get_name() + " ";
    const auto unknown = std::ranges::find_if(left, [](const std::string& word) { return !word.starts_with('-'); });
    if (unknown != left.end())
        fault = "unknown command " + where + *unknown;
    else if (!left.empty())
        fault = "unknown option " + left.front();
    else if (!where.empty())
        fault = where + "wants a command";
    return fault + "; usage: " + (where.empty() ? "vopla-cli [--root DIR] [--json] " : where) +
           "COMMAND ..., see --help";
}

}   // namespace

CliParsed ParseCli(std::span<const std::string> words) {
    CliParsed parsed;
    const auto plain = std::ranges::find(words, "--");
    parsed.jsonB = std::find(words.begin(), plain, "--json") != plain;
    Tree tree;
    if (words.empty()) {
        parsed.text = tree.All().help();
        return parsed;
    }
    parsed.what = CliParsed::What::kWrong;
    try {
        std::string fault = FaultOfDashes(words);
        if (fault.empty()) {
            tree.Parse(Shielded(words));
            parsed.what = CliParsed::What::kCommand;
            parsed.commandP = tree.CommandOf(tree.Met());
            parsed.words = tree.Words(tree.Met());
            parsed.root = tree.Root();
            parsed.jsonB = tree.JSON();
        } else {
            parsed.text = fault;
        }
    } catch (const CLI::CallForVersion& version) {
        parsed.what = CliParsed::What::kHelp;
        parsed.text = std::string(version.what()) + "\n";
    } catch (const CLI::Success&) {
        parsed.what = CliParsed::What::kHelp;
        parsed.text = tree.Met().help();
    } catch (const CLI::ParseError& fault) {
        parsed.text = WrongText(tree, fault.what());
        std::erase(parsed.text, kShield);
    }
    return parsed;
}
