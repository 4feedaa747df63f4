#include "Values/CCFPrefDictionary.h"

#include <limits>
#include <utility>

#include "Core/CLog.h"

namespace {

thread_local PrefKeys* s_readKeysP = nullptr;   // of the innermost Reading

void NoteRead(std::string_view key) {
    if (s_readKeysP != nullptr) s_readKeysP->emplace(key);
}

template <typename Number>
Number Narrowed(const PrefRow& row, std::int64_t valueL) {
    if (std::in_range<Number>(valueL)) return static_cast<Number>(valueL);
    Log("### Error preference \"" + std::string(row.key) + "\" is out of range: " + std::to_string(valueL));
    return static_cast<Number>(row.defaultL);
}

}   // namespace

CCFPrefDictionary::Reading::Reading(PrefKeys& keys) : i_outerP(std::exchange(s_readKeysP, &keys)) {}
CCFPrefDictionary::Reading::~Reading() { s_readKeysP = i_outerP; }

CCFValue CCFPrefDictionary::Value(const PrefRow& row) const {
    const std::optional<CCFValue> stored = GetByName(row.key);
    if (!stored) return row.Default(row.computeP == nullptr ? CCFDictionary() : Snapshot());
    if (auto value = AsType(*stored, row.type)) return *std::move(value);
    Log("### Error preference \"" + std::string(row.key) + "\" is not of type " + std::string(CFTypeName(row.type)));
    return row.Default(Snapshot());
}

bool CCFPrefDictionary::GetBool(BoolPref pref) const { return *Value(pref.Row()).Bool(); }
short CCFPrefDictionary::GetShort(LongPref pref) const {
    return Narrowed<short>(pref.Row(), *Value(pref.Row()).Integer());
}
std::int32_t CCFPrefDictionary::GetLong(LongPref pref) const {
    return Narrowed<std::int32_t>(pref.Row(), *Value(pref.Row()).Integer());
}
double CCFPrefDictionary::GetFloat(FloatPref pref) const { return *Value(pref.Row()).Number(); }
SuperString CCFPrefDictionary::GetString(StringPref pref) const { return *Value(pref.Row()).String(); }
CFDate CCFPrefDictionary::GetDate(DatePref pref) const { return *Value(pref.Row()).Date(); }
CCFDictionary CCFPrefDictionary::GetDictionary(DictionaryPref pref) const { return *Value(pref.Row()).Dictionary(); }

std::optional<CCFValue> CCFPrefDictionary::GetByName(std::string_view key) const {
    NoteRead(key);
    const std::shared_lock guard(i_lock);
    const CCFValue* const valueP = Find(key);
    return valueP == nullptr ? std::nullopt : std::optional(*valueP);
}

CCFDictionary CCFPrefDictionary::Snapshot() const {
    const std::shared_lock guard(i_lock);
    return *this;
}

void CCFPrefDictionary::SetByName(std::string_view key, CCFValue value) {
    if (Store(key, std::move(value))) OnChanged(key);
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
    OnChanged(key);
}

void CCFPrefDictionary::Replace(CCFDictionary content) {
    const std::unique_lock guard(i_lock);
    static_cast<CCFDictionary&>(*this) = std::move(content);
    for (const auto& [key, value] : static_cast<const CCFDictionary&>(*this)) OnStored(key, value);
}

void CCFPrefDictionary::OnStored(std::string_view /*key*/, const CCFValue& /*value*/) {}
void CCFPrefDictionary::OnChanged(std::string_view /*key*/) {}
