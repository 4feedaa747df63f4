#pragma once
#include <mutex>
#include <set>
#include <shared_mutex>
#include <string>

#include "Values/CCFDictionary.h"
#include "Values/PreferenceTable.h"

/** The keys of settings. */
using PrefKeys = std::set<std::string, std::less<>>;

/** A dictionary of settings that any thread may read: typed, by the constants of the table, whose default answers for
    what is absent.
    Threads  any may read and set.
    Errors   a value of another type, or a number out of the asked range, is logged, and the default answers. */
class CCFPrefDictionary : protected CCFDictionary {
public:
    CCFPrefDictionary() = default;
    virtual ~CCFPrefDictionary() = default;
    CCFPrefDictionary(const CCFPrefDictionary&) = delete;
    CCFPrefDictionary& operator=(const CCFPrefDictionary&) = delete;

    [[nodiscard]] bool GetBool(BoolPref pref) const;
    [[nodiscard]] short GetShort(LongPref pref) const;
    [[nodiscard]] std::int32_t GetLong(LongPref pref) const;
    [[nodiscard]] double GetFloat(FloatPref pref) const;
    [[nodiscard]] SuperString GetString(StringPref pref) const;
    [[nodiscard]] CFDate GetDate(DatePref pref) const;
    [[nodiscard]] CCFDictionary GetDictionary(DictionaryPref pref) const;

    // An equal value that is there already changes nothing.
    void SetBool(BoolPref pref, bool onB) { SetByName(pref.Key(), onB); }
    void SetLong(LongPref pref, std::int64_t valueL) { SetByName(pref.Key(), valueL); }
    void SetFloat(FloatPref pref, double valueF) { SetByName(pref.Key(), valueF); }
    void SetString(StringPref pref, SuperString text) { SetByName(pref.Key(), std::move(text)); }
    void SetDate(DatePref pref, CFDate date) { SetByName(pref.Key(), date); }
    void SetDictionary(DictionaryPref pref, CCFDictionary value) { SetByName(pref.Key(), std::move(value)); }

    // For those who have a key as a text: the command line, the records of windows. Also keys that the table lacks.
    [[nodiscard]] std::optional<CCFValue> GetByName(std::string_view key) const;
    void SetByName(std::string_view key, CCFValue value);
    void Remove(std::string_view key);
    /** Everything, at one moment. */
    [[nodiscard]] CCFDictionary Snapshot() const;

protected:
    /** Notes in `keys` what is read on this thread while it lives. */
    class Reading {
    public:
        explicit Reading(PrefKeys& keys);
        ~Reading();
        Reading(const Reading&) = delete;
        Reading& operator=(const Reading&) = delete;

    private:
        PrefKeys* const i_outerP;   // one may lie in another
    };

    /** Set without OnChanged; true when something changed. */
    bool Store(std::string_view key, CCFValue value);
    /** Takes the place of the whole content; tells no one but OnStored. */
    void Replace(CCFDictionary content);
    /** `key` now holds `value`. Called under the lock: store and leave. */
    virtual void OnStored(std::string_view key, const CCFValue& value);
    /** `key` was changed by Set or Remove. Called without the lock, on the thread that did it. */
    virtual void OnChanged(std::string_view key);

private:
    /** What is stored, if it is of the row's type; else the row's default. */
    [[nodiscard]] CCFValue Value(const PrefRow& row) const;

    mutable std::shared_mutex i_lock;   // guards the base
};
