// Mode strings of off-screen buffers: the attributes that each word asks for.

#include <gtest/gtest.h>

#include "gl/pbuffermode.h"
#include "support/logcapture.h"

namespace tirn {
namespace {

using List = std::vector<int>;

/// The format attributes of a mode without those that every parsed mode starts with, and without the end.
List added(const QByteArray& mode)
{
    List all = parsePBufferMode(mode).pfAttribs;
    const List start = {0x202D, 1, 0x2010, 1, 0x2013, 0x202B};
    EXPECT_EQ(List(all.begin(), all.begin() + 6), start);
    EXPECT_EQ(List(all.end() - 2, all.end()), (List{0, 0}));
    return {all.begin() + 6, all.end() - 2};
}

List bufferAttributes(const QByteArray& mode)
{
    List all = parsePBufferMode(mode).pbAttribs;
    EXPECT_EQ(List(all.end() - 2, all.end()), (List{0, 0}));
    return {all.begin(), all.end() - 2};
}

TEST(PBufferMode, AnEmptyOrNullModeIsNotParsed)
{
    for (const QByteArray& mode : {QByteArray(), QByteArray("")}) {
        const PBufferMode parsed = parsePBufferMode(mode);
        EXPECT_EQ(parsed.pfAttribs, (List{0x202D, 1, 0x2010, 1, 0, 0}));
        EXPECT_EQ(parsed.pbAttribs, (List{0, 0}));
        EXPECT_EQ(parsed.components, 0);
        EXPECT_EQ(parsed.bitsPerComponent, 0);
    }
}

TEST(PBufferMode, ComponentsAskForTheirBits)
{
    EXPECT_EQ(added("rgb=8"), (List{0x2015, 8, 0x2017, 8, 0x2019, 8}));
    EXPECT_EQ(added("rgba"), (List{0x2015, 1, 0x2017, 1, 0x2019, 1, 0x201B, 1}));
    EXPECT_EQ(added("r=16"), (List{0x2015, 16}));
    EXPECT_EQ(added("rg=5"), (List{0x2015, 5, 0x2017, 5}));
    EXPECT_EQ(added("alpha=8"), (List{0x201B, 8}));
    EXPECT_EQ(parsePBufferMode("r").components, 1);
    EXPECT_EQ(parsePBufferMode("rg").components, 2);
    EXPECT_EQ(parsePBufferMode("rgb").components, 3);
    EXPECT_EQ(parsePBufferMode("rgba").components, 4);
}

TEST(PBufferMode, AlphaJoinsTheComponentsBeforeIt)
{
    EXPECT_EQ(parsePBufferMode("alpha").components, 1);
    EXPECT_EQ(parsePBufferMode("r alpha").components, 2);
    EXPECT_EQ(parsePBufferMode("rgb alpha").components, 4);
    EXPECT_EQ(added("rgb=8 alpha=8"), (List{0x2015, 8, 0x2017, 8, 0x2019, 8, 0x201B, 8, 0x201B, 8}));
}

TEST(PBufferMode, ANumberMayBeMissing)
{
    EXPECT_EQ(added("r depth"), (List{0x2015, 1, 0x2022, 1}));
    EXPECT_EQ(added("r depth="), (List{0x2015, 1, 0x2022, 1}));
}

TEST(PBufferMode, OtherWordsHaveTheirAttribute)
{
    EXPECT_EQ(added("r depth=24 stencil=8 aux=2"), (List{0x2015, 1, 0x2022, 24, 0x2023, 8, 0x2024, 2}));
    EXPECT_EQ(added("r samples=4"), (List{0x2015, 1, 0x2041, 1, 0x2042, 4}));
    EXPECT_EQ(parsePBufferMode("r samples=4").samples, 4);
    EXPECT_EQ(added("r double"), (List{0x2015, 1, 0x2011, 1}));
    EXPECT_EQ(bufferAttributes("r mipmap"), (List{0x2074, 1}));
}

TEST(PBufferMode, BitsAre8Or32)
{
    EXPECT_EQ(parsePBufferMode("rgba").bitsPerComponent, 8);
    EXPECT_EQ(parsePBufferMode("rgba float").bitsPerComponent, 32);
    EXPECT_EQ(parsePBufferMode("rgba ati_float").bitsPerComponent, 32);
    EXPECT_EQ(added("r=32 float"), (List{0x2015, 32, 0x20B0, 1}));
    const List ati = parsePBufferMode("r=32 ati_float").pfAttribs;
    EXPECT_EQ(ati, (List{0x202D, 1, 0x2010, 1, 0x2013, 0x21A0, 0x2015, 32, 0, 0}));
}

TEST(PBufferMode, TexturesHaveATargetAndAFormat)
{
    EXPECT_EQ(added("rgb=8 texture"), (List{0x2015, 8, 0x2017, 8, 0x2019, 8, 0x2070, 1}));
    EXPECT_EQ(bufferAttributes("rgb texture"), (List{0x2073, 0x207A, 0x2072, 0x2075}));
    EXPECT_EQ(bufferAttributes("rgba textureRECT"), (List{0x2073, 0x20A2, 0x2072, 0x2076}));
    EXPECT_EQ(bufferAttributes("rgba textureCUBE"), (List{0x2073, 0x2078, 0x2072, 0x2076}));
    EXPECT_TRUE(parsePBufferMode("rgba texture").isTexture);
    EXPECT_FALSE(parsePBufferMode("rgba").isTexture);
}

TEST(PBufferMode, FloatTexturesAreNumberedByTheirComponents)
{
    EXPECT_EQ(added("r=32 texture float"), (List{0x2015, 32, 0x20B0, 1, 0x20B1, 1}));
    EXPECT_EQ(bufferAttributes("rgb textureRECT float"), (List{0x2073, 0x20A2, 0x2072, 0x20B7}));
    EXPECT_EQ(bufferAttributes("rgba textureRECT float"), (List{0x2073, 0x20A2, 0x2072, 0x20B8}));
}

TEST(PBufferMode, ADepthTextureIsBoundAsOne)
{
    EXPECT_EQ(added("rgb=8 depth=24 texture"),
              (List{0x2015, 8, 0x2017, 8, 0x2019, 8, 0x2022, 24, 0x20A3, 1, 0x2070, 1}));
    EXPECT_EQ(bufferAttributes("rgb depth texture"), (List{0x20A5, 0x20A6, 0x2073, 0x207A, 0x2072, 0x2075}));
}

TEST(PBufferMode, MistakesAreLoggedAndReadOver)
{
    test::LogCapture log;
    const PBufferMode parsed = parsePBufferMode("rgb=99 purple depth=24");
    EXPECT_EQ(log.warnings(), (QStringList{"warning : mistake in components definition (rgb + 99)\n",
                                           "unknown pbuffer attribute: purple\n"}));
    EXPECT_EQ(parsed.components, 3);
    log.clear();
    for (const char* word : {"rgba", "alpha", "r", "rg"}) {
        parsePBufferMode(QByteArray(word) + "=0");
        EXPECT_TRUE(log.contains(QString("warning : mistake in components definition (%1 + 0)\n").arg(word)));
    }
    log.clear();
    parsePBufferMode("rg texture");
    EXPECT_EQ(log.warnings(), QStringList{"Bad number of components (r=1,rg=2,rgb=3,rgba=4): 2\n"});
}

TEST(PBufferMode, WithoutComponentsAllFourAreAssumed)
{
    test::LogCapture log;
    EXPECT_EQ(added("depth=24"), (List{0x2022, 24, 0x2015, 8, 0x2017, 8, 0x2019, 8, 0x201B, 8}));
    EXPECT_TRUE(log.contains("components not specified. assuming rgba...\n"));
    EXPECT_EQ(parsePBufferMode("double").components, 4);
    EXPECT_EQ(parsePBufferMode("float depth").components, 4);
}

} // namespace
} // namespace tirn
