#pragma once
#include <cstdint>

/** Tempos are kept in steps of 0.01, from 0 to 2.55: the byte of the song file. */
inline constexpr int kTempo_MostStep = 255;

/** The tempo of a step: the value nearest to step / 100 from which `TempoByte` gives the step back. */
[[nodiscard]] double TempoOfStep(int step) noexcept;
/** The tempo of the step nearest to `tempo`; 1.0 for what is no number. */
[[nodiscard]] double QuantizedTempo(float tempo) noexcept;
/** So many steps of `percent` away from `now`, on their grid around 1.0: as many back lead back to 1.0, whatever the
    hundredths have cut off. A step is 0.01 at least. */
[[nodiscard]] double SteppedTempo(double now, int steps, double percent) noexcept;
/** The tempo times 100, truncated, as the song file has it; out of range is the nearest end. */
[[nodiscard]] std::uint8_t TempoByte(double tempo) noexcept;
