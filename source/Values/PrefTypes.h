#pragma once
#include "Values/CCFValue.h"

// The constants of preferences by name alone, for headers: PreferenceTable.h has them whole, with the table.

template <CFType kType>
class Pref;

using BoolPref = Pref<CFType::kBool>;
using LongPref = Pref<CFType::kInteger>;
using FloatPref = Pref<CFType::kFloat>;
using StringPref = Pref<CFType::kString>;
using DatePref = Pref<CFType::kDate>;
using DictionaryPref = Pref<CFType::kDictionary>;
