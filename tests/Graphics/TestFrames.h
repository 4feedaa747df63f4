#pragma once
/** Pictures that look like a karaoke page, made from a seed; the tests and the benchmark draw the same ones. */
#include <cmath>
#include <cstdint>
#include <random>
#include <span>
#include <vector>

#include "Graphics/COffscreen.h"

inline constexpr int kFrame_Width = 300, kFrame_Height = 216;

/** A colour of 4 bits a component, as CD+G has them, opaque. */
inline Pixel32 Color12(unsigned rgb) {
    return 0xFF000000U | (rgb >> 8 & 15) * 0x110000U | (rgb >> 4 & 15) * 0x1100U | (rgb & 15) * 0x11U;
}

/** Four lines of made-up letters: thick strokes with an outline. What lies left of `sungX` on the line `sungLine` has
    the colour of sung text. */
class LyricsPage {
public:
    explicit LyricsPage(unsigned seed, std::span<const Pixel32, 4> colors) : i_colors(colors.begin(), colors.end()) {
        std::mt19937 random(seed);
        const auto pick = [&](int from, int to) {
            return from + static_cast<int>(random() % static_cast<unsigned>(to - from));
        };
        i_cells.assign(kFrame_Width * kFrame_Height, 0);
        for (int line = 0; line < 4; ++line)
            for (int x = 24 + pick(0, 20); x < 262; x += 14) {
                if (pick(0, 6) == 0) continue;   // between words
                for (int stroke = 0; stroke < 3; ++stroke) {
                    const int y = 40 + line * 40;
                    Stroke(x + pick(0, 10), y + pick(0, 20), x + pick(0, 10), y + pick(0, 20));
                }
            }
    }
    [[nodiscard]] Pixel32 At(int x, int y, int sungLine, int sungX) const {
        const unsigned cell = i_cells[static_cast<std::size_t>(y * kFrame_Width + x)];
        const bool sungB = cell == 2 && (y - 34) / 40 == sungLine && x < sungX;
        return i_colors[sungB ? 3 : cell];
    }
    void Draw(CPixels& pixels, int sungLine, int sungX) const {
        for (int y = 0; y < kFrame_Height; ++y)
            for (int x = 0; x < kFrame_Width; ++x)
                pixels.Row32(y)[static_cast<std::size_t>(x)] = At(x, y, sungLine, sungX);
    }

private:
    void Stroke(int x0, int y0, int x1, int y1) {
        for (int y = std::min(y0, y1) - 4; y <= std::max(y0, y1) + 4; ++y)
            for (int x = std::min(x0, x1) - 4; x <= std::max(x0, x1) + 4; ++x) {
                const double dx = x1 - x0, dy = y1 - y0, length2 = dx * dx + dy * dy;
                const double along = length2 == 0 ? 0 : std::clamp(((x - x0) * dx + (y - y0) * dy) / length2, 0.0, 1.0);
                const double away = std::hypot(x - x0 - along * dx, y - y0 - along * dy);
                std::uint8_t& cell = i_cells[static_cast<std::size_t>(y * kFrame_Width + x)];
                if (away < 1.6)
                    cell = 2;
                else if (away < 2.7 && cell == 0)
                    cell = 1;
            }
    }
    std::vector<Pixel32> i_colors;       // background, outline, letters, sung letters
    std::vector<std::uint8_t> i_cells;   // 0 to 2, one a pixel
};
