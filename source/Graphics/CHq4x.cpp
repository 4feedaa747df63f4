#include "Graphics/CHq4x.h"

#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string_view>

#include "Core/Assertions.h"

namespace {

// The neighbours are numbered row by row, 0 to 8, the pixel itself is 4. One quarter is enough to tell: the others are
// its mirror images. So all of this speaks of the upper left one, whose neighbours are 0 (corner), 1 (up), 3 (left).
enum Where : std::uint8_t { kCorner = 0, kUp = 1, kLeft = 3, kSelf = 4, kRight = 5, kDown = 7 };

/** A mix of up to three pixels, in sixteenths. */
struct Mix {
    struct Part {
        std::uint8_t where, sixteenths;
    };
    std::array<Part, 3> parts;
};
/** The four pixels of the quarter, the outer one first, then to the right, then down. */
using Form = std::array<Mix, 4>;

constexpr Mix kAll_Self{{{{kSelf, 16}, {kSelf, 0}, {kSelf, 0}}}};
constexpr Mix Two(Where a, std::uint8_t aL, Where b, std::uint8_t bL) { return {{{{a, aL}, {b, bL}, {kSelf, 0}}}}; }
constexpr Mix Three(std::uint8_t selfL, Where a, std::uint8_t aL, Where b, std::uint8_t bL) {
    return {{{{kSelf, selfL}, {a, aL}, {b, bL}}}};
}
constexpr Mix Self(std::uint8_t selfL, Where a, std::uint8_t aL) { return Two(kSelf, selfL, a, aL); }

/** The forms by their letters, 'a' first. */
constexpr Form kForms[] = {
    {Three(8, kUp, 4, kLeft, 4), Three(10, kUp, 4, kLeft, 2), Three(10, kLeft, 4, kUp, 2), Three(12, kUp, 2, kLeft, 2)},
    {Self(10, kCorner, 6), Three(10, kUp, 4, kCorner, 2), Self(12, kCorner, 4), Self(14, kCorner, 2)},
    {Self(10, kCorner, 6), Self(12, kCorner, 4), Three(10, kLeft, 4, kCorner, 2), Self(14, kCorner, 2)},
    {Self(10, kUp, 6), Self(10, kUp, 6), Self(14, kUp, 2), Self(14, kUp, 2)},
    {Self(10, kLeft, 6), Self(14, kLeft, 2), Self(10, kLeft, 6), Self(14, kLeft, 2)},
    {Self(10, kCorner, 6), Self(12, kCorner, 4), Self(12, kCorner, 4), Self(14, kCorner, 2)},
    {kAll_Self, kAll_Self, kAll_Self, kAll_Self},
    {Two(kUp, 8, kLeft, 8), Self(8, kUp, 8), Self(8, kLeft, 8), kAll_Self},
    {Three(8, kUp, 4, kLeft, 4), Self(12, kUp, 4), Self(12, kLeft, 4), kAll_Self},
    {Three(8, kUp, 4, kLeft, 4), kAll_Self, kAll_Self, kAll_Self},
    {Two(kUp, 8, kLeft, 8), Two(kUp, 10, kLeft, 6), Three(4, kLeft, 8, kUp, 4), Three(12, kUp, 2, kLeft, 2)},
    {Self(12, kLeft, 4), Self(10, kUp, 6), Self(4, kLeft, 12), Self(14, kUp, 2)},
    {Two(kUp, 8, kLeft, 8), Three(4, kUp, 8, kLeft, 4), Two(kLeft, 10, kUp, 6), Three(12, kUp, 2, kLeft, 2)},
    {Self(12, kUp, 4), Self(4, kUp, 12), Self(10, kLeft, 6), Self(14, kLeft, 2)},
};

// The form of each of the 256 sets of different neighbours (bit 0 is neighbour 0, bit 7 is neighbour 8), first when the
// two neighbours that decide look the same, then when they look different.
constexpr std::string_view kForms_Same =
    "aaceaacebdhhbdkkaacnaacnbdhhbdfhaaceaacebdmmbdijaacnaacnbdihbdfj"
    "aaceaaceblhhblihaaceaacebdihbdihaaceaaceblfhblfjaaceaacnbdihblfj"
    "aaceaacebdhhbdkkaaceaacebdihbdihaaceaacebdmmbdijaaceaacebdimbdfj"
    "aaceaacebdihbdikaaceaacebdihbdfhaaceaacebdihbdfjaaceaacebdfhbdfj";
constexpr std::string_view kForms_Different =
    "aaceaacebdfgbdfgaaceaacebdggbdfgaaceaacebdfgbdfgaaceaacebdfgbdfg"
    "aaceaacebdggbdfgaaceaacebdfgbdfgaaceaacebdfgbdfgaaceaacebdfgbdfg"
    "aaceaacebdfgbdfgaaceaacebdfgbdfgaaceaacebdfgbdfgaaceaacebdfgbdfg"
    "aaceaacebdfgbdfgaaceaacebdfgbdfgaaceaacebdfgbdfgaaceaacebdfgbdfg";
static_assert(kForms_Same.size() == 256 && kForms_Different.size() == 256);

// The pairs of neighbours that meet at a corner; a set of them is a mask of bits in this order.
enum Pair : unsigned { kUpLeft, kUpRight, kDownRight, kDownLeft };

/** The pair that decides between the two forms: nearly always the two beside the quarter. */
Pair Deciding(unsigned neighbours) {
    switch (neighbours) {
        case 19:
        case 23:
        case 51:
        case 55:
        case 119:
            return kUpRight;
        case 73:
        case 77:
        case 105:
        case 109:
        case 125:
            return kDownLeft;
        default:
            return kUpLeft;
    }
}

/** A mix whose numbers fit one quarter: which pixels, and how much of each. */
struct Recipe {
    std::array<Mix, 4> mixes;
    bool selfB;   // all four are the pixel itself
};

struct Tables {
    // Indexed by quarter and letter: the forms, mirrored.
    std::array<std::array<Recipe, std::size(kForms)>, 4> recipes;
    // Indexed by the mask of neighbours and, above it, the mask of pairs: the letter of each quarter.
    std::array<std::array<std::uint8_t, 4>, 4096> letters;
};
Tables s_tables;
std::once_flag s_tablesOnce;

// Bit 0 of a quarter's number is set on the right, bit 1 below.
std::size_t Mirror(std::size_t where, unsigned quarter) {
    std::size_t column = where % 3, row = where / 3;
    if ((quarter & 1) != 0) column = 2 - column;
    if ((quarter & 2) != 0) row = 2 - row;
    return row * 3 + column;
}

/** The mask of neighbours as the upper left quarter would see it. */
unsigned MirrorNeighbours(unsigned mask, unsigned quarter) {
    unsigned seen = 0;
    for (std::size_t bit = 0; bit < 8; ++bit) {
        const std::size_t from = Mirror(bit < kSelf ? bit : bit + 1, quarter);
        if ((mask >> (from < kSelf ? from : from - 1) & 1U) != 0) seen |= 1U << bit;
    }
    return seen;
}

unsigned MirrorPairs(unsigned mask, unsigned quarter) {
    static constexpr Pair kAcross[] = {kUpRight, kUpLeft, kDownLeft, kDownRight};
    static constexpr Pair kOver[] = {kDownLeft, kDownRight, kUpRight, kUpLeft};
    unsigned seen = 0;
    for (unsigned bit = 0; bit < 4; ++bit) {
        unsigned from = bit;
        if ((quarter & 1) != 0) from = kAcross[from];
        if ((quarter & 2) != 0) from = kOver[from];
        if ((mask >> from & 1U) != 0) seen |= 1U << bit;
    }
    return seen;
}

void FillTables() {
    for (unsigned quarter = 0; quarter < 4; ++quarter) {
        for (std::size_t letter = 0; letter < std::size(kForms); ++letter) {
            Recipe& recipe = s_tables.recipes[quarter][letter];
            recipe.mixes = kForms[letter];
            recipe.selfB = true;
            for (Mix& mix : recipe.mixes)
                for (Mix::Part& part : mix.parts) {
                    recipe.selfB = recipe.selfB && (part.where == kSelf || part.sixteenths == 0);
                    part.where = static_cast<std::uint8_t>(Mirror(part.where, quarter));
                }
        }
        for (unsigned key = 0; key < 4096; ++key) {
            const unsigned neighbours = MirrorNeighbours(key & 255, quarter), pairs = MirrorPairs(key >> 8, quarter);
            const bool differentB = (pairs >> Deciding(neighbours) & 1U) != 0;
            const char letter = (differentB ? kForms_Different : kForms_Same)[neighbours];
            s_tables.letters[key][quarter] = static_cast<std::uint8_t>(letter - 'a');
        }
    }
}

/** The four bytes of a pixel, 16 bits apart, so that a sum of sixteenths has room. */
std::uint64_t Spread(Pixel32 pixel) { return (pixel & 0x00FF00FFULL) | (pixel & 0xFF00FF00ULL) << 24; }
Pixel32 Gather(std::uint64_t sum) {
    const std::uint64_t bytes = sum >> 4 & 0x00FF00FF00FF00FFULL;
    return static_cast<Pixel32>(bytes) | static_cast<Pixel32>(bytes >> 24);
}

}   // namespace

