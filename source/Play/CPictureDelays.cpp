#include "Play/CPictureDelays.h"

#include <algorithm>

#include "Values/CCFPrefDictionary.h"

namespace {
constexpr DictionaryPref kPref_Delays = "Picture Delays (ms)";
}

long CPictureDelays::Of(std::string_view device) const {
    return static_cast<long>(
        std::clamp<std::int64_t>(i_preferences.GetDictionary(kPref_Delays).GetInteger(device), -kMost, kMost));
}

void CPictureDelays::Set(std::string_view device, long milliseconds) {
    CCFDictionary delays = i_preferences.GetDictionary(kPref_Delays);
    milliseconds = std::clamp(milliseconds, -kMost, kMost);
    if (milliseconds != 0)
        delays.Set(device, CCFValue(std::int64_t{milliseconds}));
    else
        delays.Remove(device);
    i_preferences.SetDictionary(kPref_Delays, std::move(delays));
}
