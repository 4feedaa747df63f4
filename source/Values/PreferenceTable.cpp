#include "Values/PreferenceTable.h"

#include <algorithm>
#include <cmath>
#include <thread>

CCFValue PrefDefaults::ProcessorCount(const CCFDictionary& /*stored*/) {
    return static_cast<std::int64_t>(std::max(1U, std::thread::hardware_concurrency()));
}
/** The panel keeps the proportions of a record sleeve beside the width that the user gave the sources. */
CCFValue PrefDefaults::ArtworkHeight(const CCFDictionary& stored) {
    constexpr double kWidthToHeight = 1.3888888359069824;
    return static_cast<std::int64_t>(static_cast<double>(stored.GetInteger("Sources Panel Width", 185)) /
                                     kWidthToHeight);
}
/** The font of new lyrics. */
CCFValue PrefDefaults::MediaStreamFont(const CCFDictionary& /*stored*/) {
    return CCFDictionary{{"MediaStream Defaut Font", "Futura Condensed"}, {"MediaStream Defaut Font Size", 16.0}};
}

CCFValue PrefRow::Default(const CCFDictionary& stored) const {
    if (computeP != nullptr) return computeP(stored);
    switch (type) {
        case CFType::kBool:
            return defaultB;
        case CFType::kInteger:
            return defaultL;
        case CFType::kFloat:
            return defaultF;
        case CFType::kString:
            return SuperString(defaultText);
        case CFType::kDate:
            return CFDate{};
        case CFType::kData:
            return CFData{};
        case CFType::kArray:
            return CFArray{};
        case CFType::kDictionary:
            return CCFDictionary{};
    }
    return defaultB;
}

std::optional<CCFValue> AsType(const CCFValue& value, CFType type) {
    if (value.Type() == type) return value;
    const auto number = value.Number();
    if (!number) return std::nullopt;
    if (type == CFType::kFloat) return CCFValue(*number);
    constexpr double kMostWhole = 9007199254740992.0;   // beyond it a double no longer tells whole numbers apart
    if (type == CFType::kInteger && *number == std::floor(*number) && std::abs(*number) <= kMostWhole)
        return CCFValue(static_cast<std::int64_t>(*number));
    if (type == CFType::kBool && (*number == 0 || *number == 1)) return CCFValue(*number == 1);
    return std::nullopt;
}
