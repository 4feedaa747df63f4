#include "Library/ReadID.h"

#include <limits>

#include "Core/CLog.h"
#include "Values/CCFDictionary.h"

std::uint32_t ReadID(const CCFDictionary& dictionary, std::string_view key) {
    const std::int64_t value = dictionary.GetInteger(key);
    if (value >= 0 && value <= std::numeric_limits<std::uint32_t>::max()) return static_cast<std::uint32_t>(value);
    LogF("### Error %.*s is no id: %lld", static_cast<int>(key.size()), key.data(), static_cast<long long>(value));
    return 0;
}
