#pragma once
#include <cmath>
#include <span>
#include <string_view>

#include "Values/CCFDictionary.h"

/** When the table's default gets into the dictionary. */
enum class PrefRule {
    kStored,     // at start, when the file lacks the key
    kAtSave,     // only when the file is written
    kFixed,      // at every start, whatever the file says
    kTypeOnly,   // never: the getter's default argument serves until somebody sets it
    kFolder,     // as kTypeOnly: a reference to a folder, which a person names by its path
};

/** One preference: its key, its type, its default. */
struct PrefRow {
    std::string_view key;
    CFType type;
    PrefRule rule;
    bool defaultB = false;
    std::int64_t defaultL = 0;
    double defaultF = 0;
    std::string_view defaultText = {};
    /** For a default that depends on the machine or on what is stored already. */
    CCFValue (*computeP)(const CCFDictionary& stored) = nullptr;
    /** Nobody reads it yet, so it is offered nowhere; tools/check_preferences holds that to the sources. */
    bool laterB = false;
    /** Numbers that mean something. */
    double least = -HUGE_VAL, most = HUGE_VAL;
    /** While the program runs it keeps what its windows show here; nobody else sets it then. */
    bool ownB = false;

    /** `stored` is what the dictionary holds so far. */
    [[nodiscard]] CCFValue Default(const CCFDictionary& stored) const;
};

/** Every preference of the program, in the order in which the defaults are stored. */
[[nodiscard]] std::span<const PrefRow> PreferenceTable() noexcept;
/** Null for a key that the table does not know. */
[[nodiscard]] const PrefRow* FindPreference(std::string_view key) noexcept;
/** `value` when it is of `type`, or a number or switch that a person wrote in a neighbouring form (5 for 5.0, 5.0 for
    5, 1 for true); else nothing. */
[[nodiscard]] std::optional<CCFValue> AsType(const CCFValue& value, CFType type);
