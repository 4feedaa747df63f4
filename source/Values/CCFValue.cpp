#include "Values/CCFValue.h"

#include <array>
#include <cmath>

#include "Values/CCFDictionary.h"

std::string_view CFTypeName(CFType type) noexcept {
    constexpr std::array<std::string_view, 8> kNames = {"bool", "integer", "float", "string",
                                                        "date", "data",    "array", "dict"};
    return kNames[static_cast<std::size_t>(type)];
}

CCFValue::CCFValue(CFData value) : i_value(std::make_shared<const CFData>(std::move(value))) {}
CCFValue::CCFValue(CFArray value) : i_value(std::make_shared<const CFArray>(std::move(value))) {}
CCFValue::CCFValue(CCFDictionary value) : i_value(std::make_shared<const CCFDictionary>(std::move(value))) {}

std::optional<bool> CCFValue::Bool() const noexcept {
    const auto* valueP = std::get_if<bool>(&i_value);
    return valueP == nullptr ? std::nullopt : std::optional(*valueP);
}
std::optional<std::int64_t> CCFValue::Integer() const noexcept {
    const auto* valueP = std::get_if<std::int64_t>(&i_value);
    return valueP == nullptr ? std::nullopt : std::optional(*valueP);
}
std::optional<double> CCFValue::Number() const noexcept {
    if (const auto* valueP = std::get_if<double>(&i_value)) return *valueP;
    if (const auto* valueP = std::get_if<std::int64_t>(&i_value)) return static_cast<double>(*valueP);
    return std::nullopt;
}
const SuperString* CCFValue::String() const noexcept { return std::get_if<SuperString>(&i_value); }
std::optional<CFDate> CCFValue::Date() const noexcept {
    const auto* valueP = std::get_if<CFDate>(&i_value);
    return valueP == nullptr ? std::nullopt : std::optional(*valueP);
}
const CFData* CCFValue::Data() const noexcept {
    const auto* valueP = std::get_if<std::shared_ptr<const CFData>>(&i_value);
    return valueP == nullptr ? nullptr : valueP->get();
}
const CFArray* CCFValue::Array() const noexcept {
    const auto* valueP = std::get_if<std::shared_ptr<const CFArray>>(&i_value);
    return valueP == nullptr ? nullptr : valueP->get();
}
const CCFDictionary* CCFValue::Dictionary() const noexcept {
    const auto* valueP = std::get_if<std::shared_ptr<const CCFDictionary>>(&i_value);
    return valueP == nullptr ? nullptr : valueP->get();
}

bool operator==(const CCFValue& a, const CCFValue& b) {
    if (a.Type() != b.Type()) return false;
    switch (a.Type()) {
        case CFType::kFloat: {
            const double x = *a.Number();
            const double y = *b.Number();
            return x == y || (std::isnan(x) && std::isnan(y));
        }
        case CFType::kData:
            return *a.Data() == *b.Data();
        case CFType::kArray:
            return *a.Array() == *b.Array();
        case CFType::kDictionary:
            return *a.Dictionary() == *b.Dictionary();
        default:
            return a.i_value == b.i_value;
    }
}
