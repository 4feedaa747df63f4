#pragma once
#include <optional>
#include <string>

#include "Values/CCFPrefDictionary.h"

/** A setting as a person writes it on a command line, in the form that no language changes: true or false, a number
    with a point, a text, a date "2026-11-26T10:00:00Z", the path of a folder. `value` is set on success. Errors fnfErr:
    no such setting, or no such folder; paramErr: no value of its kind. `fault` says it in words. */
OSErr ParsePreference(const CCFPrefDictionary& prefs, const std::string& key, const std::string& text,
                      std::optional<CCFValue>& value, std::string& fault);
