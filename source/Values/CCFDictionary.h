#pragma once
#include <map>
#include <string>

#include "Values/CCFValue.h"

/** A dictionary of property-list data: keys in the order of their bytes, one value a key.
    Threads  none of its own: a value like any other (CCFPrefDictionary adds a lock). */
class CCFDictionary {
public:
    using Map = std::map<std::string, CCFValue, std::less<>>;

    CCFDictionary() = default;
    CCFDictionary(std::initializer_list<Map::value_type> rows) : i_map(rows) {}

    /** The value, null when there is none. Good until the dictionary changes. */
    [[nodiscard]] const CCFValue* Find(std::string_view key) const;
    [[nodiscard]] bool Has(std::string_view key) const { return Find(key) != nullptr; }
    void Set(std::string_view key, CCFValue value);
    /** True when there was one. */
    bool Remove(std::string_view key);

    // Of that type, else the default; a value of another type is logged, an absent one is not.
    [[nodiscard]] bool GetBool(std::string_view key, bool defaultB = false) const;
    [[nodiscard]] std::int64_t GetInteger(std::string_view key, std::int64_t defaultL = 0) const;
    /** An integer will do. */
    [[nodiscard]] double GetFloat(std::string_view key, double defaultF = 0) const;
    [[nodiscard]] SuperString GetString(std::string_view key, const SuperString& defaultText = {}) const;
    [[nodiscard]] CFDate GetDate(std::string_view key, CFDate defaultDate = {}) const;
    [[nodiscard]] CCFDictionary GetDictionary(std::string_view key) const;
    [[nodiscard]] CFArray GetArray(std::string_view key) const;

    [[nodiscard]] std::size_t Size() const noexcept { return i_map.size(); }
    [[nodiscard]] bool Empty() const noexcept { return i_map.empty(); }
    [[nodiscard]] Map::const_iterator begin() const noexcept { return i_map.begin(); }
    [[nodiscard]] Map::const_iterator end() const noexcept { return i_map.end(); }

    friend bool operator==(const CCFDictionary&, const CCFDictionary&) = default;

private:
    Map i_map;
};
