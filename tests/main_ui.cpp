#include <QSurfaceFormat>
#include <gtest/gtest.h>

#include "gl/glcontext.h"

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    QSurfaceFormat::setDefaultFormat(tirn::surfaceFormat());
    return RUN_ALL_TESTS();
}
