#include "Meta/TempoSteps.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

std::array<double, kTempo_MostStep + 1> MakeTempos() {
    std::array<double, kTempo_MostStep + 1> tempos{};
    for (int step = 0; step <= kTempo_MostStep; ++step) {
        double tempo = static_cast<double>(step) / 100.0;
        // 115 / 100.0 * 100.0 is a hair below 115, and the file truncates: the next number up gives the byte back.
        while (static_cast<int>(tempo * 100.0) < step) tempo = std::nextafter(tempo, 3.0);
        tempos[static_cast<std::size_t>(step)] = tempo;
    }
    return tempos;
}

}   // namespace

double TempoOfStep(int step) noexcept {
    static const auto s_tempos = MakeTempos();
    return s_tempos[static_cast<std::size_t>(std::clamp(step, 0, kTempo_MostStep))];
}

double QuantizedTempo(float tempo) noexcept {
    if (std::isnan(tempo)) return 1.0;
    const float steps = std::clamp(tempo, 0.0F, 2.55F) * 100.0F;
    return TempoOfStep(static_cast<int>(std::lround(steps)));
}

double SteppedTempo(double now, int steps, double percent) noexcept {
    const double step = std::isfinite(percent) ? std::clamp(percent / 100.0, 0.01, 1.0) : 0.01;
    double place = (now - 1.0) / step;
    // What lies between two steps goes to the next one in that direction.
    const bool onGridB = std::abs(place - std::round(place)) * step < 0.0051;
    place = onGridB ? std::round(place) : steps > 0 ? std::floor(place) : std::ceil(place);
    return QuantizedTempo(static_cast<float>(1.0 + (place + steps) * step));
}

std::uint8_t TempoByte(double tempo) noexcept {
    if (std::isnan(tempo)) return 100;
    return static_cast<std::uint8_t>(std::clamp(tempo * 100.0, 0.0, static_cast<double>(kTempo_MostStep)));
}