CHq4x::CHq4x() { InitTables(); }

void CHq4x::InitTables() { std::call_once(s_tablesOnce, FillTables); }

bool CHq4x::Different(Pixel32 a, Pixel32 b) noexcept {
    if (a == b) return false;
    const std::uint32_t first = Yuv(a), second = Yuv(b);
    const auto apart = [&](unsigned shift) {
        return std::abs(static_cast<int>(first >> shift & 0xFF) - static_cast<int>(second >> shift & 0xFF));
    };
    return apart(16) > 0x30 || apart(8) > 7 || apart(0) > 6;
}

unsigned CHq4x::Differs(Pixel32 a, Pixel32 b) noexcept {
    if (a == b) return 0;
    // A picture has few colours: nearly every pair was asked before.
    Known& known = i_known[(a * 0x9E3779B1U ^ b * 0x85EBCA6BU) >> 22];
    const std::uint64_t both = static_cast<std::uint64_t>(a) << 32 | b;
    if (known.both != both) known = {both, Different(a, b) ? 1U : 0U};
    return known.differentL;
}

void CHq4x::MarkBusy(const Pixel32* upP, const Pixel32* midP, const Pixel32* downP, std::size_t widthL) {
    std::uint32_t* verticalP = i_vertical.data();
    std::uint32_t* busyP = i_busy.data();
    for (std::size_t x = 0; x < widthL; ++x) verticalP[x] = (upP[x] ^ midP[x]) | (downP[x] ^ midP[x]);
    for (std::size_t x = 1; x + 1 < widthL; ++x)
        busyP[x] =
            verticalP[x - 1] | verticalP[x] | verticalP[x + 1] | (midP[x - 1] ^ midP[x]) | (midP[x + 1] ^ midP[x]);
    // The column beyond the edge repeats the one at the edge.
    const std::size_t last = widthL - 1;
    const std::size_t second = std::min<std::size_t>(1, last), beforeLast = last - second;
    busyP[0] = verticalP[0] | verticalP[second] | (midP[0] ^ midP[second]);
    busyP[last] = verticalP[last] | verticalP[beforeLast] | (midP[last] ^ midP[beforeLast]);
}

