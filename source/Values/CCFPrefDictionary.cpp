#include "Values/CCFPrefDictionary.h"

#include <limits>

#include "Core/CLog.h"

namespace {

template <typename Number>
Number Within(std::string_view key, std::int64_t valueL, Number defaultL) {
    if (valueL >= std::numeric_limits<Number>::min() && valueL <= std::numeric_limits<Number>::max())
        return static_cast<Number>(valueL);
    Log("### Error preference \"" + std::string(key) + "\" is out of range: " + std::to_string(valueL));
    return defaultL;
}

}   // namespace

bool CCFPrefDictionary::Has(std::string_view key) const {
    const std::shared_lock guard(i_lock);
    return CCFDictionary::Has(key);
}
std::optional<CCFValue> CCFPrefDictionary::Get(std::string_view key) const {
    const std::shared_lock guard(i_lock);
    const CCFValue* valueP = Find(key);
    return valueP == nullptr ? std::nullopt : std::optional(*valueP);
}

// The typed getters log; they read from a copy of the one value, since a log line is no work to do under the lock.
namespace {
CCFDictionary One(std::string_view key, const std::optional<CCFValue>& value) {
    CCFDictionary one;
    if (value) one.Set(key, *value);
    return one;
}
}   // namespace

bool CCFPrefDictionary::GetBool(std::string_view key, bool defaultB) const {
    return One(key, Get(key)).GetBool(key, defaultB);
}
short CCFPrefDictionary::GetShort(std::string_view key, short defaultS) const {
    return Within<short>(key, One(key, Get(key)).GetInteger(key, defaultS), defaultS);
}
std::int32_t CCFPrefDictionary::GetLong(std::string_view key, std::int32_t defaultL) const {
    return Within<std::int32_t>(key, One(key, Get(key)).GetInteger(key, defaultL), defaultL);
}
double CCFPrefDictionary::GetFloat(std::string_view key, double defaultF) const {
    return One(key, Get(key)).GetFloat(key, defaultF);
}
SuperString CCFPrefDictionary::GetString(std::string_view key, const SuperString& defaultText) const {
    return One(key, Get(key)).GetString(key, defaultText);
}
CFDate CCFPrefDictionary::GetDate(std::string_view key, CFDate defaultDate) const {
    return One(key, Get(key)).GetDate(key, defaultDate);
}
CCFDictionary CCFPrefDictionary::GetDictionary(std::string_view key) const {
    return One(key, Get(key)).GetDictionary(key);
}
CCFDictionary CCFPrefDictionary::Snapshot() const {
    const std::shared_lock guard(i_lock);
    return *this;
}

void CCFPrefDictionary::Set(std::string_view key, CCFValue value) {
    if (Store(key, std::move(value))) OnChanged();
}

bool CCFPrefDictionary::Store(std::string_view key, CCFValue value) {
    const std::unique_lock guard(i_lock);
    const CCFValue* oldP = Find(key);
    if (oldP != nullptr && *oldP == value) return false;
    OnStored(key, value);
    CCFDictionary::Set(key, std::move(value));
    return true;
}

void CCFPrefDictionary::Remove(std::string_view key) {
    {
        const std::unique_lock guard(i_lock);
        if (!CCFDictionary::Remove(key)) return;
    }
    OnChanged();
}

void CCFPrefDictionary::Replace(CCFDictionary content) {
    const std::unique_lock guard(i_lock);
    static_cast<CCFDictionary&>(*this) = std::move(content);
    for (const auto& [key, value] : static_cast<const CCFDictionary&>(*this)) OnStored(key, value);
}

void CCFPrefDictionary::OnStored(std::string_view /*key*/, const CCFValue& /*value*/) {}
void CCFPrefDictionary::OnChanged() {}
