#include "windows/SnapAreaSet.h"
#include "windows/SnapGrid.h"
#include "windows/SnapScreenKind.h"
#include <gtest/gtest.h>

using namespace orlo;

namespace {
const QRectF laptopVisible(0, 0, 1440, 875);
}

TEST(SnapArea, AreasTileTheVisibleFrameWithoutAGap)
{
    EXPECT_EQ(SnapArea(SnapArea::leftHalf).frame(laptopVisible, 0, {}), QRectF(0, 0, 720, 875));
    EXPECT_EQ(SnapArea(SnapArea::rightHalf).frame(laptopVisible, 0, {}), QRectF(720, 0, 720, 875));
    // 437.5 points high: the origin is floored and the far edge ceiled.
    EXPECT_EQ(SnapArea(SnapArea::topHalf).frame(laptopVisible, 0, {}), QRectF(0, 437, 1440, 438));
    EXPECT_EQ(SnapArea(SnapArea::bottomHalf).frame(laptopVisible, 0, {}), QRectF(0, 0, 1440, 438));
    EXPECT_EQ(SnapArea(SnapArea::leftThird).frame(laptopVisible, 0, {}), QRectF(0, 0, 480, 875));
    EXPECT_EQ(SnapArea(SnapArea::rightTwoThirds).frame(laptopVisible, 0, {}), QRectF(480, 0, 960, 875));
    EXPECT_EQ(SnapArea(SnapArea::topLeft).frame(laptopVisible, 0, {}), QRectF(0, 437, 720, 438));
    EXPECT_EQ(SnapArea(SnapArea::maximize).frame(QRectF(-100, 25, 1000, 700), 0, {}), QRectF(-100, 25, 1000, 700));
}

TEST(SnapArea, GapSeparatesWindowsFromTheEdgesAndFromEachOther)
{
    const QRectF left = SnapArea(SnapArea::leftHalf).frame(laptopVisible, 10, {});
    const QRectF right = SnapArea(SnapArea::rightHalf).frame(laptopVisible, 10, {});
    EXPECT_EQ(left, QRectF(10, 10, 705, 855));
    EXPECT_EQ(right, QRectF(725, 10, 705, 855));
    // 5% of the half-gap-inset area in from each side, then half the gap more.
    EXPECT_EQ(SnapArea(SnapArea::almostMaximize).frame(QRectF(0, 0, 1000, 800), 10, {}), SnapArea::integral(QRectF(59.5, 49.5, 881, 701)));
}

TEST(SnapArea, ThirdsOnAnUnevenWidthGrowOutwards)
{
    const QRectF visible(0, 0, 1000, 800);
    const QRectF left = SnapArea(SnapArea::leftThird).frame(visible, 0, {});
    const QRectF middle = SnapArea(SnapArea::centerThird).frame(visible, 0, {});
    EXPECT_EQ(left, QRectF(0, 0, 334, 800));
    EXPECT_EQ(middle, QRectF(333, 0, 334, 800));  // overlaps its neighbour by one point
}

TEST(SnapArea, CenterKeepsTheSizeThatFitsAndShrinksWhatDoesNot)
{
    const SnapArea center = SnapArea::center;
    EXPECT_EQ(center.frame(laptopVisible, 10, QRectF(3, 4, 400, 300)), QRectF(520, 287, 400, 301));
    EXPECT_EQ(center.frame(laptopVisible, 10, QRectF(0, 0, 5000, 5000)), QRectF(10, 10, 1420, 855));
    EXPECT_EQ(center.frame(laptopVisible, 0, QRectF(0, 0, 401, 300)), QRectF(519, 287, 402, 301));
    EXPECT_EQ(center.frame(QRectF(0, 0, 1440, 876), 0, QRectF(0, 0, 400, 300)), QRectF(520, 288, 400, 300));
}

