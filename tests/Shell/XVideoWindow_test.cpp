#include "Shell/XVideoWindow.h"

#include <gtest/gtest.h>
#include <QtGui/QMouseEvent>
#include <QtGui/QScreen>
#include <random>

#include "Graphics/CG_Overlay.h"
#include "Graphics/CGraphicsPorts.h"
#include "Graphics/COffscreen.h"
#include "Widgets/QtApp.h"

namespace {

/** A picture of the size of a graphics disc's, as a song's. */
struct Picture final : CG_Overlay {
    Picture() : CG_Overlay("song: test") {
        std::mt19937 random(4);
        EXPECT_EQ(pixels.Create({0, 0, 216, 300}, 32), noErr);
        for (int y = 0; y < 216; ++y)
            for (Pixel32& pixel : pixels.Row32(y)) pixel = 0xFF000000U | static_cast<Pixel32>(random());
    }
    RGBColor Background() const override { return {0x1100, 0x2200, 0x3300}; }
    void Draw(CGraphicsPort& port) override { port.Draw(pixels, {}, TransferMode::kKeepTransparent, hole); }
    COffscreen pixels;
    std::optional<RGBColor> hole;
};

/** The largest difference of a component: the toolkit rounds a smooth scaling by where a paint begins. */
int Furthest(const QImage& a, const QImage& b) {
    int furthest = a.size() == b.size() ? 0 : 256;
    for (int y = 0; y < a.height() && furthest < 256; ++y)
        for (int x = 0; x < a.width(); ++x)
            for (unsigned shift = 0; shift < 24; shift += 8) {
                const int one = static_cast<int>(a.pixel(x, y) >> shift & 0xFFU);
                const int other = static_cast<int>(b.pixel(x, y) >> shift & 0xFFU);
                furthest = std::max(furthest, std::abs(one - other));
            }
    return furthest;
}

class XVideoWindowTest : public testing::Test {
protected:
    XVideoWindowTest() {
        i_window.SetOpen(true);
        i_window.Port().Add(i_picture, 0);
    }
    void Show(int width, int height) {
        i_window.resize(width, height);
        i_window.show();
        Settle();
    }
    static void Settle() {
        for (int n = 0; n < 5; ++n) QApplication::processEvents();
    }
    /** What stands in the window, and what a whole paint gives. */
    QImage Seen() {
        return i_window.screen()->grabWindow(i_window.winId()).toImage().convertToFormat(QImage::Format_RGB32);
    }
    QImage Whole() { return i_window.grab().toImage().convertToFormat(QImage::Format_RGB32); }

