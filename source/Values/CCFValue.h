#pragma once
#include <concepts>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <variant>
#include <vector>

#include "Core/SuperString.h"

class CCFDictionary;
class CCFValue;

/** Seconds since 2001-01-01 00:00 UTC. */
struct CFDate {
    double absoluteT = 0;
    friend bool operator==(const CFDate&, const CFDate&) = default;
};
using CFData = std::vector<std::byte>;
using CFArray = std::vector<CCFValue>;

/** In the order of the alternatives of CCFValue. */
enum class CFType : std::uint8_t { kBool, kInteger, kFloat, kString, kDate, kData, kArray, kDictionary };
/** "bool", "integer", "float", "string", "date", "data", "array", "dict". */
[[nodiscard]] std::string_view CFTypeName(CFType type) noexcept;

/** How deep arrays and dictionaries may lie in one another; readers and writers refuse what is deeper. */
inline constexpr int kPList_MaxDepth = 128;

/** One value of property-list data. It never changes; a copy shares what is big, so copies are cheap.
    Threads  any; as with every value, two threads do not assign the same object. */
class CCFValue {
public:
    template <std::same_as<bool> B>
    CCFValue(B value) : i_value(value) {}   // NOLINT(google-explicit-constructor): a value of property data is one
    template <std::signed_integral I>
    CCFValue(I value) : i_value(static_cast<std::int64_t>(value)) {}   // NOLINT(google-explicit-constructor)
    CCFValue(double value) : i_value(value) {}                         // NOLINT(google-explicit-constructor)
    CCFValue(SuperString value) : i_value(std::move(value)) {}         // NOLINT(google-explicit-constructor)
    CCFValue(const char* textZ) : i_value(SuperString(textZ)) {}       // NOLINT(google-explicit-constructor)
    CCFValue(CFDate value) : i_value(value) {}                         // NOLINT(google-explicit-constructor)
    CCFValue(CFData value);                                            // NOLINT(google-explicit-constructor)
    CCFValue(CFArray value);                                           // NOLINT(google-explicit-constructor)
    CCFValue(CCFDictionary value);                                     // NOLINT(google-explicit-constructor)

    [[nodiscard]] CFType Type() const noexcept { return static_cast<CFType>(i_value.index()); }

    // The value when it is of that type, else nothing.
    [[nodiscard]] std::optional<bool> Bool() const noexcept;
    [[nodiscard]] std::optional<std::int64_t> Integer() const noexcept;
    /** An integer too. */
    [[nodiscard]] std::optional<double> Number() const noexcept;
    [[nodiscard]] const SuperString* String() const noexcept;
    [[nodiscard]] std::optional<CFDate> Date() const noexcept;
    [[nodiscard]] const CFData* Data() const noexcept;
    [[nodiscard]] const CFArray* Array() const noexcept;
    [[nodiscard]] const CCFDictionary* Dictionary() const noexcept;

    /** Same type, same content; a number that is no number equals another one. */
    friend bool operator==(const CCFValue& a, const CCFValue& b);

private:
    std::variant<bool, std::int64_t, double, SuperString, CFDate, std::shared_ptr<const CFData>,
                 std::shared_ptr<const CFArray>, std::shared_ptr<const CCFDictionary>>
        i_value;
};