void CHq4x::Block(const std::array<Pixel32, 9>& p, Pixel32* outP, std::size_t rowPixels) {
    const Pixel32 self = p[kSelf];
    const unsigned key = Differs(self, p[0]) | Differs(self, p[1]) << 1 | Differs(self, p[2]) << 2 |
                         Differs(self, p[3]) << 3 | Differs(self, p[5]) << 4 | Differs(self, p[6]) << 5 |
                         Differs(self, p[7]) << 6 | Differs(self, p[8]) << 7 | Differs(p[kUp], p[kLeft]) << 8 |
                         Differs(p[kUp], p[kRight]) << 9 | Differs(p[kDown], p[kRight]) << 10 |
                         Differs(p[kDown], p[kLeft]) << 11;
    std::array<std::uint64_t, 9> spread;
    for (std::size_t n = 0; n < 9; ++n) spread[n] = Spread(p[n]);

    for (std::size_t quarter = 0; quarter < 4; ++quarter) {
        const Recipe& recipe = s_tables.recipes[quarter][s_tables.letters[key][quarter]];
        const std::size_t outerX = (quarter & 1) != 0 ? 3 : 0, innerX = (quarter & 1) != 0 ? 2 : 1;
        Pixel32* outerP = outP + ((quarter & 2) != 0 ? 3 : 0) * rowPixels;
        Pixel32* innerP = outP + ((quarter & 2) != 0 ? 2 : 1) * rowPixels;
        if (recipe.selfB) {
            outerP[outerX] = outerP[innerX] = innerP[outerX] = innerP[innerX] = self;
            continue;
        }
        const auto mixed = [&](std::size_t n) {
            const auto& parts = recipe.mixes[n].parts;
            return Gather(spread[parts[0].where] * parts[0].sixteenths + spread[parts[1].where] * parts[1].sixteenths +
                          spread[parts[2].where] * parts[2].sixteenths);
        };
        outerP[outerX] = mixed(0);
        outerP[innerX] = mixed(1);
        innerP[outerX] = mixed(2);
        innerP[innerX] = mixed(3);
    }
}

