#include "glsupport/recordedvolume.h"

#include <QRegularExpression>

#include "image/encoding/texturesink.h"
#include "support/stacks.h"

namespace tirn {
namespace {

using test::denseStack;
using test::GlCall;
using test::PlainStack;

/// "4x2 4x2 ..." of all textures that were made.
std::string sizes(const std::vector<GlCall>& calls, std::size_t dimensions)
{
    std::string text;
    for (const GlCall& call : calls) {
        for (std::size_t i = 0; i < dimensions; ++i)
            text += (i == 0 ? "" : "x") + call.arguments[3 + i];
        text += ' ';
    }
    return text;
}

class Encode : public test::RecordedVolume
{};

TEST_F(Encode, MakesTheTexturesOfThreePassesInTheirOrder)
{
    const PlainStack stack = denseStack(5, 3, 2, 2);
    const auto array = prepared({stack}, limited(4));
    ASSERT_TRUE(array->encode(GL_TEXTURE_2D, -1));
    // Padded 8, 4, 2 in two blocks across x: 3 slices of two, 5 of one, 2 of two.
    const std::string channel = "4x2 4x2 4x2 4x2 4x2 4x2 2x4 2x4 2x4 2x4 2x4 4x4 4x4 4x4 4x4 ";
    EXPECT_EQ(sizes(gl.callsOf("TexImage2D"), 2), channel + channel);
    EXPECT_EQ(sent("TexImage2D"), slicesOf(stack, 4));
    EXPECT_EQ(array->textures().size(), 30U);
    EXPECT_EQ(gl.count("TexImage3DEXT"), 0);
}

TEST_F(Encode, MakesOneTextureForEachBlockOfTheVolume)
{
    const PlainStack stack = denseStack(5, 3, 2, 1, 16);
    const auto array = prepared({stack}, limited(4));
    ASSERT_TRUE(array->encode(GL_TEXTURE_3D, -1));
    EXPECT_EQ(sizes(gl.callsOf("TexImage3DEXT"), 3), "4x4x2 4x4x2 ");
    EXPECT_EQ(sent("TexImage3DEXT"), bytesOf(referenceBlocks(stack, 0, 4), 16));
    EXPECT_EQ(array->textures().size(), 2U);
}

TEST_F(Encode, LogsItsSteps)
{
    const auto array = prepared({denseStack(5, 3, 2)}, limited(4));
    log.clear();
    ASSERT_TRUE(array->encode(GL_TEXTURE_2D, -1));
    EXPECT_EQ(log.lines(),
              (QStringList{"better encode", "Making 2D quads", "x 5 8 y 3 4 z 2 2",
                           "xblocks 2 yblock 1 zblocks 1 texlimit 4", "Done making 15 2D quads",
                           "timing info ", "x 5 y 3 z 2", "xpad 1 ypad 0 zpad 0",
                           "*** Done encoding 8bit 2D ***", "About to copy 1 channels 1 file scenario"}));
}

TEST_F(Encode, LogsTheStepsOfWordsAfterEachPass)
{
    const auto array = prepared({denseStack(5, 3, 2, 1, 16)}, limited(4));
    log.clear();
    ASSERT_TRUE(array->encode(GL_TEXTURE_2D, -1));
    EXPECT_EQ(log.lines().mid(8),
              (QStringList{"made it though zx", "x 5 y 3 z 2 stacksize 6", "made it though yz",
                           "x 5 y 3 z 2 stacksize 11", "made it though xy", "x 5 y 3 z 2 stacksize 15",
                           "*** Done encoding 16bit 2D ***", "About to copy 1 channels 1 file scenario"}));
}

// The line of the blocks shows the limit of the other target.
TEST_F(Encode, LogsTheStepsOfThe3DTargetWithThe2DLimit)
{
    const auto array =
        prepared({denseStack(5, 3, 2)}, {RenderThreadKind::FragmentProgram, 1024, 4, false, nullptr});
    log.clear();
    ASSERT_TRUE(array->encode(GL_TEXTURE_3D, 3));
    EXPECT_EQ(log.lines().mid(1, 4),
              (QStringList{"Making 3D quads", "x 5 y 3 final_z 3 powz 2",
                           "xblocks 2 yblock 1 zblocks 1 texlimit 1024", "Done making 17 3D quads"}));
    EXPECT_TRUE(log.contains("Done encoding 8bit 3D"));
    const auto words = prepared({denseStack(4, 4, 4, 1, 12)}, limited(4));
    words->encode(GL_TEXTURE_3D, -1);
    EXPECT_TRUE(log.contains("x 4 y 4 final_z -1 powz 4"));
    EXPECT_TRUE(log.contains("internalformat 32834 x 4 y 4 z 4 format 6409 datype 5123"));
    EXPECT_TRUE(log.contains("Done encoding 16bit 3D"));
}

TEST_F(Encode, ReportsItsProgressInPercent)
{
    std::vector<int> percents;
    const Progress progress{[&](const QString& message, int done, int total) {
        EXPECT_TRUE(message.isEmpty());
        EXPECT_EQ(total, -1);
        percents.push_back(done);
    }};
    const auto array = prepared({denseStack(2, 2, 2, 1), denseStack(2, 2, 2, 1)}, limited(4));
    array->encode(GL_TEXTURE_2D, -1, progress);
    EXPECT_EQ(percents, (std::vector<int>{16, 33, 50, 66, 83, 100}));
    percents.clear();
    const auto deep = prepared({denseStack(4, 4, 3)}, limited(4));
    deep->encode(GL_TEXTURE_3D, -1, progress);
    EXPECT_EQ(percents, (std::vector<int>{25, 50, 75, 100}));
}

TEST_F(Encode, RefusesAStackWithoutASize)
{
    VoxelArray array(4, 4, 0, {});
    array.stack().bitDepth = 8;
    EXPECT_FALSE(array.encode(GL_TEXTURE_2D, -1));
    EXPECT_EQ(log.warnings(), QStringList{"dimensions not valid or stack not read."});
    VoxelArray depthless(4, 4, 4, {});
    depthless.stack().bitDepth = 0;
    EXPECT_FALSE(depthless.encode(GL_TEXTURE_3D, -1));
    EXPECT_EQ(gl.count("TexImage2D"), 0);
}

TEST_F(Encode, ASecondTimeWarnsAndSucceeds)
{
    const auto array = prepared({denseStack(4, 3, 2)}, limited(4));
    ASSERT_TRUE(array->encode(GL_TEXTURE_2D, -1));
    gl.clear();
    EXPECT_TRUE(array->encode(GL_TEXTURE_2D, -1));
    EXPECT_EQ(log.warnings(), QStringList{"Warning: array already encoded the stack.  Nothing to do."});
    EXPECT_EQ(gl.texts(), std::vector<std::string>{});
}

TEST_F(Encode, KeepsTheValuesOfTwelveBitsAsTheyAre)
{
    PlainStack stack = PlainStack::blank(2, 2, 2, 1, 12);
    stack.at(1, 1, 1) = 4095;
    const auto array = prepared({stack}, limited(4));
    ASSERT_TRUE(array->encode(GL_TEXTURE_2D, -1));
    const std::vector<std::uint8_t> expected = {0, 0, 0, 0, 0, 0, 0xFF, 0x0F};
    EXPECT_EQ(sent("TexImage2D")[1], expected);
    EXPECT_EQ(sent("TexImage2D"), slicesOf(stack, 4));
}

struct FormatCase
{
    RenderThreadKind kind;
    int bits;
    int internalFormat;
    int format;
    int type;
};

class EncodeFormat : public Encode, public ::testing::WithParamInterface<FormatCase>
{};

TEST_P(EncodeFormat, FollowsKindAndDepth)
{
    const FormatCase& c = GetParam();
    const auto array = prepared({denseStack(2, 2, 2, 1, c.bits)}, limited(4, c.kind));
    ASSERT_TRUE(array->encode(GL_TEXTURE_2D, -1));
    const GlCall call = gl.callsOf("TexImage2D").front();
    EXPECT_EQ(call.number(2), c.internalFormat);
    EXPECT_EQ(call.number(6), c.format);
    EXPECT_EQ(call.number(7), c.type);
}

INSTANTIATE_TEST_SUITE_P(
    KindsAndDepths, EncodeFormat,
    ::testing::Values(
        FormatCase{RenderThreadKind::Paletted, 8, GL_COLOR_INDEX8_EXT, GL_COLOR_INDEX, GL_UNSIGNED_BYTE},
        FormatCase{RenderThreadKind::Paletted, 16, GL_COLOR_INDEX8_EXT, 0, 0},
        FormatCase{RenderThreadKind::Nvidia, 8, GL_LUMINANCE8, GL_LUMINANCE, GL_UNSIGNED_BYTE},
        FormatCase{RenderThreadKind::Nvidia, 12, GL_LUMINANCE16, GL_LUMINANCE, GL_UNSIGNED_SHORT},
        FormatCase{RenderThreadKind::FragmentProgram, 8, GL_LUMINANCE8, GL_LUMINANCE, GL_UNSIGNED_BYTE},
        FormatCase{RenderThreadKind::FragmentProgram, 16, GL_LUMINANCE16, GL_LUMINANCE, GL_UNSIGNED_SHORT},
        FormatCase{RenderThreadKind::LostCause, 8, 0, 0, 0}));

TEST_F(Encode, WordsOnThePalettedPathOnlyLogTheirError)
{
    const auto array = prepared({denseStack(2, 2, 2, 1, 16)}, limited(4, RenderThreadKind::Paletted));
    gl.queueErrors({0x500});
    EXPECT_TRUE(array->encode(GL_TEXTURE_2D, -1));
    EXPECT_EQ(array->textures().size(), 6U);
    EXPECT_EQ(log.count("2D 16bit Texmap Error: 500"), 1);
}

TEST_F(Encode, AnotherDepthWarnsAndGoesOn)
{
    const auto array = prepared({denseStack(2, 2, 2, 1, 10), denseStack(2, 2, 2, 1, 10)}, limited(4));
    EXPECT_TRUE(array->encode(GL_TEXTURE_2D, -1));
    EXPECT_TRUE(array->encode(GL_TEXTURE_2D, -1));
    EXPECT_EQ(array->encodedImages(), 2);
    EXPECT_EQ(log.warnings(), (QStringList{"Error: I do not know how to encode 10 bits.",
                                           "Error: I do not know how to encode 10 bits."}));
    EXPECT_FALSE(array->reencode(2));
    EXPECT_TRUE(array->reencode(0));
    EXPECT_EQ(log.warnings().last(), "Error: I do not know how to reencode 10 bits.");
}

TEST_F(Encode, OneImageAfterTheOtherAppendsItsTextures)
{
    const PlainStack first = denseStack(4, 3, 2);
    const PlainStack second = test::mirrored(first, 0);
    const auto array = prepared({first, second}, limited(4));
    ASSERT_TRUE(array->encode(GL_TEXTURE_2D, -1));
    EXPECT_EQ(array->encodedImages(), 1);
    EXPECT_EQ(array->textures().size(), 9U);
    gl.clear();
    ASSERT_TRUE(array->encode(GL_TEXTURE_2D, -1));
    EXPECT_EQ(array->textures().size(), 18U);
    EXPECT_EQ(sent("TexImage2D"), slicesOf(second, 4));
    EXPECT_EQ(gl.count("NewList"), 0);
}

// Four textures a plane and four time points: one image makes as many textures as four whole planes would.
TEST_F(Encode, ImagesInBlocksAreAllEncoded)
{
    const auto array = prepared(std::vector<PlainStack>(4, denseStack(4, 4, 4)), limited(2));
    for (int image = 1; image <= 4; ++image) {
        EXPECT_TRUE(array->encode(GL_TEXTURE_2D, -1));
        EXPECT_EQ(array->encodedImages(), image);
    }
    EXPECT_EQ(array->textures().size(), 4U * 48);
    EXPECT_EQ(log.warnings(), QStringList{});
}

TEST_F(Encode, TheRectangleTargetTakesSlicesAndThe2DLimit)
{
    const auto array =
        prepared({denseStack(4, 4, 4)}, {RenderThreadKind::FragmentProgram, 2, 4, false, nullptr});
    EXPECT_TRUE(array->encode(0x84F5, -1));
    EXPECT_EQ(array->textures().size(), 48U);
    EXPECT_EQ(gl.callsOf("TexImage2D").front().text(),
              "TexImage2D(34037, 0, 32832, 2, 2, 0, 6409, 5121, data)");
    EXPECT_TRUE(array->isComplete());
}

TEST_F(Encode, AnImageOfAnotherSizeIsLeftOut)
{
    auto array = prepared({denseStack(4, 3, 2), denseStack(4, 3, 3)}, limited(4));
    array->encode(GL_TEXTURE_2D, -1);
    array->encode(GL_TEXTURE_2D, -1);
    EXPECT_EQ(array->textures().size(), 9U);
    EXPECT_EQ(log.warnings().size(), 1);
}

TEST_F(Encode, TimesOfAcquisitionBecomeLabels)
{
    const auto array = prepared({denseStack(2, 2, 2), denseStack(2, 2, 2)}, limited(4));
    array->images()[1]->attributes().timestamp = QDateTime(QDate(2004, 5, 6), QTime(7, 8, 9));
    array->encode(GL_TEXTURE_2D, -1);
    array->encode(GL_TEXTURE_2D, -1);
    EXPECT_EQ(array->timeLabels(), (QStringList{"00:00:00", "07:08:09"}));
    ASSERT_EQ(array->timeStamps().size(), 1U);
    EXPECT_EQ(array->timeStamps()[0].time(), QTime(7, 8, 9));
    EXPECT_EQ(log.count("timing info "), 1);
    EXPECT_EQ(log.count("timing info 07:08:09"), 2);
}

TEST_F(Encode, SetsTheCutBoxToTheReslicedWhole)
{
    const auto array = prepared({denseStack(4, 4, 4)}, limited(4));
    array->encode(GL_TEXTURE_3D, 7);
    EXPECT_EQ(array->cut, (CutBox{0, 3, 0, 3, 0, 6}));
    EXPECT_EQ(array->geometry().finalZ, 7);
    const auto same = prepared({denseStack(4, 4, 4)}, limited(4));
    same->encode(GL_TEXTURE_3D, 4);
    EXPECT_EQ(same->geometry().finalZ, -1);
}

TEST_F(Encode, OneVoxelOnAnAxisTakesThe2DTarget)
{
    for (const PlainStack& stack : {denseStack(1, 4, 4), denseStack(4, 1, 4), denseStack(4, 4, 1)}) {
        const auto array = prepared({stack}, limited(4));
        gl.clear();
        EXPECT_TRUE(array->encode(GL_TEXTURE_3D, -1));
        EXPECT_EQ(array->textureTarget(), static_cast<GLenum>(GL_TEXTURE_2D));
        EXPECT_EQ(sent("TexImage2D"), slicesOf(stack, 4));
        EXPECT_TRUE(array->isComplete());
    }
}

TEST_F(Encode, ConservingMemoryLetsTheVoxelsGo)
{
    VolumeOptions options = limited(4);
    options.conserveMemory = true;
    const auto array = prepared({denseStack(4, 4, 4), denseStack(4, 4, 4)}, options);
    array->encode(GL_TEXTURE_2D, -1);
    EXPECT_FALSE(array->images()[0]->isLoaded());
    EXPECT_TRUE(array->images()[1]->isLoaded());
    EXPECT_EQ(array->width(), 4);
    array->encode(GL_TEXTURE_2D, -1);
    EXPECT_FALSE(array->images()[1]->isLoaded());
    EXPECT_EQ(array->cut, (CutBox{0, 3, 0, 3, 0, 3}));
}

TEST_F(Encode, StatisticsReachTheChannelsWithTheLastImage)
{
    const auto array = prepared({denseStack(4, 4, 4), denseStack(4, 4, 4), denseStack(4, 4, 4)}, limited(4));
    array->encode(GL_TEXTURE_2D, -1);
    array->encode(GL_TEXTURE_2D, -1);
    EXPECT_TRUE(array->channels()[0].stats.histogram.empty());
    array->encode(GL_TEXTURE_2D, -1);
    EXPECT_FALSE(array->channels()[0].stats.histogram.empty());
}

TEST_F(Encode, MemoryThatIsNotThereIsToldAndEndsTheEncoder)
{
    for (const GLenum target : {GL_TEXTURE_2D, GL_TEXTURE_3D}) {
        const auto array = prepared({denseStack(4, 4, 4)}, limited(4));
        const test::NoVoxelMemory none;
        log.clear();
        EXPECT_TRUE(array->encode(target, -1));
        EXPECT_EQ(log.warnings(), QStringList{"Could not allocate memory for slice"});
        EXPECT_TRUE(array->textures().empty());
        EXPECT_EQ(array->encodedImages(), 1);
    }
}

TEST_F(Encode, ATextureThatCannotBeMadeLeavesAZeroName)
{
    const auto array = prepared({denseStack(2, 2, 2)}, limited(4));
    gl.table().GenTextures = [](GLsizei, GLuint* names) { *names = 0; };
    EXPECT_TRUE(array->encode(GL_TEXTURE_2D, -1));
    EXPECT_EQ(names(array->textures()), std::vector<GLuint>(6, 0));
    EXPECT_EQ(log.count("Error: failed to generate texture"), 6);
    EXPECT_EQ(gl.count("TexImage2D"), 0);
}

TEST_F(Encode, QuadsAreListsOfOneRunWithTheirVertices)
{
    const auto array = prepared({denseStack(2, 1, 1)}, limited(4));
    array->encode(GL_TEXTURE_2D, -1);
    EXPECT_EQ(gl.texts({"GenLists"}), (std::vector<std::string>{"GenLists(4)", "GenLists(7)"}));
    const std::vector<std::string> calls = gl.texts();
    const std::vector<std::string> first(calls.begin() + 1, calls.begin() + 14);
    EXPECT_EQ(first, (std::vector<std::string>{"NewList(1, 4864)", "Color4f(1, 1, 1, 1)", "Begin(7)",
                                               "MultiTexCoord2fARB(33984, 0, 0)", "Vertex3f(-1, 0, 0.5)",
                                               "MultiTexCoord2fARB(33984, 1, 0)", "Vertex3f(1, 0, 0.5)",
                                               "MultiTexCoord2fARB(33984, 1, 1)", "Vertex3f(1, 0, -0.5)",
                                               "MultiTexCoord2fARB(33984, 0, 1)", "Vertex3f(-1, 0, -0.5)",
                                               "End()", "EndList()"}));
    EXPECT_EQ(array->quads().first(), 1U);
    EXPECT_EQ(array->quads().size(), 4U);
}

TEST_F(Encode, QuadsOfThePalettedPathUsePlainCoordinates)
{
    prepared({denseStack(2, 2, 2)}, limited(4, RenderThreadKind::Paletted))->encode(GL_TEXTURE_2D, -1);
    EXPECT_EQ(gl.count("TexCoord2f"), 24);
    EXPECT_EQ(gl.count("MultiTexCoord2fARB"), 0);
    prepared({denseStack(2, 2, 2)}, limited(4, RenderThreadKind::Paletted))->encode(GL_TEXTURE_3D, -1);
    EXPECT_EQ(gl.count("TexCoord3f"), 24);
}

TEST_F(Encode, QuadsOfThe3DTargetHaveThreeCoordinates)
{
    prepared({denseStack(2, 2, 2)}, limited(4))->encode(GL_TEXTURE_3D, -1);
    EXPECT_EQ(gl.texts({"MultiTexCoord3fARB"}).front(), "MultiTexCoord3fARB(33984, 0, 1, 0)");
    EXPECT_EQ(gl.count("MultiTexCoord3fARB"), 24);
}

TEST_F(Encode, MissingEntriesForQuadsAreToldAndLeaveTheArrayIncomplete)
{
    gl.table().MultiTexCoord2fARB = nullptr;
    gl.table().MultiTexCoord3fARB = nullptr;
    const auto flat = prepared({denseStack(2, 2, 2)}, limited(4));
    flat->encode(GL_TEXTURE_2D, -1);
    const auto deep = prepared({denseStack(2, 2, 2)}, limited(4));
    deep->encode(GL_TEXTURE_3D, -1);
    EXPECT_EQ(log.warnings(), (QStringList{"glMultiTexCoord2fARB is NULL", "glMultiTexCoord3fARB is NULL"}));
    EXPECT_FALSE(flat->isComplete());
    const auto paletted = prepared({denseStack(2, 2, 2)}, limited(4, RenderThreadKind::Paletted));
    paletted->encode(GL_TEXTURE_2D, -1);
    EXPECT_TRUE(paletted->isComplete());
}

TEST_F(Encode, QuadsThatAreNoListsAreLoggedByGroup)
{
    gl.refuseLists(true);
    const auto array = prepared({denseStack(1, 1, 1)}, limited(4));
    array->encode(GL_TEXTURE_2D, -1);
    EXPECT_EQ(log.count("AHHH! 1"), 1);
    EXPECT_EQ(log.warnings(), QStringList{"AHHH 2\n"});
    EXPECT_EQ(log.count("AHHH 3"), 1);
    EXPECT_EQ(array->quads().size(), 3U);
}

TEST_F(Encode, BricksStandAtTheCornersOfTheirBlocks)
{
    const auto array = prepared({denseStack(8, 4, 8)}, limited(4));
    array->encode(GL_TEXTURE_2D, -1);
    ASSERT_EQ(array->bricks().size(), 4U);
    EXPECT_EQ(array->bricks()[0]->corner, (std::array<float, 3>{-1, -1, -1}));
    EXPECT_EQ(array->bricks()[1]->corner, (std::array<float, 3>{-0.5F, -1, -1}));
    EXPECT_EQ(array->bricks()[2]->corner, (std::array<float, 3>{-1, -1, -0.5F}));
    EXPECT_EQ(array->bricks()[3]->corner, (std::array<float, 3>{-0.5F, -1, -0.5F}));
    EXPECT_TRUE(array->bricks()[0]->textures.empty());
}

/// The corners that a list draws, between NewList and EndList.
std::vector<std::string> callsOfList(const std::vector<std::string>& calls, GLuint list)
{
    const auto first = std::find(calls.begin(), calls.end(), "NewList(" + std::to_string(list) + ", 4864)");
    return {first + 1, std::find(first, calls.end(), "EndList()")};
}

TEST_F(Encode, BoxListsHoldTheBoxAndItsFaces)
{
    const auto array = prepared({denseStack(4, 2, 1)}, limited(4));
    array->encode(GL_TEXTURE_2D, -1);
    const std::vector<std::string> calls = gl.texts();
    // Edges 0.999 of the extent; one voxel on z counts as three above.
    EXPECT_EQ(
        callsOfList(calls, array->boxList(VoxelArray::FrontFace)),
        (std::vector<std::string>{"LineWidth(1)", "Begin(2)", "Vertex3f(-0.999, -0.4995, 0.74925)",
                                  "Vertex3f(0.999, -0.4995, 0.74925)", "Vertex3f(0.999, 0.4995, 0.74925)",
                                  "Vertex3f(-0.999, 0.4995, 0.74925)", "End()"}));
    EXPECT_EQ(callsOfList(calls, array->boxList(VoxelArray::LeftFace))[2],
              "Vertex3f(-0.999, -0.4995, -0.24975)");
    EXPECT_EQ(callsOfList(calls, array->boxList(VoxelArray::RightFace))[2],
              "Vertex3f(0.999, -0.4995, -0.24975)");
    EXPECT_EQ(callsOfList(calls, array->boxList(VoxelArray::BottomFace))[2],
              "Vertex3f(-0.999, -0.4995, -0.24975)");
    EXPECT_EQ(callsOfList(calls, array->boxList(VoxelArray::TopFace))[2],
              "Vertex3f(-0.999, 0.4995, -0.24975)");
    EXPECT_EQ(callsOfList(calls, array->boxList(VoxelArray::BackFace))[2],
              "Vertex3f(-0.999, -0.4995, -0.24975)");
    const std::vector<std::string> box = callsOfList(calls, array->boxList(VoxelArray::WholeBox));
    EXPECT_EQ(std::count_if(box.begin(), box.end(), [](const std::string& call) { return call[0] == 'V'; }),
              16);
}

TEST_F(Encode, DestructionDeletesNewestFirstAndInRuns)
{
    auto array = prepared({denseStack(2, 2, 2)}, limited(4));
    array->encode(GL_TEXTURE_2D, -1);
    const std::vector<GLuint> made = names(array->textures());
    const std::string quads = "DeleteLists(" + std::to_string(array->quads().first()) + ", 6)";
    const std::string boxes = "DeleteLists(" + std::to_string(array->boxList(VoxelArray::WholeBox)) + ", 7)";
    gl.clear();
    log.clear();
    array.reset();
    const std::vector<GlCall> deletions = gl.callsOf("DeleteTextures");
    ASSERT_EQ(deletions.size(), 1U);
    EXPECT_EQ(deletions[0].values, std::vector<double>(made.rbegin(), made.rend()));
    EXPECT_EQ(gl.texts({"DeleteLists"}), (std::vector<std::string>{quads, boxes}));
    EXPECT_EQ(liveGlNames(), LiveGlNames{});
}

TEST_F(Encode, DestructionLogsItsSteps)
{
    auto array = prepared({denseStack(2, 2, 2), denseStack(2, 2, 2)}, limited(4));
    array->encode(GL_TEXTURE_2D, -1);
    log.clear();
    array.reset();
    const QStringList lines = log.lines();
    ASSERT_GE(lines.size(), 6);
    EXPECT_EQ(lines.first(), "Deleting VoxelArray");
    EXPECT_TRUE(lines[1].contains(QRegularExpression("^deleted textures in [0-9]\\.[0-9]{6}ms$")));
    EXPECT_TRUE(lines[2].contains(QRegularExpression("^deleted quads in [0-9]\\.[0-9]{6}ms$")));
    const int end = lines.size();
    EXPECT_TRUE(lines[end - 3].contains(QRegularExpression("^deleted 2 ImageFiles in [0-9]\\.[0-9]{6}ms$")));
    EXPECT_TRUE(lines[end - 2].contains(QRegularExpression("^deleting ImageFile objects [0-9.e-]+$")));
    EXPECT_EQ(lines[end - 1], "Deleted textures and quads");
    EXPECT_EQ(lines.mid(3, end - 6).first(), "Deleting Brick");
}

TEST_F(Encode, DestructionOfAnEmptyArraySaysNothingOfQuads)
{
    prepared({denseStack(2, 2, 2)}, limited(4)).reset();
    EXPECT_TRUE(log.lines().filter("deleted quads").isEmpty());
    EXPECT_EQ(log.lines().filter("deleted textures").size(), 1);
}

} // namespace
} // namespace tirn
