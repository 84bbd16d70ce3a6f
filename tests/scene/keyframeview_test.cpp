#include "scene/keyframeview.h"

#include <cmath>

#include <gtest/gtest.h>

#include "glsupport/glrecorder.h"
#include "glsupport/renderrig.h"

namespace tirn {
namespace {

TEST(ShowKeyFrame, ScalesThatWouldTurnTheSlicesRoundAreBounded)
{
    test::GlRecorder gl{test::GlRecorder::Mode::StandAlone};
    Scene scene;
    scene.arrays.push_back(test::makeVolume({test::denseStack(4, 3, 2)}, {}));
    scene.currentIndex = 0;
    KeyFrame frame = shownKeyFrame(scene, false);
    frame.xscale = -2;
    frame.yscale = static_cast<double>(NAN);
    frame.zscale = 1e9;
    showKeyFrame(frame, scene);
    EXPECT_EQ(scene.current()->scale, (AxisScale{0.01, 1.0, 100.0}));
}

} // namespace
} // namespace tirn
