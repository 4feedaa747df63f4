#include "Widgets/XSeekBar.h"

#include <gtest/gtest.h>
#include <QtTest/QTest>

#include "Shell/XTransport.h"
#include "Widgets/QtApp.h"

namespace {

TEST(XSeekBar, PlacesAndTimesMeet) {
    EXPECT_EQ(XSeekBar::TimeAt(8, 416, 90'000), 0);
    EXPECT_EQ(XSeekBar::TimeAt(408, 416, 90'000), 90'000);
    EXPECT_EQ(XSeekBar::TimeAt(208, 416, 90'000), 45'000);
    EXPECT_EQ(XSeekBar::TimeAt(-50, 416, 90'000), 0);
    EXPECT_EQ(XSeekBar::TimeAt(5000, 416, 90'000), 90'000);
    EXPECT_EQ(XSeekBar::TimeAt(100, 10, 90'000), 0);   // no groove at all
    EXPECT_EQ(XSeekBar::TimeAt(100, 416, 0), 0);       // no song
    for (const long end300 : {1L, 300L, 54'321L, 3'240'000L, 2'000'000'000L})
        for (const int width : {40, 416, 1900})
            for (int x = 8; x <= width - 8; ++x) {
                const long time300 = XSeekBar::TimeAt(x, width, end300);
                ASSERT_TRUE(time300 >= 0 && time300 <= end300);
                if (end300 < width) continue;   // times are coarser than pixels
                ASSERT_EQ(XSeekBar::XOf(time300, width, end300), x) << end300 << " in " << width;
            }
}

TEST(XSeekBar, ADragSeeksOnceWhereItEndsAndIsNotPulledAway) {
    App();
    XSeekBar bar;
    bar.resize(416, 28);
    bar.SetTime300(0, 40'000);
    std::vector<long> sought, dragged;
    QObject::connect(&bar, &XSeekBar::SeekAsked, &bar, [&](long time300) { sought.push_back(time300); });
    QObject::connect(&bar, &XSeekBar::Dragged, &bar, [&](long time300) { dragged.push_back(time300); });
    QTest::mousePress(&bar, Qt::LeftButton, {}, {108, 14});
    QTest::mouseMove(&bar, {208, 14});
    bar.SetTime300(77, 40'000);   // the song goes on meanwhile
    EXPECT_EQ(bar.value(), 20'000);
    EXPECT_EQ(sought, std::vector<long>());
    QTest::mouseRelease(&bar, Qt::LeftButton, {}, {208, 14});
    EXPECT_EQ(sought, std::vector<long>{20'000});
    EXPECT_EQ(dragged.front(), 10'000);
    bar.SetTime300(77, 40'000);
    EXPECT_EQ(bar.value(), 77);
    QTest::mousePress(&bar, Qt::LeftButton, {}, {308, 14});
    bar.ForgetDrag();   // the next song began
    bar.SetTime300(5, 40'000);
    QTest::mouseMove(&bar, {208, 14});
    QTest::mouseRelease(&bar, Qt::LeftButton, {}, {208, 14});
    EXPECT_EQ(bar.value(), 5);
    bar.SetTime300(0, 0);
    QTest::mouseClick(&bar, Qt::LeftButton, {}, {208, 14});
    EXPECT_EQ(sought.size(), 1U);   // no song, no place
}

TEST(XTransport, ElapsedAndRemainingAreASong) {
    constexpr struct {
        long time300;
        const char* textZ;
    } kTexts[] = {{0, "0:00"},           {299, "0:00"},
                  {300, "0:01"},         {59 * 300, "0:59"},
                  {3599 * 300, "59:59"}, {3600 * 300, "1:00:00"},
                  {-1, "−0:01"},         {-300, "−0:01"},
                  {-301, "−0:02"},       {-3661 * 300, "−1:01:01"}};
    for (const auto& row : kTexts) EXPECT_EQ(XTransport::TimeText(row.time300).toStdString(), row.textZ) << row.time300;
    // They change in the same moment, and their sum is the song's whole length.
    for (long time300 = 0; time300 < 60 * 300; time300 += 7) {
        const auto seconds = [](const QString& text) {
            return text.section(':', 0, 0).remove(QChar(0x2212)).toInt() * 60 + text.section(':', 1).toInt();
        };
        ASSERT_EQ(seconds(XTransport::TimeText(time300)) + seconds(XTransport::TimeText(time300 - 60 * 300)), 60);
    }
}

}   // namespace
