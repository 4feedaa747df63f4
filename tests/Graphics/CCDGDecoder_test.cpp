#include "Graphics/CCDGDecoder.h"

#include <functional>

#include "Graphics/SlowCDG.h"

namespace {
/** A decoder with planes of its own; rows are longer than they must be, and what lies beside them must stay. */
struct Picture {
    static constexpr std::size_t kRow = 160, kRowPixels = 304;
    static constexpr std::uint8_t kBeside = 0x5A;
    std::vector<std::uint8_t> index = std::vector<std::uint8_t>(kRow * 216, kBeside), scratch = index;
    std::vector<std::uint32_t> shown = std::vector<std::uint32_t>(kRowPixels * 216, 0x12345678);
    CDGPlane plane{index.data(), kRow};
    CDGTrueColor target{shown.data(), kRowPixels};
    CCDGDecoder decoder;

    explicit Picture(std::uint16_t mask = 0xFFFF) : decoder(plane, {scratch.data(), kRow}, mask) {}

    void Run(std::span<const SubCodePacket> packets) {
        decoder.Execute(packets);
        if (!decoder.Update(target, false).Empty()) decoder.ClearDirty();
    }
    void Run(const SubCodePacket& packet) { Run({&packet, 1}); }

    std::vector<std::uint32_t> Shown() const {
        std::vector<std::uint32_t> pixels;
        for (std::size_t y = 0; y < 216; ++y)
            pixels.insert(pixels.end(), shown.begin() + static_cast<long>(y * kRowPixels),
                          shown.begin() + static_cast<long>(y * kRowPixels + 300));
        return pixels;
    }
    std::vector<std::uint8_t> Indices() const {
        std::vector<std::uint8_t> pixels;
        for (std::size_t y = 0; y < 216; ++y)
            for (std::size_t x = 0; x < 300; ++x) pixels.push_back(plane.Pixel(x, y));
        return pixels;
    }
    bool BesideIsWhole() const {
        for (std::size_t y = 0; y < 216; ++y)
            for (std::size_t x = 150; x < kRow; ++x)
                if (index[y * kRow + x] != kBeside || scratch[y * kRow + x] != kBeside) return false;
        return true;
    }
};

SubCodePacket Packet(std::uint8_t instruction, std::initializer_list<int> data) {
    SubCodePacket packet;
    packet.bytes[0] = 9;
    packet.bytes[1] = instruction;
    std::size_t at = 4;
    for (const int byte : data) packet.bytes[at++] = static_cast<std::uint8_t>(byte);
    return packet;
}
const SubCodePacket kColors = Packet(30, {0x00, 0x00, 0x3C, 0x00, 0x03, 0x30, 0x00, 0x0F, 0x3F, 0x3F});

TEST(CCDGDecoder, AgreesWithOnePixelAtATimeLiveAndInHindsight) {
    for (unsigned seed = 1; seed <= 6; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const auto mask = static_cast<std::uint16_t>(seed % 3 == 0 ? random() : 0xFFFF);
        Picture live(mask);
        SlowCDG slow;
        slow.mask = mask;
        std::vector<SubCodePacket> all;
        for (int n = 0; n < 120; ++n) {
            all.push_back(RandomPacket(random, seed % 2 == 0));
            live.Run(all.back());
            slow.Run(all.back());
            ASSERT_EQ(live.Shown(), slow.Shown()) << "packet " << n << ", instruction " << +all.back().bytes[1];
        }
        ASSERT_EQ(live.Indices(), slow.pixels);
        ASSERT_TRUE(live.BesideIsWhole());
        Picture once(mask);
        once.Run(all);
        ASSERT_EQ(once.Shown(), slow.Shown());
        ASSERT_EQ(once.Indices(), slow.pixels);
    }
}

TEST(CCDGDecoder, AnySplitOfAStreamEndsInTheSamePicture) {
    std::mt19937 random(77);
    for (int round = 0; round < 25; ++round) {
        SCOPED_TRACE(round);
        std::vector<SubCodePacket> all(random() % 400);
        for (auto& packet : all) packet = RandomPacket(random);
        Picture once, split;
        SlowCDG slow;
        once.Run(all);
        for (std::span<const SubCodePacket> left(all); !left.empty();) {
            const std::size_t countL = std::min<std::size_t>(left.size(), random() % 40);
            split.Run(left.first(countL));
            left = left.subspan(countL);
        }
        for (const auto& packet : all) slow.Run(packet);
        ASSERT_EQ(once.Indices(), slow.pixels);
        ASSERT_EQ(split.Indices(), slow.pixels);
        ASSERT_EQ(once.Shown(), slow.Shown());
        ASSERT_EQ(split.Shown(), slow.Shown());
        ASSERT_EQ(once.decoder.Border(), split.decoder.Border());
    }
}

constexpr Rect kAll = kCDGPlane_Area, kNone{};
struct DirtyCase {
    const char* name;
    SubCodePacket packet;
    Rect dirty;
};
TEST(CCDGDecoder, MarksWhatChanged) {
    const DirtyCase cases[] = {
        {"memory preset", Packet(1, {3, 0}), kAll},
        {"its repeat", Packet(1, {3, 1}), kNone},
        {"high bits of the repeat count are noise", Packet(1, {3, 0x30}), kAll},
        {"border", Packet(2, {1}), kAll},
        {"the same border", Packet(2, {0x30}), kNone},
        {"first tile", Packet(6, {0, 1, 0, 0}), {0, 0, 12, 6}},
        {"last tile", Packet(38, {0, 1, 17, 49}), {204, 294, 216, 300}},
        {"row 18", Packet(6, {0, 1, 18, 0}), kNone},
        {"column 50", Packet(38, {0, 1, 0, 50}), kNone},
        {"channel 3 is masked", Packet(6, {0x00, 0x31, 1, 1}), kNone},
        {"offsets alone", Packet(24, {0, 5, 7}), kAll},
        {"transparent colour", Packet(28, {1, 2, 3}), kNone},
        {"colours", kColors, kAll},
        {"unknown", Packet(7, {1, 2, 3}), kNone},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Picture picture(1);
        picture.decoder.ClearDirty();
        picture.decoder.Execute({&c.packet, 1});
        EXPECT_EQ(picture.decoder.Dirty(), c.dirty);
        if (c.dirty == kNone) {
            EXPECT_EQ(picture.Indices(), std::vector<std::uint8_t>(300 * 216));
        }
    }
}

TEST(CCDGDecoder, RepaintsTheBorderOnlyWhenItsOwnColorChanged) {
    Picture picture;
    picture.Run(kColors);
    picture.Run(Packet(2, {1}));
    EXPECT_EQ(picture.shown[0], 0xFFFF0000U);
    picture.shown[0] = 1;   // a mark that only a repaint removes
    picture.Run(Packet(31, {0x3F, 0x3F}));
    EXPECT_EQ(picture.shown[0], 1U);
    picture.Run(kColors);
    EXPECT_EQ(picture.shown[0], 0xFFFF0000U);
}

TEST(CCDGDecoder, KeepsDirtWhichDoesNotShowYet) {
    Picture picture;
    picture.Run(kColors);
    EXPECT_TRUE(picture.decoder.Dirty().Empty());
    picture.Run(Packet(6, {1, 1, 0, 0}));   // under the border
    EXPECT_EQ(picture.decoder.Dirty(), (Rect{0, 0, 12, 6}));
}

TEST(CCDGDecoder, ShowsTheBorderColorBesideThePlane) {
    Picture picture;
    picture.Run(std::vector{kColors, Packet(1, {2, 0}), Packet(2, {1}), Packet(24, {0, 7, 15})});
    EXPECT_EQ(picture.shown[203 * Picture::kRowPixels + 100], 0xFFFF0000U);   // row 218 of the plane
    EXPECT_EQ(picture.shown[100 * Picture::kRowPixels + 293], 0xFFFF0000U);   // column 300
    EXPECT_EQ(picture.shown[100 * Picture::kRowPixels + 100], 0xFF00FF00U);
}

TEST(CCDGDecoder, WidensColors) {
    EXPECT_EQ(ReadCDGColor(0x3C, 0x00), (RGBColor{0xFFFF, 0, 0}));
    EXPECT_EQ(ReadCDGColor(0x03, 0x30), (RGBColor{0, 0xFFFF, 0}));
    EXPECT_EQ(ReadCDGColor(0xE9, 0xDA), (RGBColor{0xAAAA, 0x5555, 0xAAAA}));   // two high bits are noise
}
}   // namespace