    QApplication& i_app = App();
    CGraphicsPorts i_ports;
    Picture i_picture;
    XVideoWindow i_window{0, i_ports};
};

TEST_F(XVideoWindowTest, EachPixelBecomesASquare) {
    Show(700, 432);   // 50 pixels of border on each side
    const QImage seen = Seen();
    ASSERT_EQ(seen.size(), QSize(700, 432));
    for (int y = 0; y < 432; ++y)
        for (int x = 0; x < 700; ++x) {
            const bool borderB = x < 50 || x >= 650;
            ASSERT_EQ(seen.pixel(x, y), borderB ? 0xFF112233U : i_picture.pixels.PixelAt((x - 50) / 2, y / 2))
                << x << ", " << y;
        }
}

TEST_F(XVideoWindowTest, APartIsPaintedAsAllOfItWouldBe) {
    std::mt19937 random(6);
    const int sizes[][2] = {{600, 432}, {517, 390}, {401, 700}, {200, 150}};
    for (const auto& size : sizes) {
        Show(size[0], size[1]);
        for (int round = 0; round < 8; ++round) {
            const Rect part = Intersect(i_picture.pixels.bounds(), MakeRect(static_cast<int>(random() % 300),
                                                                            static_cast<int>(random() % 216), 30, 24));
            ASSERT_EQ(i_picture.pixels.Fill32(part, 0xFF000000U | static_cast<Pixel32>(random())), noErr);
            i_window.Port().Refresh(PicturePart{part, i_picture.pixels.bounds()});
            const std::uint32_t redrawsL = i_window.Port().Redraws();
            Settle();
            ASSERT_EQ(i_window.Port().Redraws(), redrawsL + 1);
            ASSERT_LE(Furthest(Seen(), Whole()), 1) << size[0] << " x " << size[1] << ", round " << round;
        }
    }
}

TEST_F(XVideoWindowTest, TheColourThatIsLeftOutShowsTheBackground) {
    Show(300, 216);
    ASSERT_EQ(i_picture.pixels.Fill32({10, 10, 20, 20}, 0xFF445566), noErr);
    i_picture.hole = RGBColor{0x4444, 0x5555, 0x6666};
    i_window.Port().Refresh();
    Settle();
    EXPECT_EQ(Seen().pixel(15, 15), 0xFF112233U);
    EXPECT_EQ(Seen().pixel(25, 25), i_picture.pixels.PixelAt(25, 25));
}

/** The frame counts, once there is one. */
TEST_F(XVideoWindowTest, OnTheOnlyDisplayItLooksOutBehindTheOtherAndASecondOneStandsBesideIt) {
    const QWidget other;   // in the upper left corner, and in front
    const QRect area = other.screen()->availableGeometry();
    i_window.resize(300, 216);
    i_window.Place().SetNormalBeside(other);
    i_window.show();
    Settle();
    ASSERT_GT(i_window.frameGeometry().width(), i_window.width());
    EXPECT_EQ(i_window.geometry().size(), QSize(300, 216));
    EXPECT_EQ(i_window.frameGeometry().bottomRight(), area.bottomRight());
    for (const QRect first : {QRect(area.right() - 310, 40, 300, 216), QRect(20, 20, area.width() - 40, 216),
                              QRect(10, 10, area.width() - 20, area.height() - 20)}) {
        i_window.Place().SetNormal(first);
        Settle();
        XVideoWindow second(9, i_ports);
        second.Place().SetNormalNextTo(i_window, other);
        second.show();
        Settle();
        EXPECT_TRUE(area.contains(second.frameGeometry())) << first.width();
        const bool roomB = first.height() < area.height() - 20;
        EXPECT_EQ(second.frameGeometry().intersects(i_window.frameGeometry()), !roomB) << first.width();
        EXPECT_GE(second.width(), 240);
    }
}

TEST_F(XVideoWindowTest, ADoubleClickChangesTheFullScreen) {
    Show(300, 216);
    const QRect before = i_window.Place().Normal();
    const QRect display = i_window.screen()->geometry();
    i_window.SetFullScreen(true);
    EXPECT_TRUE(i_window.IsFullScreen());
    EXPECT_EQ(i_window.geometry(), display);
    EXPECT_EQ(i_window.Place().Normal(), before) << "the place as a window is remembered";
    i_window.SetFullScreen(false);
    EXPECT_FALSE(i_window.IsFullScreen());
    EXPECT_EQ(i_window.geometry(), before);
    QMouseEvent click(QEvent::MouseButtonDblClick, QPointF(5, 5), QPointF(5, 5), Qt::LeftButton, Qt::LeftButton,
                      Qt::NoModifier);
    QApplication::sendEvent(&i_window, &click);
    EXPECT_TRUE(i_window.IsFullScreen());
    i_window.SetAlwaysOnTop(true);
    EXPECT_TRUE(i_window.isVisible()) << "the room must not see it go";
    EXPECT_TRUE(i_window.IsFullScreen());
}

TEST_F(XVideoWindowTest, APlaceThatNobodySeesIsKeptUntilTheUserMovesTheWindow) {
    Show(300, 216);
    CWindowPlace& place = i_window.Place();
    const QRect away(9000, 9000, 320, 240);
    place.SetNormal(away);
    Settle();
    EXPECT_TRUE(i_window.screen()->availableGeometry().contains(i_window.geometry().center()));
    EXPECT_EQ(i_window.size(), away.size());
    EXPECT_EQ(place.Normal(), away);
    i_window.setGeometry(20, 30, 310, 230);
    EXPECT_EQ(place.Normal(), QRect(20, 30, 310, 230));
    const QRect huge(40, 50, 90000, 300);   // from a larger display
    place.SetNormal(huge);
    EXPECT_TRUE(i_window.screen()->availableGeometry().contains(i_window.frameGeometry()));
    EXPECT_EQ(i_window.frameGeometry().left(), 0);
    EXPECT_EQ(i_window.geometry().top(), 50);
    EXPECT_EQ(place.Normal(), huge);
}

TEST_F(XVideoWindowTest, AFullScreenOnADisplayThatIsNotThereWaits) {
    Show(300, 216);
    CWindowPlace& place = i_window.Place();
    place.ChooseDisplay("beamer");
    place.RestoreFullScreen();
    EXPECT_FALSE(place.IsFullScreen());
    EXPECT_TRUE(place.WantsFullScreen());
    EXPECT_EQ(place.KeptDisplay(), "beamer");
    place.SetFullScreen(true);   // the user does not wait for it
    EXPECT_TRUE(place.IsFullScreen());
    place.SetFullScreen(false);
    EXPECT_FALSE(place.WantsFullScreen());
    EXPECT_EQ(place.KeptDisplay(), "beamer");
}

TEST_F(XVideoWindowTest, ASecondWindowPlaysOnlyWhileItIsOpen) {
    XVideoWindow second(9, i_ports);
    EXPECT_EQ(i_ports.Port(9), nullptr);
    second.SetOpen(true);
    EXPECT_EQ(i_ports.Port(9), &second.Port());
    second.Hide();
    EXPECT_EQ(i_ports.Port(9), &second.Port());
    second.SetOpen(false);
    EXPECT_EQ(i_ports.Port(9), nullptr);
}

}   // namespace
