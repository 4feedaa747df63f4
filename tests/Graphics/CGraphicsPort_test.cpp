#include "Graphics/CGraphicsPort.h"

#include <cmath>
#include <fstream>
#include <random>
#include <sstream>

#include "Core/Assertions.h"
#include "Core/CLog.h"
#include "Graphics/CArtworkPort.h"
#include "Graphics/CGraphicsPorts.h"
#include "Graphics/CMediaOverlay.h"
#include "Graphics/COffscreen.h"
#include "Graphics/CPortContext_Offscreen.h"
#include "Graphics/PortTest.h"

namespace {

/** The faults and the log lines of a test. */
class PortTest : public testing::Test {
protected:
    void SetUp() override {
        SetAssertHandler([](const char* textZ, const char*, long, bool) {
            s_faults.emplace_back(textZ);
            return true;
        });
        s_faults.clear();
        std::string pattern = (std::filesystem::temp_directory_path() / "ports-XXXXXX").string();
        i_folder = ::mkdtemp(pattern.data());
        CLog::Get().SetFile(i_folder / "log.txt");
        CLog::Get().SetLive(true);
        CLog::Get().SetSwitch(LogSwitch::kLogging, true);
    }
    void TearDown() override {
        CLog::Get().SetFile({});
        CLog::Get().SetLive(false);
        SetAssertHandler(nullptr);
        std::filesystem::remove_all(i_folder);
    }
    std::string LogText() const {
        std::stringstream all;
        all << std::ifstream(i_folder / "log.txt").rdbuf();
        return all.str();
    }
    static inline std::vector<std::string> s_faults;
    std::filesystem::path i_folder;
};

/** A song that nobody asks anything: overlays only tell whose they are. */
CGraphicsSong& AnySong() {
    alignas(16) static char s_bytes[16];
    return *reinterpret_cast<CGraphicsSong*>(s_bytes);
}

struct Layer final : CG_Overlay {
    explicit Layer(const char* nameZ, bool songB = false) : CG_Overlay(nameZ), songP(songB ? &AnySong() : nullptr) {}
    CGraphicsSong* Song() const override { return songP; }
    RGBColor Background() const override { return background; }
    void Draw(CGraphicsPort& port) override {
        if (pictureP != nullptr) port.Draw(*pictureP, place, mode, hole);
    }
    std::optional<Rect> Frame() const override { return frame; }
    CGraphicsSong* songP;
    RGBColor background;
    const CPixels* pictureP = nullptr;
    std::optional<Rect> place, frame;
    TransferMode mode = TransferMode::kCopy;
    std::optional<RGBColor> hole;
};

using Names = std::vector<std::string>;

TEST_F(PortTest, WhereAnOverlayGoes) {
    const struct {
        std::size_t countL;
        short indexS;
        int at;   // -1: a fault
    } cases[] = {{0, 0, 0},  {0, -1, 0}, {0, -2, -1}, {0, 1, -1},     {1, -2, 0},
                 {1, -1, 1}, {3, 0, 0},  {3, 3, 3},   {3, 4, -1},     {3, -1, 3},
                 {3, -2, 2}, {3, -4, 0}, {3, -5, -1}, {2, 32767, -1}, {2, -32768, -1}};
    for (const auto& c : cases) {
        Layer layers[] = {Layer("a"), Layer("b"), Layer("c")}, added("new");
        Screen screen(0);
        Names expected;
        for (std::size_t n = 0; n < c.countL; ++n) {
            screen.port.Add(layers[n], -1);
            expected.push_back(layers[n].Name());
        }
        s_faults.clear();
        screen.port.Add(added, c.indexS);
        if (c.at < 0) {
            EXPECT_EQ(s_faults, Names{"indexS >= 0 && indexS <= (short)i_overlayVec.size()"}) << c.indexS;
        } else {
            expected.insert(expected.begin() + c.at, "new");
            EXPECT_TRUE(s_faults.empty());
        }
        EXPECT_EQ(screen.port.OverlayNames(), expected) << c.countL << ", " << c.indexS;
        EXPECT_EQ(added.Ports().size(), c.at < 0 ? 0U : 1U);
    }
}

TEST_F(PortTest, ASecondSongTakesThePlaceOfTheFirst) {
    Screen screen(0, nullptr, "Test");
    Layer below("camera"), first("song: One", true), second("song: Two", true), above("messenger");
    screen.port.Add(below, 0);
    screen.port.Add(first, 1);
    screen.port.Add(above, -1);
    EXPECT_EQ(screen.port.Source(), &first);
    screen.port.Add(second, 1);
    EXPECT_EQ(screen.port.OverlayNames(), (Names{"camera", "song: Two", "messenger"}));
    EXPECT_EQ(screen.port.Source(), &second);
    EXPECT_TRUE(first.Ports().empty());
    EXPECT_TRUE(s_faults.empty());
    EXPECT_NE(LogText().find("$$$$$$ double overlay\nremoving overlay <song: One> from <Test>\n"), std::string::npos);
    EXPECT_NE(LogText().find("adding overlay <song: Two> to <Test>\n-------------------\nTest overlays:\n"
                             "-->overlay <camera>\n-->overlay <song: Two>\n-->overlay <messenger>\n"
                             "-------------------\n"),
              std::string::npos);
    screen.port.Add(above, -1);
    EXPECT_EQ(s_faults, Names{"it != i_portVec.end()"});
    screen.port.Remove(second);
    EXPECT_EQ(screen.port.Source(), nullptr);
}

TEST_F(PortTest, WhoeverGoesFirstIsForgotten) {
    auto layer = std::make_unique<Layer>("a");
    Screen stays(0);
    {
        Screen goes(9);
        stays.port.Add(*layer, 0);
        goes.port.Add(*layer, 0);
        EXPECT_EQ(layer->Ports().size(), 2U);
    }
    EXPECT_EQ(layer->Ports(), std::vector<CGraphicsPort*>{&stays.port});
    layer.reset();
    EXPECT_TRUE(stays.port.OverlayNames().empty());
    EXPECT_NE(LogText().find("creating overlay <a>\n"), std::string::npos);
    EXPECT_NE(LogText().find("deleting overlay <a>\n"), std::string::npos);
}

constexpr RGBColor kBorder{0x1200, 0x3400, 0x5600};

TEST_F(PortTest, TheBackgroundOfEachKindOfPort) {
    const struct {
        float opacityF;
        bool transparentB, songB;
        Pixel32 context, plain;   // all pixels of an offscreen with and without a context
        Pixel32 view;
        std::uint8_t viewAlpha;
    } cases[] = {
        {1, false, false, 0xFF000000, 0xFF000000, 0, 255}, {1, false, true, 0xFF123456, 0xFF123456, 0x123456, 255},
        {1, true, true, 0xFF000000, 0xFF000000, 0, 0},     {0.5F, false, true, 0xFFFF0080, 0xFF000000, 0, 0},
        {0.5F, true, false, 0xFFFF0080, 0xFF000000, 0, 0},
    };
    for (const auto& c : cases) {
        Layer song("song: any", true);
        song.background = kBorder;
        COffscreen pixels, plainPixels;
        ASSERT_EQ(pixels.Create({0, 0, 9, 7}, 32), noErr);
        ASSERT_EQ(plainPixels.Create({-2, 5, 9, 11}, 32), noErr);
        CPortContext_Offscreen context(pixels);
        CGraphicsPort port(-1, pixels, &context), plain(-1, plainPixels, nullptr);
        Screen screen(0);
        for (CGraphicsPort* const portP : {&port, &plain, &screen.port}) {
            if (c.songB) portP->Add(song, 0);
            portP->SetOpacity(c.opacityF);
            portP->SetTransparent(c.transparentB);
            portP->Redraw();
            EXPECT_EQ(portP->Redraws(), 1U);
        }
        for (int y = -2; y < 9; ++y)
            for (int x = 0; x < 11; ++x) {
                if (pixels.bounds().Contains(x, y)) {
                    ASSERT_EQ(pixels.PixelAt(x, y), c.context) << c.opacityF;
                }
                if (plainPixels.bounds().Contains(x, y)) {
                    ASSERT_EQ(plainPixels.PixelAt(x, y), c.plain) << c.opacityF;
                }
            }
        ASSERT_EQ(screen.fills.size(), 1U);
        EXPECT_EQ(screen.fills[0].rect, screen.bounds);
        EXPECT_EQ(screen.fills[0].color & 0xFFFFFFU, c.view);
        EXPECT_EQ(screen.fills[0].alpha, c.viewAlpha);
    }
}

TEST_F(PortTest, FitsTheFrame) {
    const struct {
        Rect frame, rect, fitted;
    } cases[] = {
        {MakeRect(0, 0, 300, 216), MakeRect(0, 0, 1200, 600), MakeRect(184, 0, 833, 600)},
        {MakeRect(0, 0, 300, 216), MakeRect(10, 20, 1200, 600), MakeRect(194, 20, 833, 600)},
        {MakeRect(0, 0, 300, 216), MakeRect(0, 0, 1920, 1080), MakeRect(210, 0, 1500, 1080)},
        {MakeRect(0, 0, 300, 216), MakeRect(0, 0, 600, 432), MakeRect(0, 0, 600, 432)},
        {MakeRect(0, 0, 300, 216), MakeRect(5, 5, 400, 1000), MakeRect(5, 361, 400, 288)},
        {MakeRect(0, 0, 1920, 1080), MakeRect(0, 0, 100, 75), MakeRect(0, 10, 100, 56)},   // 56.25; half of 19 is 10
        {MakeRect(0, 0, 16, 9), MakeRect(0, 0, 1, 1), MakeRect(0, 0, 1, 1)},
        {MakeRect(0, 0, 300, 216), Rect{}, Rect{}},
    };
    for (const auto& c : cases) {
        Screen screen(0);
        Layer movie("movie");
        movie.frame = c.frame;
        screen.port.Add(movie, 0);
        Rect rect = c.rect;
        screen.port.Fit(rect);
        EXPECT_EQ(rect, c.fitted) << c.rect.Width() << " x " << c.rect.Height();
    }
    Screen screen(0);
    EXPECT_EQ(screen.port.Frame(), (Rect{0, 0, 216, 300}));
    screen.port.SetFrameShape(FrameShape::k4x3);
    EXPECT_EQ(screen.port.Frame(), (Rect{0, 0, 216, 288}));
    screen.port.SetFrameShape(FrameShape::k16x9);
    EXPECT_EQ(screen.port.Frame(), (Rect{0, 0, 216, 384}));
}

/** A stack of pictures with holes, against one pixel at a time. */
TEST_F(PortTest, LayersLieInTheirOrder) {
    std::mt19937 random(5);
    for (int round = 0; round < 60; ++round) {
        COffscreen pixels;
        const int width = 20 + static_cast<int>(random() % 40), height = 20 + static_cast<int>(random() % 40);
        ASSERT_EQ(pixels.Create(MakeRect(0, 0, width, height), 32), noErr);
        CPortContext_Offscreen context(pixels);
        CGraphicsPort port(-1, pixels, &context);
        std::vector<Pixel32> slow(static_cast<std::size_t>(width * height), 0xFF000000);
        std::vector<std::unique_ptr<COffscreen>> pictures;
        std::vector<std::unique_ptr<Layer>> layers;
        for (int n = 0; n < 3; ++n) {
            OSErr err = noErr;
            auto picture = COffscreen::Make(
                MakeRect(0, 0, 1 + static_cast<int>(random() % 9), 1 + static_cast<int>(random() % 9)), 32, err);
            for (int y = 0; y < picture->bounds().bottom; ++y)
                for (Pixel32& pixel : picture->Row32(y))
                    pixel = 0xFF000000U | (random() % 3 == 0 ? 0xABCDEFU : random() & 0xFFFFFFU);
            auto layer = std::make_unique<Layer>("layer");
            layer->pictureP = picture.get();
            layer->hole = RGBColor{0xABAB, 0xCDCD, 0xEFEF};
            layer->mode = random() % 2 != 0 ? TransferMode::kKeepTransparent : TransferMode::kCopy;
            layer->place = MakeRect(static_cast<int>(random() % 30) - 10, static_cast<int>(random() % 30) - 10,
                                    static_cast<int>(random() % 50), static_cast<int>(random() % 50));
            const Rect& to = *layer->place;
            for (int y = 0; y < height; ++y)
                for (int x = 0; x < width; ++x) {
                    if (!to.Contains(x, y)) continue;
                    const Pixel32 pixel = picture->PixelAt((x - to.left) * picture->bounds().Width() / to.Width(),
                                                           (y - to.top) * picture->bounds().Height() / to.Height());
                    if (layer->mode == TransferMode::kKeepTransparent && pixel == 0xFFABCDEFU) continue;
                    slow[static_cast<std::size_t>(y * width + x)] = pixel;
                }
            port.Add(*layer, -1);
            pictures.push_back(std::move(picture));
            layers.push_back(std::move(layer));
        }
        port.Redraw();
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                ASSERT_EQ(pixels.PixelAt(x, y), slow[static_cast<std::size_t>(y * width + x)])
                    << round << ": " << x << ", " << y;
    }
}

/** The area to paint again holds every pixel of the window that a smooth scaling takes from the part that changed. */
TEST_F(PortTest, APartOfThePictureIsFoundInTheWindow) {
    std::mt19937 random(11);
    for (int round = 0; round < 400; ++round) {
        Screen screen(0);
        screen.bounds = MakeRect(0, 0, 40 + static_cast<int>(random() % 900), 40 + static_cast<int>(random() % 700));
        const Rect whole = MakeRect(0, 0, 300, 216);
        const int left = static_cast<int>(random() % 300), top = static_cast<int>(random() % 216);
        const Rect part = Intersect(
            whole, MakeRect(left, top, 1 + static_cast<int>(random() % 60), 1 + static_cast<int>(random() % 60)));
        screen.port.Refresh(PicturePart{part, whole});
        const Rect area = screen.invalid, place = screen.port.Place();
        const auto touches = [](int at, int from, int size, int wholeSize, int low, int high) {
            const double source = (at - from + 0.5) * wholeSize / size - 0.5;
            const int first = static_cast<int>(std::floor(source));
            return first + 1 >= low && first < high;
        };
        for (int x = place.left; x < place.right; ++x)
            if (touches(x, place.left, place.Width(), 300, part.left, part.right)) {
                ASSERT_TRUE(x >= area.left && x < area.right) << x << " of " << place.Width();
            }
        for (int y = place.top; y < place.bottom; ++y)
            if (touches(y, place.top, place.Height(), 216, part.top, part.bottom)) {
                ASSERT_TRUE(y >= area.top && y < area.bottom) << y << " of " << place.Height();
            }
        EXPECT_LE(area.Width(), (part.Width() + 2) * place.Width() / 300 + 2);
        EXPECT_LE(area.Height(), (part.Height() + 2) * place.Height() / 216 + 2);
    }
    Screen screen(0), pane(1);
    screen.port.Refresh();
    EXPECT_EQ(screen.invalid, screen.bounds);
    pane.port.Refresh();
    EXPECT_EQ(pane.refreshesL, 0) << "only the video windows' ports invalidate";
}

TEST_F(PortTest, ASongGetsOnAllScreens) {
    CGraphicsPorts ports;
    Screen video(0), preview(1), second(9);
    ports.Enter(video.port);
    ports.Enter(preview.port);
    EXPECT_EQ(ports.Port(9), nullptr);
    for (const int none : {-1, 2, 8, 10, 4096}) EXPECT_EQ(ports.Port(none), nullptr);
    EXPECT_EQ(ports.WireUp(nullptr, nullptr), fnfErr);

    Layer about("about");
    video.port.Add(about, -1);
    int drawnL = 0;
    auto media = std::make_unique<CMediaOverlay>(AnySong(), [&drawnL](CGraphicsPort&) { ++drawnL; });
    ASSERT_EQ(ports.WireUp(media.get(), nullptr), noErr);
    EXPECT_EQ(video.port.OverlayNames(), (Names{"mediastream", "about"}));
    EXPECT_EQ(video.port.Under(), 0);
    ports.Enter(second.port);
    EXPECT_EQ(second.port.OverlayNames(), Names{"mediastream"}) << "what the others show of the song, and that alone";
    video.port.Redraw();
    EXPECT_EQ(drawnL, 1);
    ports.Unwire(*media);
    EXPECT_TRUE(media->Ports().empty());
    ports.Leave(second.port);
    EXPECT_EQ(ports.Port(9), nullptr);
    ports.Leave(second.port);
    EXPECT_TRUE(s_faults.empty());
}

TEST_F(PortTest, ABackdropShowsOnlyWithoutASong) {
    CGraphicsPorts ports;
    Screen screen(0);
    COffscreen pixels;
    ASSERT_EQ(pixels.Create({0, 0, 10, 10}, 32), noErr);
    Layer backdrop("break"), song("song: S", true);
    backdrop.pictureP = &pixels;
    ports.SetBackdrop(&backdrop);
    ports.Enter(screen.port);
    screen.port.Redraw();
    EXPECT_EQ(screen.pictureP, &pixels);
    EXPECT_TRUE(screen.port.OverlayNames().empty());
    screen.port.Add(song, 0);
    screen.pictureP = nullptr;
    screen.port.Redraw();
    EXPECT_EQ(screen.pictureP, nullptr);
    screen.refreshesL = 0;
    screen.port.Remove(song);
    EXPECT_GT(screen.refreshesL, 0) << "the picture of the break comes back by itself";
    ports.Leave(screen.port);
    screen.pictureP = nullptr;
    screen.port.Redraw();
    EXPECT_EQ(screen.pictureP, nullptr) << "who left is not told when it goes";
}

TEST_F(PortTest, AScopeHoldsThePreviewBack) {
    struct Pane final : CPortView {
        int refreshesL = 0, paintsL = 0;
        Rect Bounds() const override { return {0, 0, 216, 300}; }
        void Invalidate(const Rect&) override { ++refreshesL; }
        void PaintNow() override { ++paintsL; }
        CPortContext* Context() override { return nullptr; }
    } pane;
    CArtworkPort port(pane);
    {
        const CArtworkPort::ScSkipForecedUpdate outer(port);
        {
            const CArtworkPort::ScSkipForecedUpdate inner(port);
            port.Refresh();
            port.Refresh();
            port.Flush();
        }
        EXPECT_EQ(pane.refreshesL + pane.paintsL, 0);
    }
    EXPECT_EQ(pane.refreshesL, 1);
    port.Flush();
    EXPECT_EQ(pane.paintsL, 1);
    port.SetEnabled(false);
    port.Refresh();
    port.Flush();
    EXPECT_EQ(pane.refreshesL + pane.paintsL, 2);
    port.SetEnabled(true);
    EXPECT_EQ(pane.refreshesL, 2);
}

}   // namespace
