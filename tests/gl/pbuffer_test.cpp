// Off-screen buffers: their states, texts and pixels, over the toolkit's contexts and over EGL's.

#include <gtest/gtest.h>

#include "gl/eglcontext.h"
#include "gl/glcontext.h"
#include "gl/gltable.h"
#include "gl/pbuffer.h"
#include "support/logcapture.h"

namespace tirn {
namespace {

enum class Platform { Toolkit, Egl };

std::unique_ptr<OffscreenContext> makeContext(Platform platform)
{
    QString error;
    if (platform == Platform::Toolkit)
        return std::make_unique<HiddenContext>();
    auto context = makeContextWithoutDisplay(error);
    EXPECT_NE(context, nullptr) << error.toStdString();
    return context;
}

class PBuffers : public ::testing::TestWithParam<Platform>
{
protected:
    void SetUp() override
    {
        context = makeContext(GetParam());
        ASSERT_NE(context, nullptr);
        ASSERT_TRUE(context->makeCurrent());
    }
    /// Clears the current buffer and reads its lower left pixel.
    static std::array<int, 4> clearedPixel(float red, float green, float blue, float alpha)
    {
        gl().ClearColor(red, green, blue, alpha);
        gl().Clear(GL_COLOR_BUFFER_BIT);
        std::uint8_t bytes[4] = {};
        gl().ReadPixels(0, 0, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, bytes);
        return {bytes[0], bytes[1], bytes[2], bytes[3]};
    }
    static GLint frameBuffer()
    {
        GLint name = 0;
        gl().GetIntegerv(GL_FRAMEBUFFER_BINDING, &name);
        return name;
    }

