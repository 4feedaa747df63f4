#pragma once
#include <array>
#include <cstdint>
#include <random>
#include <vector>

#include "Graphics/CDGConstants.h"

/** CD+G one pixel at a time, one byte a pixel, nothing clever: what the decoder is held against. */
struct SlowCDG {
    struct Color {
        unsigned red = 0, green = 0, blue = 0;   // 0 to 15
    };
    std::vector<std::uint8_t> pixels = std::vector<std::uint8_t>(300 * 216);
    std::array<Color, 16> colors{};
    unsigned border = 0, across = 0, down = 0;
    unsigned mask = 0xFFFF;

    void Run(const SubCodePacket& packet) {
        const auto& b = packet.bytes;
        if (b[0] % 64 != 9) return;
        const auto* d = b.data() + 4;
        switch (b[1] % 64) {
            case 1:
                if (d[1] % 16 != 0) return;
                for (auto& pixel : pixels) pixel = d[0] % 16;
                across = down = 0;
                return;
            case 2:
                if (d[0] % 16 == border) return;
                border = d[0] % 16;
                for (unsigned y = 0; y < 216; ++y)
                    for (unsigned x = 0; x < 300; ++x)
                        if (x < 6 || x > 293 || y < 12 || y > 203) At(x, y) = d[0] % 16;
                return;
            case 6:
                return Tile(d, false);
            case 38:
                return Tile(d, true);
            case 20:
                return Scroll(d, false);
            case 24:
                return Scroll(d, true);
            case 30:
                return Load(d, 0);
            case 31:
                return Load(d, 8);
            default:
                return;
        }
    }

    /** 0xFFRRGGBB of the whole 300 x 216 picture as it is shown. */
    std::vector<std::uint32_t> Shown() const {
        std::vector<std::uint32_t> shown;
        for (unsigned y = 0; y < 216; ++y)
            for (unsigned x = 0; x < 300; ++x) {
                unsigned index = border;
                const bool visibleB = x >= 6 && x < 294 && y >= 12 && y < 204;
                if (visibleB && x + across < 300 && y + down < 216) index = pixels[(y + down) * 300 + x + across];
                const Color& color = colors[index];
                shown.push_back(0xFF000000U | color.red * 0x110000U | color.green * 0x1100U | color.blue * 0x11U);
            }
        return shown;
    }

private:
    std::uint8_t& At(unsigned x, unsigned y) { return pixels[y * 300 + x]; }

    void Tile(const std::uint8_t* d, bool xorB) {
        const unsigned channel = d[0] / 16U % 4 * 4 + d[1] / 16U % 4;
        if ((mask & (1U << channel)) == 0) return;
        const unsigned row = d[2] % 32, column = d[3] % 64;
        if (row >= 18 || column >= 50) return;
        for (unsigned y = 0; y < 12; ++y)
            for (unsigned x = 0; x < 6; ++x) {
                const bool setB = (d[4 + y] & (1U << (5 - x))) != 0;
                const std::uint8_t color = d[setB ? 1 : 0] % 16;
                std::uint8_t& pixel = At(column * 6 + x, row * 12 + y);
                pixel = xorB ? pixel ^ color : color;
            }
    }

    void Scroll(const std::uint8_t* d, bool wrapB) {
        across = d[1] % 8;
        down = d[2] % 16;
        const unsigned moveX = d[1] / 16 % 4, moveY = d[2] / 16 % 4;
        if (moveX == 1) Move(6, 0, wrapB, d[0] % 16);
        if (moveX == 2) Move(-6, 0, wrapB, d[0] % 16);
        if (moveY == 1) Move(0, 12, wrapB, d[0] % 16);
        if (moveY == 2) Move(0, -12, wrapB, d[0] % 16);
    }

    void Move(int right, int below, bool wrapB, std::uint8_t fill) {
        const std::vector<std::uint8_t> before = pixels;
        for (int y = 0; y < 216; ++y)
            for (int x = 0; x < 300; ++x) {
                const int fromX = x - right, fromY = y - below;
                const bool insideB = fromX >= 0 && fromX < 300 && fromY >= 0 && fromY < 216;
                const int wrapped = (fromY + 216) % 216 * 300 + (fromX + 300) % 300;
                pixels[static_cast<unsigned>(y * 300 + x)] =
                    insideB || wrapB ? before[static_cast<unsigned>(wrapped)] : fill;
            }
    }

    void Load(const std::uint8_t* d, unsigned first) {
        for (unsigned n = 0; n < 8; ++n) {
            const unsigned both = d[2 * n] % 64 * 64U + d[2 * n + 1] % 64;   // rrrrgg ggbbbb
            colors[first + n] = {both >> 8 & 15, (both >> 6 & 3) * 4 + (both >> 4 & 3), both & 15};
        }
    }
};

/** A graphics packet of any instruction, tiles most often, with noise in its two high bits when asked for. */
inline SubCodePacket RandomPacket(std::mt19937& random, bool noiseB = false) {
    static constexpr std::uint8_t kInstructions[] = {1, 2, 6, 6, 6, 6, 6, 38, 38, 38, 20, 24, 24, 28, 30, 31, 7};
    SubCodePacket packet;
    for (auto& byte : packet.bytes) byte = static_cast<std::uint8_t>(random() % (noiseB ? 256 : 64));
    packet.bytes[0] = 9;
    packet.bytes[1] = kInstructions[random() % std::size(kInstructions)];
    for (const std::size_t parity : {2U, 3U, 20U, 21U, 22U, 23U}) packet.bytes[parity] = 0;
    if (packet.bytes[1] == 1 && random() % 2 == 0) packet.bytes[5] &= 0xF0;
    return packet;
}
