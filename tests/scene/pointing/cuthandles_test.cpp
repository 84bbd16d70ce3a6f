#include "scene/pointing/cuthandles.h"

#include <cmath>
#include <random>

#include <gtest/gtest.h>

namespace tirn {
namespace {

/// Eight slices on each axis, in a picture in which a slice is ten pixels wide.
class CutHandles : public ::testing::Test
{
protected:
    StackGeometry geometry = StackGeometry::of(8, 8, 8, 1024);
    CutBox cut = {0, 7, 0, 7, 0, 7};
    ViewState view;
    AxisScale scale;
    QSize size = {80, 80};

    ViewProjection projection() const { return {view, scale, size}; }
    CutHandleList handles() const { return cutHandles(projection(), geometry, cut); }
    QPointF handle(const CutFace& face) const
    {
        for (const CutHandle& each : handles()) {
            if (each.face == face)
                return each.seen.at;
        }
        return {};
    }
    /// The box once a face was dragged so far.
    CutBox dragged(const CutFace& face, QPointF moved, int leastSlices = 1) const
    {
        return draggedCut(beginCutDrag(projection(), geometry, cut, face), moved, geometry, leastSlices);
    }
};

void expectNear(QPointF at, double x, double y)
{
    EXPECT_NEAR(at.x(), x, 1e-4);
    EXPECT_NEAR(at.y(), y, 1e-4);
}

TEST_F(CutHandles, StandInTheMiddleOfEachFace)
{
    cut = {2, 5, 1, 6, 0, 7};
    // x from (2 * 2 - 8) / 8 to (8 - 2 * 3 + 2) / 8, y from (-2 - 8 + 2 * 2) / 8 to (8 - 2 * 1) / 8.
    expectNear(handle({0, false}), 20, 40);
    expectNear(handle({0, true}), 60, 40);
    expectNear(handle({1, false}), 40, 10);
    expectNear(handle({1, true}), 40, 70);
    expectNear(handle({2, false}), 40, 40);
    expectNear(handle({2, true}), 40, 40);
}

TEST_F(CutHandles, FacesThatAreTurnedToTheViewerAreInFront)
{
    view.rotX = 30;
    view.rotY = 330;
    std::vector<CutFace> front;
    for (const CutHandle& each : handles()) {
        if (each.isInFront)
            front.push_back(each.face);
    }
    // Turned so that the right, upper and near sides are seen; y and z fall.
    EXPECT_EQ(front, (std::vector<CutFace>{{0, true}, {1, false}, {2, false}}));
}

TEST_F(CutHandles, AreCaughtWithinTheirReach)
{
    EXPECT_EQ(handleAt(handles(), {0, 40}, 8), (CutFace{0, false}));
    EXPECT_EQ(handleAt(handles(), {8, 48}, 8), (CutFace{0, false}));
    EXPECT_FALSE(handleAt(handles(), {9, 40}, 8));
    EXPECT_FALSE(handleAt(handles(), {0, 49}, 8));
}

TEST_F(CutHandles, TheOneNearestToTheViewerIsCaught)
{
    EXPECT_EQ(handleAt(handles(), {40, 40}, 8), (CutFace{2, false}));
    view.rotY = 180;
    EXPECT_EQ(handleAt(handles(), {40, 40}, 8), (CutFace{2, true}));
    view.rotY = 90;
    EXPECT_EQ(handleAt(handles(), {40, 40}, 8), (CutFace{0, false}));
    view.rotY = 0;
    view.rotX = 90;
    EXPECT_EQ(handleAt(handles(), {40, 40}, 8), (CutFace{1, false}));
}

TEST_F(CutHandles, FollowTheMouseAlongTheirAxis)
{
    EXPECT_EQ(dragged({0, false}, {20, 0}), (CutBox{2, 7, 0, 7, 0, 7}));
    EXPECT_EQ(dragged({0, false}, {14, 300}), (CutBox{1, 7, 0, 7, 0, 7})) << "what is across does not count";
    EXPECT_EQ(dragged({0, true}, {-26, 0}), (CutBox{0, 4, 0, 7, 0, 7}));
    EXPECT_EQ(dragged({1, false}, {0, 30}), (CutBox{0, 7, 3, 7, 0, 7}));
    EXPECT_EQ(dragged({1, true}, {0, -10}), (CutBox{0, 7, 0, 6, 0, 7}));
    view.rotZ = 90;
    EXPECT_EQ(dragged({0, false}, {0, -20}), (CutBox{2, 7, 0, 7, 0, 7}));
    scale = {0.5, 1, 1};
    EXPECT_EQ(dragged({0, false}, {0, -20}), (CutBox{4, 7, 0, 7, 0, 7}));
}

TEST_F(CutHandles, AnAxisThatPointsAtTheViewerIsDraggedUpForWhatComesNearer)
{
    cut = {0, 7, 0, 7, 3, 5};
    EXPECT_EQ(dragged({2, false}, {0, -10}), (CutBox{0, 7, 0, 7, 2, 5}));
    EXPECT_EQ(dragged({2, false}, {35, 20}), (CutBox{0, 7, 0, 7, 5, 5}));
    EXPECT_EQ(dragged({2, true}, {0, 20}), (CutBox{0, 7, 0, 7, 3, 7}));
    view.rotY = 180;
    EXPECT_EQ(dragged({2, true}, {0, -10}), (CutBox{0, 7, 0, 7, 3, 6}));
    // Eleven degrees off it still does, twelve degrees off it does no longer.
    view.rotY = 11;
    EXPECT_EQ(dragged({2, true}, {0, 20}), (CutBox{0, 7, 0, 7, 3, 7}));
    view.rotY = 12;
    EXPECT_EQ(dragged({2, true}, {0, 20}), cut);
}

TEST_F(CutHandles, StopAtTheEndsAndPushTheOtherBound)
{
    EXPECT_EQ(dragged({0, false}, {-500, 0}), cut);
    EXPECT_EQ(dragged({0, false}, {500, 0}), (CutBox{7, 7, 0, 7, 0, 7}));
    cut = {2, 4, 0, 7, 0, 7};
    EXPECT_EQ(dragged({0, false}, {40, 0}), (CutBox{6, 6, 0, 7, 0, 7}));
    EXPECT_EQ(dragged({0, false}, {40, 0}, 3), (CutBox{5, 7, 0, 7, 0, 7}));
    EXPECT_EQ(dragged({0, true}, {-30, 0}), (CutBox{1, 1, 0, 7, 0, 7}));
    EXPECT_EQ(dragged({0, true}, {-10, 0}, 3), (CutBox{1, 3, 0, 7, 0, 7}));
}

TEST_F(CutHandles, OfAReslicedStackMoveByItsDrawnSlices)
{
    geometry.finalZ = 16;
    cut.zMax = 15;
    view.rotY = 90;
    // z points to the right: 16 slices on 80 pixels, the first one on the right.
    EXPECT_EQ(dragged({2, false}, {-20, 0}), (CutBox{0, 7, 0, 7, 4, 15}));
}

TEST_F(CutHandles, FollowTheMouseAtAnyOrientation)
{
    std::mt19937 random(3);
    std::uniform_real_distribution<double> angle(0, 360);
    std::uniform_int_distribution<int> slice(0, 31);
    geometry = StackGeometry::of(32, 32, 32, 1024);
    size = {400, 300};
    for (int i = 0; i < 300; ++i) {
        view.rotX = angle(random);
        view.rotY = angle(random);
        view.rotZ = angle(random);
        scale = {1, 0.6, 1.7};
        const CutFace face = {i % 3, i % 2 == 1};
        const int from = slice(random);
        const int to = slice(random);
        cut = {0, 31, 0, 31, 0, 31};
        SliceRange range = cutRange(cut, face.axis);
        (face.isHigh ? range.high : range.low) = from;
        setCutRange(cut, face.axis, range);
        const QPointF begin = handle(face);
        const CutBox before = cut;
        (face.isHigh ? range.high : range.low) = to;
        setCutRange(cut, face.axis, range);
        const CutBox after = cut;
        const QPointF end = handle(face);
        cut = before;
        // Nearly along the line of sight the mouse goes another way.
        const double seen = std::hypot(end.x() - begin.x(), end.y() - begin.y());
        const double length = std::abs(to - from) * 2 / 32.0 * scale[face.axis] * 150;
        if (seen > 0.21 * length) {
            EXPECT_EQ(dragged(face, end - begin), after) << i;
        }
    }
}

TEST_F(CutHandles, OfOneSliceStay)
{
    geometry = StackGeometry::of(8, 8, 1, 1024);
    cut = {0, 7, 0, 7, 0, 0};
    for (const QPointF moved : {QPointF(0, 50), QPointF(0, -50), QPointF(50, 0)}) {
        EXPECT_EQ(dragged({2, true}, moved), cut);
        EXPECT_EQ(dragged({2, false}, moved, 5), cut);
    }
}

} // namespace
} // namespace tirn
