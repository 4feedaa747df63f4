#include "Graphics/PixelCopy.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "Core/Assertions.h"
#include "Graphics/COffscreen.h"

namespace {

/** One axis of a scaled copy: which source coordinate each destination coordinate takes. */
struct Axis {
    int first = 0;            // destination coordinate of taken[0]
    std::vector<int> taken;   // source coordinates, all inside the source
    bool straightB = false;   // they go up by one
};

/** `from`/`to` are the ends of the rectangles on this axis, `source`/`dest` those of the buffers. */
struct Ends {
    int low, high;
};
Axis MakeAxis(Ends from, Ends to, Ends source, Ends dest) {
    Axis axis;
    const long fromL = from.high - from.low, toL = to.high - to.low;
    axis.straightB = fromL == toL;
    for (int at = std::max(to.low, dest.low); at < std::min(to.high, dest.high); ++at) {
        const int taken = from.low + static_cast<int>((at - to.low) * fromL / toL);
        if (taken >= source.high) break;
        if (taken < source.low) continue;
        if (axis.taken.empty()) axis.first = at;
        axis.taken.push_back(taken);
    }
    return axis;
}

struct Plan {
    Axis across, down;
    [[nodiscard]] bool Empty() const { return across.taken.empty() || down.taken.empty(); }
};
Plan MakePlan(const CPixels& source, const CPixels& dest, const Rect& from, const Rect& to) {
    if (from.Empty() || to.Empty()) return {};
    const Rect &s = source.bounds(), &d = dest.bounds();
    return {MakeAxis({from.left, from.right}, {to.left, to.right}, {s.left, s.right}, {d.left, d.right}),
            MakeAxis({from.top, from.bottom}, {to.top, to.bottom}, {s.top, s.bottom}, {d.top, d.bottom})};
}

/** Whole bytes of depth 4 to pixels, two at a time; `column` counts from the source's left bound. */
void Expand4(const CPixels& source, const std::uint8_t* rowP, std::size_t column, std::span<Pixel32> out) {
    std::size_t n = 0;
    if (column % 2 != 0 && !out.empty()) out[n++] = source.Palette()[rowP[column / 2] & 15];
    const CPixels::PairTable& pairs = source.Pairs();
    const std::uint8_t* bytesP = rowP + (column + n) / 2;
    for (; n + 2 <= out.size(); n += 2) std::memcpy(&out[n], pairs[*bytesP++].data(), 2 * sizeof(Pixel32));
    if (n < out.size()) out[n] = source.Palette()[*bytesP >> 4];
}

/** The pixels that one destination row takes, as depth 32. */
void Gather32(const CPixels& source, const Axis& across, int y, std::span<Pixel32> out) {
    const auto column = static_cast<std::size_t>(across.taken.front() - source.bounds().left);
    if (source.depth() == 4) {
        if (across.straightB) return Expand4(source, source.Row(y), column, out);
        for (std::size_t n = 0; n < out.size(); ++n) out[n] = source.Palette()[source.IndexAt(across.taken[n], y)];
        return;
    }
    const std::span<const Pixel32> row = source.Row32(y);
    if (across.straightB) {
        std::ranges::copy(row.subspan(column, out.size()), out.begin());
        return;
    }
    for (std::size_t n = 0; n < out.size(); ++n)
        out[n] = row[static_cast<std::size_t>(across.taken[n] - source.bounds().left)];
}

Pixel32 Blend(Pixel32 above, Pixel32 below, unsigned factor256) {
    const auto byte = [](Pixel32 pixel, unsigned shift) { return pixel >> shift & 0xFFU; };
    const unsigned cover = byte(above, 24) * factor256;   // up to 255 * 256
    Pixel32 out = 0;
    for (unsigned shift = 0; shift < 32; shift += 8) {
        const unsigned sum =
            byte(above, shift) * factor256 + (byte(below, shift) * (255 * 256 - cover) + 127) / 255 + 128;
        out |= std::min(255U, sum / 256) << shift;
    }
    return out;
}

/** Every destination row of depth 32, through `put(new pixel, old pixel)`. */
template <typename Put>
void Write32(const CPixels& source, CPixels& dest, const Plan& plan, Put put) {
    std::vector<Pixel32> line(plan.across.taken.size());
    const auto left = static_cast<std::size_t>(plan.across.first - dest.bounds().left);
    int lastY = std::numeric_limits<int>::min();
    for (std::size_t n = 0; n < plan.down.taken.size(); ++n) {
        if (plan.down.taken[n] != lastY) Gather32(source, plan.across, plan.down.taken[n], line);
        lastY = plan.down.taken[n];
        const std::span<Pixel32> row = dest.Row32(plan.down.first + static_cast<int>(n)).subspan(left, line.size());
        put(line, row);
    }
}

/** What a copy of that mode leaves out. */
std::optional<RGBColor> LeftOut(const CPixels& source, CopyMode mode) {
    return mode == CopyMode::kTransparent ? source.Transparent() : std::nullopt;
}

void Copy4(const CPixels& source, CPixels& dest, const Plan& plan) {
    const bool bytesB = plan.across.straightB && plan.across.taken.size() % 2 == 0 &&
                        (plan.across.taken.front() - source.bounds().left) % 2 == 0 &&
                        (plan.across.first - dest.bounds().left) % 2 == 0;
    const auto left = static_cast<std::size_t>(plan.across.first - dest.bounds().left);
    const auto fromLeft = static_cast<std::size_t>(plan.across.taken.front() - source.bounds().left);
    for (std::size_t n = 0; n < plan.down.taken.size(); ++n) {
        std::uint8_t* rowP = dest.Row(plan.down.first + static_cast<int>(n));
        if (bytesB) {
            std::memcpy(rowP + left / 2, source.Row(plan.down.taken[n]) + fromLeft / 2, plan.across.taken.size() / 2);
            continue;
        }
        for (std::size_t x = 0; x < plan.across.taken.size(); ++x) {
            const unsigned index = source.IndexAt(plan.across.taken[x], plan.down.taken[n]);
            std::uint8_t& both = rowP[(left + x) / 2];
            both =
                static_cast<std::uint8_t>((left + x) % 2 == 0 ? (both & 0x0FU) | index << 4 : (both & 0xF0U) | index);
        }
    }
}

void CopyF(const CPixels& source, CPixels& dest, const Plan& plan) {
    for (std::size_t n = 0; n < plan.down.taken.size(); ++n) {
        const std::span<const PixelF> from = source.RowF(plan.down.taken[n]);
        const std::span<PixelF> to = dest.RowF(plan.down.first + static_cast<int>(n))
                                         .subspan(static_cast<std::size_t>(plan.across.first - dest.bounds().left));
        for (std::size_t x = 0; x < plan.across.taken.size(); ++x)
            to[x] = from[static_cast<std::size_t>(plan.across.taken[x] - source.bounds().left)];
    }
}

/** The source, or a copy of the part in use when both are one memory: rows must not be read after they were written. */
const CPixels* Apart(const CPixels& source, const CPixels& dest, const Rect& from, COffscreen& copy, OSErr& err) {
    err = noErr;
    if (source.base() != dest.base()) return &source;
    const Rect part = Intersect(from, source.bounds());
    if (part.Empty()) return &source;
    err = copy.Create(part, source.depth(), &source);
    if (!Failed(err)) err = CopyPixels(source, copy, part, part);
    return &copy;
}

}   // namespace

