#pragma once
#include <optional>
#include <string>
#include <string_view>

#include "Library/NameTemplate.h"

// A name read by a template, the other way of BuildName: "SC8123-05 - Artist - Song" by "L-T - R - S". Pure.

/** Habits of names that no template tells. */
struct NameHabits {
    bool oneDigitB = false;   // a track number of one digit is one, too
    bool parensB = false;     // what ends a name in parentheses is its version
};

/** A name as it was read: the values by their token, as they stand in the name, perhaps empty. */
struct ParsedName {
    NameValues values;
    std::size_t digitsL = 0;   // of the track

    [[nodiscard]] const std::string& Value(NameToken token) const { return values[static_cast<std::size_t>(token)]; }
};

/** A template that is ready for many names. A value; several threads may read by one. */
class NameParser {
public:
    /** Nothing when it is empty, the language lacks one of its characters, or it has a "/" but does not begin with one or has
        not two or three. */
    [[nodiscard]] static std::optional<NameParser> Of(std::string_view text);
    [[nodiscard]] const std::string& Text() const noexcept { return i_text; }
    /** How many values it tells; a label of two parts is one, and what is to be ignored is none. */
    [[nodiscard]] std::size_t ValueCount() const;

    /** As the functions of these names. */
    [[nodiscard]] std::optional<ParsedName> Interpret(std::string_view name, NameHabits habits) const;
    [[nodiscard]] std::optional<ParsedName> InterpretWithFallback(std::string_view name, NameHabits habits) const;

    /** A part of a level: a value, or the literals that stand in a row. */
    struct Part {
        std::optional<NameToken> value;
        std::string literal;
    };
    using Level = std::vector<Part>;

private:
    std::string i_text;
    std::vector<Level> i_levels;   // the file's last
};

/** Reads `name`, in UTF-8: folders and the file's name without its extension, joined by "/"; those of its end that the template
    has levels for. Nothing when it does not fit, or the template is none. */
[[nodiscard]] std::optional<ParsedName> Interpret(std::string_view name, std::string_view text, NameHabits habits = {});
/** The same; a name that "L-T-R-S" does not fit is tried by "L-T R-S". */
[[nodiscard]] std::optional<ParsedName> InterpretWithFallback(std::string_view name, std::string_view text,
                                                              NameHabits habits = {});
