#include <QGuiApplication>
#include <QSurfaceFormat>
#include <gtest/gtest.h>

#include "gl/glcontext.h"

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    // Listing the tests must not need a display.
    if (GTEST_FLAG_GET(list_tests))
        return RUN_ALL_TESTS();
    QSurfaceFormat::setDefaultFormat(tirn::surfaceFormat());
    const QGuiApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
