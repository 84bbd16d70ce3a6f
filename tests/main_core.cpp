#include <clocale>

#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    // As the application's toolkit does, so that a run under another locale tests what its users get.
    std::setlocale(LC_ALL, "");
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