void CHq4x::ScaleRow(const Pixel32* upP, const Pixel32* midP, const Pixel32* downP, std::size_t widthL, Pixel32* outP,
                     std::size_t rowPixels) {
    MarkBusy(upP, midP, downP, widthL);
    for (std::size_t x = 0; x < widthL;) {
        if (i_busy[x] == 0) {
            std::size_t end = x + 1;
            while (end < widthL && i_busy[end] == 0) ++end;   // neighbours that are flat have one colour
            for (std::size_t row = 0; row < 4; ++row)
                std::fill_n(outP + row * rowPixels + x * 4, (end - x) * 4, midP[x]);
            x = end;
            continue;
        }
        const std::size_t left = x == 0 ? 0 : x - 1, right = std::min(x + 1, widthL - 1);
        Block({upP[left], upP[x], upP[right], midP[left], midP[x], midP[right], downP[left], downP[x], downP[right]},
              outP + x * 4, rowPixels);
        ++x;
    }
}

OSErr CHq4x::Scale(const CPixels& source, CPixels& dest) {
    if (!AssertWords(source.depth() == 32, "depth() == 32")) return paramErr;
    if (!AssertWords(dest.depth() == 32, "destP->depth() == 32")) return paramErr;
    const int width = source.bounds().Width(), height = source.bounds().Height();
    if (dest.bounds().Width() != width * 4 || dest.bounds().Height() != height * 4) return paramErr;
    if (width == 0 || height == 0) return noErr;
    const CPixelsLock lockSource(source), lockDest(dest);
    if (const OSErr err = FirstOf(lockSource.Err(), lockDest.Err()); Failed(err)) return err;

    const auto widthL = static_cast<std::size_t>(width);
    i_vertical.resize(widthL);
    i_busy.resize(widthL);
    const int top = source.bounds().top, last = source.bounds().bottom - 1;
    for (int y = top; y <= last; ++y)
        ScaleRow(source.Row32(std::max(y - 1, top)).data(), source.Row32(y).data(),
                 source.Row32(std::min(y + 1, last)).data(), widthL,
                 dest.Row32(dest.bounds().top + (y - top) * 4).data(), dest.rowBytes() / sizeof(Pixel32));
    return noErr;
}
