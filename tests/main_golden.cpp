#include <algorithm>
#include <string>

#include <QGuiApplication>
#include <QSurfaceFormat>
#include <gtest/gtest.h>

#include "gl/glcontext.h"
#include "glsupport/renderrig.h"

/// Volumes are drawn by the card, or, after the word --processor, by the processor.
int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    if (std::find(argv, argv + argc, std::string("--processor")) != argv + argc)
        tirn::test::testedDrawing() = tirn::Drawing::Processor;
    // Listing the tests must not need a display.
    if (GTEST_FLAG_GET(list_tests))
        return RUN_ALL_TESTS();
    QSurfaceFormat::setDefaultFormat(tirn::surfaceFormat());
    const QGuiApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
