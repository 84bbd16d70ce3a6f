#include "scene/viewsession.h"

#include <gtest/gtest.h>

namespace tirn {
namespace {

class ViewSession : public ::testing::Test
{
protected:
    QDomElement parsed(const QString& content)
    {
        EXPECT_TRUE(m_document.setContent("<dialog>" + content + "</dialog>"));
        return m_document.documentElement();
    }
    ViewState read(const QString& content, ViewState view = {})
    {
        readView(parsed(content), view, window);
        return view;
    }
    ViewState readModes(const QString& content, ViewState view = {})
    {
        readRendering(parsed(content), view);
        return view;
    }

    SessionWindow window;

private:
    QDomDocument m_document;
};

TEST_F(ViewSession, GoesThereAndBack)
{
    ViewState view;
    view.rotX = 10.5;
    view.rotY = 359.25;
    view.rotZ = 0.1;
    view.transX = -3;
    view.transY = 0.123456789;
    view.transZ = 99;
    view.backgroundColor = QColor(1, 2, 3);
    view.showBoundingBox = true;
    view.boxColor = QColor(4, 5, 6);
    view.showScaleBar = true;
    view.scaleBarColor = QColor(7, 8, 9);
    view.scaleBarLocation = ScaleBarLocation::TopRight;
    view.scaleBarSize = 1.25;
    view.roundScaleBar = true;
    QDomDocument document;
    QDomElement element = document.createElement("dialog");
    writeView(element, view, {{640, 480}, true});
    EXPECT_EQ(element.firstChildElement("rotation").attribute("y"), "359.25");
    EXPECT_EQ(element.firstChildElement("scalebar").attribute("location"), "2");
    ViewState seen;
    readView(element, seen, window);
    EXPECT_TRUE(seen == view);
    EXPECT_EQ(window, (SessionWindow{{640, 480}, true}));
}

TEST_F(ViewSession, AttributesThatAreMissingHaveTheStatedValues)
{
    ViewState view;
    view.rotX = 5;
    view.boxColor = Qt::green;
    view.scaleBarSize = 1;
    const ViewState seen = read("<rotation/><translation/><backgroundcolor/><boundingbox/><scalebar/>", view);
    EXPECT_EQ(seen.rotX, 0);
    EXPECT_EQ(seen.boxColor, QColor(0, 0, 255));
    EXPECT_EQ(seen.backgroundColor, QColor(0, 0, 0));
    EXPECT_EQ(seen.scaleBarColor, QColor(0, 0, 0));
    EXPECT_EQ(seen.scaleBarSize, 0.3);
    EXPECT_FALSE(seen.showBoundingBox);
}

TEST_F(ViewSession, ChildrenThatAreMissingKeepTheirValues)
{
    ViewState view;
    view.rotX = 5;
    view.showScaleBar = true;
    EXPECT_TRUE(read("", view) == view);
    EXPECT_TRUE(readModes("", view) == view);
}

TEST_F(ViewSession, ThreeAnglesInOneTextAreReadToo)
{
    for (const char* form : {"<rotation>10x20.5y350z</rotation>", "<rotation x=\"10x20.5y350z\"/>",
                             "<rotation> 10x20.5y-10z </rotation>"}) {
        const ViewState seen = read(form);
        EXPECT_EQ(seen.rotX, 10) << form;
        EXPECT_EQ(seen.rotY, 20.5) << form;
        EXPECT_EQ(seen.rotZ, 350) << form;
    }
    EXPECT_EQ(read("<rotation>0x0y0z</rotation>").rotX, 0);
}

TEST_F(ViewSession, WhatAViewCannotBeIsBounded)
{
    const ViewState seen =
        read("<window width=\"-3\" height=\"99999999\"/><rotation x=\"nan\" y=\"-90\" z=\"1e300\"/>"
             "<translation x=\"1e9\" y=\"inf\" z=\"-1e9\"/>"
             "<backgroundcolor red=\"300\" green=\"-1\" blue=\"x\"/>"
             "<scalebar location=\"9\" barsize=\"50\"/>");
    EXPECT_TRUE(window.size.isEmpty());
    EXPECT_EQ(seen.rotX, 0);
    EXPECT_EQ(seen.rotY, 270);
    EXPECT_TRUE(seen.rotZ >= 0 && seen.rotZ < 360);
    EXPECT_EQ(seen.transX, 100);
    EXPECT_EQ(seen.transY, 0);
    EXPECT_EQ(seen.transZ, -100);
    EXPECT_EQ(seen.backgroundColor, QColor(255, 0, 0));
    EXPECT_EQ(seen.scaleBarLocation, ScaleBarLocation::BottomLeft);
    EXPECT_EQ(seen.scaleBarSize, 1.7);
}

TEST_F(ViewSession, ModesStandAsTextsAndUnknownOnesAreTheStatedDefaults)
{
    ViewState seen =
        readModes("<blending framebuffer=\"32776\"/><rendermode mode=\"4 View\" filtercolors=\"Cyan-Red\" "
                  "eyeseparation=\"0.2\" focalpoint=\"Behind screen\"/>");
    EXPECT_EQ(seen.blendMode, GLenum{GL_MAX});
    EXPECT_EQ(seen.renderMode, RenderMode::FourViews);
    EXPECT_EQ(seen.filterColors, 4);
    EXPECT_EQ(seen.camera.eyesep, 0.2);
    EXPECT_EQ(seen.camera.focalLength, 3);
    seen = readModes(
        "<blending framebuffer=\"7\"/><rendermode mode=\"?\" filtercolors=\"?\" eyeseparation=\"9\" "
        "focalpoint=\"?\"/>");
    EXPECT_EQ(seen.blendMode, GLenum{GL_FUNC_ADD});
    EXPECT_EQ(seen.renderMode, RenderMode::Normal);
    EXPECT_EQ(seen.filterColors, 2);
    EXPECT_EQ(seen.camera.eyesep, 1);
    EXPECT_EQ(seen.camera.focalLength, 2);
}

TEST(FocalPoints, StandForOneTwoAndThree)
{
    for (int point = 0; point < 3; ++point) {
        EXPECT_EQ(focalLengthOf(point), point + 1);
        EXPECT_EQ(focalPointOf(point + 1), point);
    }
    EXPECT_EQ(focalPointOf(0), 0);
    EXPECT_EQ(focalPointOf(77), 2);
}

} // namespace
} // namespace tirn
