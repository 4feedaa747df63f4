#pragma once
#include <charconv>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/** The whole of `text` as a number, in the form that no language changes. */
template <typename Number_>
[[nodiscard]] std::optional<Number_> ReadNumber(std::string_view text) {
    Number_ value{};
    const auto [restP, fault] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (fault != std::errc{} || restP != text.data() + text.size()) return {};
    return value;
}

/** The words behind a command, taken apart and checked by its row of the table. */
struct CliWords {
    std::map<std::string, std::string, std::less<>> values;   // of the options that were given; of a switch empty
    std::vector<std::string> arguments;

    [[nodiscard]] bool Has(std::string_view option) const { return values.contains(option); }
    /** Null without the option. */
    [[nodiscard]] const std::string* Text(std::string_view option) const;
    /** For options of numbers. */
    template <typename Number_>
    [[nodiscard]] Number_ Number(std::string_view option, Number_ without) const {
        const std::string* const textP = Text(option);
        return textP == nullptr ? without : ReadNumber<Number_>(*textP).value_or(without);
    }
};
