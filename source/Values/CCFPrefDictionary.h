#pragma once
#include <mutex>
#include <shared_mutex>

#include "Values/CCFDictionary.h"

/** A dictionary of settings that any thread may read. Typed, by key, with a default for what is absent.
    Threads  any may read; writers are the main thread, or one that goes through it.
    Errors   a value of another type, or a number out of the asked range, is logged, and the default answers. */
class CCFPrefDictionary : protected CCFDictionary {
public:
    CCFPrefDictionary() = default;
    virtual ~CCFPrefDictionary() = default;
    CCFPrefDictionary(const CCFPrefDictionary&) = delete;
    CCFPrefDictionary& operator=(const CCFPrefDictionary&) = delete;

    [[nodiscard]] bool Has(std::string_view key) const;
    [[nodiscard]] std::optional<CCFValue> Get(std::string_view key) const;
    [[nodiscard]] bool GetBool(std::string_view key, bool defaultB = false) const;
    [[nodiscard]] short GetShort(std::string_view key, short defaultS = 0) const;
    [[nodiscard]] std::int32_t GetLong(std::string_view key, std::int32_t defaultL = 0) const;
    [[nodiscard]] double GetFloat(std::string_view key, double defaultF = 0) const;
    [[nodiscard]] SuperString GetString(std::string_view key, const SuperString& defaultText = {}) const;
    [[nodiscard]] CFDate GetDate(std::string_view key, CFDate defaultDate = {}) const;
    [[nodiscard]] CCFDictionary GetDictionary(std::string_view key) const;
    /** Everything, at one moment. */
    [[nodiscard]] CCFDictionary Snapshot() const;

    /** Stores `value`; an equal one already there changes nothing. */
    void Set(std::string_view key, CCFValue value);
    void Remove(std::string_view key);

protected:
    /** Set without OnChanged; true when something changed. */
    bool Store(std::string_view key, CCFValue value);
    /** Takes the place of the whole content; tells no one but OnStored. */
    void Replace(CCFDictionary content);
    /** `key` now holds `value`. Called under the lock: store and leave. */
    virtual void OnStored(std::string_view key, const CCFValue& value);
    /** Something changed by Set or Remove. Called without the lock. */
    virtual void OnChanged();

private:
    mutable std::shared_mutex i_lock;   // guards the base
};
