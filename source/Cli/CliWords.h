#pragma once
#include <charconv>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/** The whole of `text` as a number. */
template <typename Number_>
[[nodiscard]] std::optional<Number_> ReadNumber(std::string_view text) {
    Number_ value{};
    const auto [restP, fault] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (fault != std::errc{} || restP != text.data() + text.size()) return {};
    return value;
}

/** The words of a sub-command, taken apart: options with a value, and the rest. Behind "--" a word may begin with "-".
 */
struct CliWords {
    std::map<std::string, std::string, std::less<>> values;
    std::vector<std::string> files;

    /** Nothing when an option is not among `options`, stands twice, or has no value. */
    [[nodiscard]] static std::optional<CliWords> Read(std::span<const std::string> words,
                                                      const std::set<std::string_view>& options);
    [[nodiscard]] const std::string* Value(std::string_view option) const;
};
