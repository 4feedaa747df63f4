#include "Values/CCFDictionary.h"

#include "Core/CLog.h"

namespace {

/** The typed reading of one key: what `get` answers, or the default when the key is absent or of another type. */
template <typename T, typename Get>
T Typed(const CCFDictionary& dictionary, std::string_view key, CFType wanted, T defaultValue, Get get) {
    const CCFValue* valueP = dictionary.Find(key);
    if (valueP == nullptr) return defaultValue;
    if (const auto got = get(*valueP)) return *got;
    const std::string line = "### Error value of \"" + std::string(key) + "\" is of type " +
                             std::string(CFTypeName(valueP->Type())) + ", asked for as " +
                             std::string(CFTypeName(wanted));
    Log(line);
    return defaultValue;
}

}   // namespace

const CCFValue* CCFDictionary::Find(std::string_view key) const {
    const auto it = i_map.find(key);
    return it == i_map.end() ? nullptr : &it->second;
}

void CCFDictionary::Set(std::string_view key, CCFValue value) {
    const auto it = i_map.find(key);
    if (it == i_map.end())
        i_map.emplace(key, std::move(value));
    else
        it->second = std::move(value);
}

bool CCFDictionary::Remove(std::string_view key) {
    const auto it = i_map.find(key);
    if (it == i_map.end()) return false;
    i_map.erase(it);
    return true;
}

bool CCFDictionary::GetBool(std::string_view key, bool defaultB) const {
    return Typed(*this, key, CFType::kBool, defaultB, [](const CCFValue& value) { return value.Bool(); });
}
std::int64_t CCFDictionary::GetInteger(std::string_view key, std::int64_t defaultL) const {
    return Typed(*this, key, CFType::kInteger, defaultL, [](const CCFValue& value) { return value.Integer(); });
}
double CCFDictionary::GetFloat(std::string_view key, double defaultF) const {
    return Typed(*this, key, CFType::kFloat, defaultF, [](const CCFValue& value) { return value.Number(); });
}
SuperString CCFDictionary::GetString(std::string_view key, const SuperString& defaultText) const {
    return Typed(*this, key, CFType::kString, defaultText, [](const CCFValue& value) { return value.String(); });
}
CFDate CCFDictionary::GetDate(std::string_view key, CFDate defaultDate) const {
    return Typed(*this, key, CFType::kDate, defaultDate, [](const CCFValue& value) { return value.Date(); });
}
CCFDictionary CCFDictionary::GetDictionary(std::string_view key) const {
    return Typed(*this, key, CFType::kDictionary, CCFDictionary(),
                 [](const CCFValue& value) { return value.Dictionary(); });
}
CFArray CCFDictionary::GetArray(std::string_view key) const {
    return Typed(*this, key, CFType::kArray, CFArray(), [](const CCFValue& value) { return value.Array(); });
}