TEST(SnapArea, RawValuesAreCaseNames)
{
    EXPECT_EQ(SnapArea::fromRawValue("leftHalf"), SnapArea::leftHalf);
    EXPECT_EQ(SnapArea::fromRawValue("Left half"), std::nullopt);
    for (SnapArea area : SnapArea::all()) EXPECT_EQ(SnapArea::fromRawValue(area.rawValue()), area);
    EXPECT_EQ(SnapArea(SnapArea::bottomRight).title(), "Bottom right quarter");
    EXPECT_EQ(SnapAreaSet::fromRawValue("thirdsFirst"), SnapAreaSet::thirdsFirst);
    EXPECT_EQ(SnapScreenKind::fromRawValue("Ultrawide"), std::nullopt);
}

TEST(SnapAreaSet, CycleExpandsEachBoundAreaAndDropsRepeats)
{
    using A = SnapArea;
    const SnapAreaSet halvesFirst = SnapAreaSet::halvesAndThirds, thirdsFirst = SnapAreaSet::thirdsFirst;
    EXPECT_EQ(halvesFirst.cycle({A::leftHalf}), (QList<SnapArea>{A::leftHalf, A::leftTwoThirds, A::leftThird}));
    EXPECT_EQ(thirdsFirst.cycle({A::leftHalf}), (QList<SnapArea>{A::leftThird, A::leftHalf, A::leftTwoThirds}));
    EXPECT_EQ(thirdsFirst.cycle({A::center}), (QList<SnapArea>{A::centerThird, A::center}));
    EXPECT_EQ(SnapAreaSet(SnapAreaSet::halves).cycle({A::leftHalf}), QList<SnapArea>{A::leftHalf});
    EXPECT_EQ(halvesFirst.cycle({A::leftHalf, A::leftThird, A::topLeft}),
              (QList<SnapArea>{A::leftHalf, A::leftTwoThirds, A::leftThird, A::topLeft}));
    EXPECT_EQ(thirdsFirst.cycle({A::maximize, A::center}), (QList<SnapArea>{A::maximize, A::centerThird, A::center}));
}

TEST(SnapScreenKind, BuiltInIsLaptopWhateverItsShapeAndWideScreensAreUltrawide)
{
    auto kind = [](double w, double h, bool builtIn = false) {
        ScreenInfo s;
        s.frame = QRectF(0, 0, w, h);
        s.builtIn = builtIn;
        return SnapScreenKind::of(s);
    };
    EXPECT_EQ(kind(3440, 1440, true), SnapScreenKind::laptop);
    EXPECT_EQ(kind(3440, 1440), SnapScreenKind::ultrawide);
    EXPECT_EQ(kind(2560, 1080), SnapScreenKind::ultrawide);
    EXPECT_EQ(kind(2560, 1440), SnapScreenKind::standard);
    EXPECT_EQ(kind(3, 1), SnapScreenKind::ultrawide);  // degenerate: the width alone decides
    EXPECT_EQ(kind(2, 0), SnapScreenKind::standard);
}

TEST(SnapGrid, FourWindowsOnA16By10AreaMakeTwoByTwoAndAnOddOneSpansTheLastRow)
{
    const QList<QRectF> four = SnapGrid::cells(4, 1600, 1000);
    EXPECT_EQ(four, (QList<QRectF>{{0, 0, 0.5, 0.5}, {0.5, 0, 0.5, 0.5}, {0, 0.5, 0.5, 0.5}, {0.5, 0.5, 0.5, 0.5}}));
    const QList<QRectF> three = SnapGrid::cells(3, 1600, 1000);
    EXPECT_EQ(three, (QList<QRectF>{{0, 0, 0.5, 0.5}, {0.5, 0, 0.5, 0.5}, {0, 0.5, 1, 0.5}}));
    // Wider areas get more columns; a slightly wide 16:10 area already gets three for four.
    EXPECT_EQ(SnapGrid::cells(4, 3440, 1440).size(), 4);
    EXPECT_DOUBLE_EQ(SnapGrid::cells(4, 3440, 1440)[0].width(), 1.0 / 3);
    EXPECT_DOUBLE_EQ(SnapGrid::cells(4, 1440, 875)[0].width(), 1.0 / 3);
    EXPECT_EQ(SnapGrid::cells(1, 1440, 0), QList<QRectF>{QRectF(0, 0, 1, 1)});
    EXPECT_TRUE(SnapGrid::cells(0, 1440, 900).isEmpty());
}
