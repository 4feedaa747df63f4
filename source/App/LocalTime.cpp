#include "App/LocalTime.h"

#include <array>
#include <cmath>
#include <ctime>

#include "Platform/CClock.h"

std::string LocalTimeText() {
    const auto seconds = static_cast<std::time_t>(std::floor(CClock::Get().AbsoluteT() + kEpoch2001T));
    std::tm local{};
    if (::localtime_r(&seconds, &local) == nullptr) return "unknown";
    std::array<char, 64> text{};
    const std::size_t lengthL = std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S %z", &local);
    return {text.data(), lengthL};
}