    test::LogCapture log;
    std::unique_ptr<OffscreenContext> context;
};

TEST_P(PBuffers, IsDrawnOnWhileActive)
{
    PBuffer buffer("rgba", true);
    EXPECT_TRUE(log.contains("Declare a Pbuffer with \"rgba\" parameters\n"));
    EXPECT_FALSE(buffer.isValid());
    ASSERT_TRUE(buffer.Initialize(40, 30, false, true));
    EXPECT_TRUE(log.contains("Created a 40 x 30 pbuffer\n"));
    EXPECT_EQ(buffer.size(), QSize(40, 30));
    EXPECT_EQ(frameBuffer(), 0);
    buffer.Activate();
    EXPECT_TRUE(buffer.isActive());
    EXPECT_TRUE(log.contains("PBuffer::Activate() succeeded.\n"));
    EXPECT_NE(frameBuffer(), 0);
    EXPECT_EQ(clearedPixel(1, 0.2F, 0, 1), (std::array<int, 4>{255, 51, 0, 255}));
    buffer.Deactivate();
    EXPECT_FALSE(buffer.isActive());
    EXPECT_EQ(frameBuffer(), 0);
    EXPECT_TRUE(log.warnings().isEmpty()) << log.warnings().join('\n').toStdString();
}

TEST_P(PBuffers, LivesInTheCurrentContextWhenThatIsShared)
{
    PBuffer buffer("rgba", true);
    ASSERT_TRUE(buffer.Initialize(8, 8, true, false));
    buffer.Activate();
    EXPECT_NE(frameBuffer(), 0);
    buffer.Deactivate();
    EXPECT_EQ(frameBuffer(), 0);
}

TEST_P(PBuffers, ItsOwnContextSharesNamesOnlyWhenAsked)
{
    GLuint list = gl().GenLists(1);
    gl().NewList(list, GL_COMPILE);
    gl().EndList();
    for (const bool share : {true, false}) {
        PBuffer buffer("rgba", true);
        ASSERT_TRUE(buffer.Initialize(8, 8, false, share));
        buffer.Activate();
        EXPECT_EQ(gl().IsList(list) == GL_TRUE, share);
        buffer.Deactivate();
    }
    gl().DeleteLists(list, 1);
}

TEST_P(PBuffers, OneTakesOverFromAnother)
{
    PBuffer first("rgba", true);
    PBuffer second("rgba", true);
    ASSERT_TRUE(first.Initialize(8, 8, false, true));
    ASSERT_TRUE(second.Initialize(9, 9, false, true));
    first.Activate(&first);
    EXPECT_FALSE(first.isActive());
    first.Activate();
    second.Activate(&first);
    EXPECT_FALSE(first.isActive());
    EXPECT_TRUE(second.isActive());
    second.Deactivate();
    EXPECT_EQ(frameBuffer(), 0);
    EXPECT_TRUE(log.warnings().isEmpty());
}

TEST_P(PBuffers, LeaveNothingBehind)
{
    const LiveGlNames before = liveGlNames();
    {
        PBuffer managed("rgba texture", true);
        ASSERT_TRUE(managed.Initialize(8, 8, false, true));
        PBuffer destroyed("rgba", false);
        ASSERT_TRUE(destroyed.Initialize(8, 8, true, false));
        destroyed.Activate();
        destroyed.Destroy();
        EXPECT_FALSE(destroyed.isValid());
        EXPECT_FALSE(destroyed.isActive());
    }
    EXPECT_EQ(liveGlNames(), before);
    EXPECT_EQ(frameBuffer(), 0);
}

TEST_P(PBuffers, ABufferThatCannotBeMadeFailsWithItsTexts)
{
    const int limit = PBuffer::largestSide();
    ASSERT_GE(limit, 2048);
    for (const QSize size : {QSize(0, 8), QSize(8, -1), QSize(limit + 1, 8), QSize(8, limit + 1)}) {
        log.clear();
        PBuffer buffer("rgba", true);
        EXPECT_FALSE(buffer.Initialize(size.width(), size.height(), false, true));
        EXPECT_TRUE(log.contains("pbuffer creation error:  wglCreatePbufferARB() failed"));
        EXPECT_TRUE(log.contains("error:  ERROR_INVALID_DATA"));
        EXPECT_FALSE(buffer.isValid());
        buffer.Activate();
        EXPECT_TRUE(log.contains("PBuffer::Activate() failed.\n"));
        buffer.Deactivate();
        buffer.HandleModeSwitch();
        char pixel[4];
        EXPECT_EQ(buffer.CopyToBuffer(pixel, 1, 1), 0U);
    }
    log.clear();
    EXPECT_FALSE(PBuffer("rgba samples=9999", true).Initialize(8, 8, false, true));
    EXPECT_TRUE(log.contains("pbuffer creation error:  Couldn't find a suitable pixel format."));
    EXPECT_EQ(frameBuffer(), 0);
}

TEST_P(PBuffers, NothingIsMadeWithoutACurrentContext)
{
    context->doneCurrent();
    EXPECT_FALSE(PBuffer("rgba", true).Initialize(8, 8, false, true));
    EXPECT_TRUE(log.contains("pbuffer creation error:  GetPixelFormat() failed"));
}

TEST_P(PBuffers, ATextureIsBoundOnce)
{
    PBuffer buffer("rgba texture", true);
    ASSERT_TRUE(buffer.Initialize(8, 8, false, true));
    EXPECT_EQ(buffer.Bind(0), 1U);
    GLint bound = 0;
    gl().GetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
    EXPECT_NE(bound, 0);
    EXPECT_EQ(buffer.Bind(0), 0U);
    EXPECT_EQ(log.warnings(), QStringList{"PBuffer::Bind() failed - pbuffer is already bound."});
    EXPECT_EQ(buffer.Release(0), 1U);
    EXPECT_EQ(buffer.Bind(0), 1U);
    EXPECT_EQ(buffer.Release(0), 1U);
}

TEST_P(PBuffers, APlainBufferIsNoTexture)
{
    PBuffer buffer("rgba", true);
    ASSERT_TRUE(buffer.Initialize(8, 8, false, true));
    EXPECT_EQ(buffer.Bind(0), 0U);
    EXPECT_EQ(buffer.Release(0), 0U);
    EXPECT_EQ(
        log.warnings(),
        (QStringList{"PBuffer::Bind() failed - pbuffer format does not support render to texture!",
                     "PBuffer::Release() failed - pbuffer format does not support render to texture!"}));
    log.clear();
    PBuffer missing("rgba texture", true);
    EXPECT_EQ(missing.Bind(0), 0U);
    EXPECT_EQ(missing.Release(0), 0U);
    EXPECT_EQ(log.warnings(), (QStringList{"PBuffer::Bind() failed.", "PBuffer::Release() failed."}));
}

struct CopyCase
{
    const char* mode;
    std::vector<std::uint8_t> pixel;
};

TEST_P(PBuffers, PixelsAreCopiedInTheFormatOfTheComponents)
{
    // A luminance is the sum of the colours.
    const CopyCase cases[] = {{"r", {51 + 102}},
                              {"r alpha", {51 + 102, 204}},
                              {"rgb", {51, 102, 0}},
                              {"rgba", {51, 102, 0, 204}},
                              {"rgba samples=4", {51, 102, 0, 204}},
                              {"rgba texture", {51, 102, 0, 204}}};
    for (const CopyCase& each : cases) {
        PBuffer buffer(each.mode, true);
        ASSERT_TRUE(buffer.Initialize(4, 2, false, true)) << each.mode;
        buffer.Activate();
        gl().ClearColor(0.2F, 0.4F, 0, 0.8F);
        gl().Clear(GL_COLOR_BUFFER_BIT);
        buffer.Deactivate();
        const std::size_t bytes = each.pixel.size();
        std::vector<std::uint8_t> copied(4 * 2 * bytes + 1, 99);
        // 8 goes into no number of components: the count of bytes is always 0.
        EXPECT_EQ(buffer.CopyToBuffer(copied.data(), -1, 9999), 0U) << each.mode;
        EXPECT_EQ(std::vector<std::uint8_t>(copied.end() - 1 - static_cast<std::ptrdiff_t>(bytes),
                                            copied.end() - 1),
                  each.pixel)
            << each.mode;
        EXPECT_EQ(copied.back(), 99) << each.mode;
        EXPECT_FALSE(buffer.isActive());
    }
}

TEST_P(PBuffers, FloatsAreCopiedAsFloats)
{
    PBuffer buffer("rgba float", true);
    ASSERT_TRUE(buffer.Initialize(2, 1, false, true));
    buffer.Activate();
    gl().ClearColor(0.25F, 0.5F, 0.75F, 1);
    gl().Clear(GL_COLOR_BUFFER_BIT);
    buffer.Deactivate();
    std::array<float, 8> copied = {};
    buffer.CopyToBuffer(copied.data(), 2, 1);
    EXPECT_EQ(copied, (std::array<float, 8>{0.25F, 0.5F, 0.75F, 1, 0.25F, 0.5F, 0.75F, 1}));
}

TEST_P(PBuffers, AnUnparsedModeHasNoFormatToCopyIn)
{
    PBuffer buffer("", true);
    ASSERT_TRUE(buffer.Initialize(2, 2, false, true));
    char pixels[64];
    EXPECT_EQ(buffer.CopyToBuffer(pixels, 2, 2), 0U);
    EXPECT_EQ(log.warnings(), QStringList{"unknown m_iBitsPerComponent\n"});
}

TEST_P(PBuffers, ABufferThatIsNotLostOutlivesAModeSwitch)
{
    PBuffer buffer("rgba", true);
    ASSERT_TRUE(buffer.Initialize(4, 4, false, true));
    buffer.Activate();
    clearedPixel(1, 1, 1, 1);
    buffer.Deactivate();
    buffer.HandleModeSwitch();
    std::uint8_t pixel[4] = {};
    buffer.CopyToBuffer(pixel, 1, 1);
    EXPECT_EQ(pixel[0], 255);
}

std::string platformName(const ::testing::TestParamInfo<Platform>& info)
{
    return info.param == Platform::Toolkit ? "Toolkit" : "Egl";
}

INSTANTIATE_TEST_SUITE_P(Platforms, PBuffers, ::testing::Values(Platform::Toolkit, Platform::Egl),
                         platformName);

} // namespace
} // namespace tirn