OSErr CopyPixels(const CPixels& source, CPixels& dest, const Rect& from, const Rect& to, CopyMode mode) {
    return CopyPixels(source, dest, from, to, LeftOut(source, mode));
}

OSErr CopyPixels(const CPixels& source, CPixels& dest, const Rect& from, const Rect& to,
                 const std::optional<RGBColor>& leftOut) {
    if (dest.depth() == 4 || dest.depth() == 128) {
        if (!AssertWords(source.depth() == dest.depth(), "depth() == destP->depth()")) return paramErr;
    } else {
        if (!AssertWords(dest.depth() == 32, "destP->depth() == 32")) return paramErr;
        if (!AssertWords(source.depth() == 4 || source.depth() == 32, "depth() == 4")) return paramErr;
    }
    const CPixelsLock lockSource(source), lockDest(dest);
    if (const OSErr err = FirstOf(lockSource.Err(), lockDest.Err()); Failed(err)) return err;

    COffscreen copy;
    OSErr err = noErr;
    const CPixels& source2 = *Apart(source, dest, from, copy, err);
    if (Failed(err)) return err;
    const Plan plan = MakePlan(source2, dest, from, to);
    if (plan.Empty()) return noErr;

    if (dest.depth() == 4) {
        Copy4(source2, dest, plan);
    } else if (dest.depth() == 128) {
        CopyF(source2, dest, plan);
    } else if (leftOut) {
        const Pixel32 out = PackColor(*leftOut) & 0xFFFFFFU;
        Write32(source2, dest, plan, [out](std::span<const Pixel32> line, std::span<Pixel32> row) {
            for (std::size_t x = 0; x < line.size(); ++x)
                if ((line[x] & 0xFFFFFFU) != out) row[x] = line[x];
        });
    } else {
        Write32(source2, dest, plan, [](std::span<const Pixel32> line, std::span<Pixel32> row) {
            std::memcpy(row.data(), line.data(), line.size_bytes());
        });
    }
    return noErr;
}

OSErr CopyPixelsAlpha(const CPixels& source, CPixels& dest, const Rect& from, const Rect& to, float alpha,
                      CopyMode mode) {
    return CopyPixelsAlpha(source, dest, from, to, alpha, LeftOut(source, mode));
}

OSErr CopyPixelsAlpha(const CPixels& source, CPixels& dest, const Rect& from, const Rect& to, float alpha,
                      const std::optional<RGBColor>& leftOut) {
    if (!AssertWords(dest.depth() == 32, "destP->depth() == 32")) return paramErr;
    if (!AssertWords(source.depth() == 4 || source.depth() == 32, "depth() == 4")) return paramErr;
    if (!(alpha >= 0.0F)) return noErr;   // nothing to see, and not a number is nothing too
    const auto factor = static_cast<unsigned>(std::lround(std::min(alpha, 1.0F) * 256.0F));
    const CPixelsLock lockSource(source), lockDest(dest);
    if (const OSErr err = FirstOf(lockSource.Err(), lockDest.Err()); Failed(err)) return err;

    COffscreen copy;
    OSErr err = noErr;
    const CPixels& source2 = *Apart(source, dest, from, copy, err);
    if (Failed(err)) return err;
    const Plan plan = MakePlan(source2, dest, from, to);
    if (plan.Empty()) return noErr;
    const Pixel32 out = leftOut ? PackColor(*leftOut) & 0xFFFFFFU : 0;
    Write32(source2, dest, plan, [&](std::span<const Pixel32> line, std::span<Pixel32> row) {
        for (std::size_t x = 0; x < line.size(); ++x)
            if (!leftOut || (line[x] & 0xFFFFFFU) != out) row[x] = Blend(line[x], row[x], factor);
    });
    return noErr;
}
