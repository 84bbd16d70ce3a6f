#include "render/renderthreads.h"

#include "glsupport/recordedrig.h"
#include "support/logcapture.h"

namespace tirn {
namespace {

using Kind = RenderThreadKind;

TEST(ChooseThreadKind, TakesTheFirstThatTheCardCan)
{
    // Float buffers come before paletted textures, and those before fragment programs.
    for (const bool floats : {false, true}) {
        for (const bool paletted : {false, true}) {
            for (const bool programs : {false, true}) {
                GlCapabilities card;
                card.hasFloatBuffer = floats;
                card.hasPalettedTexture = paletted;
                card.hasFragmentProgram = programs;
                const Kind wanted = floats     ? Kind::Nvidia
                                    : paletted ? Kind::Paletted
                                    : programs ? Kind::FragmentProgram
                                               : Kind::LostCause;
                EXPECT_EQ(chooseThreadKind(card), wanted) << floats << paletted << programs;
            }
        }
    }
}

TEST(ChooseThreadKind, NothingElseOfTheCardCounts)
{
    GlCapabilities card;
    card.hasMultitexture = card.hasSharedPalette = card.hasTexture3D = card.hasPBuffer = true;
    card.hasAtiFragmentShader = true;
    card.maxTexture2D = card.maxTexture3D = card.maxProxyTexture = 4096;
    EXPECT_EQ(chooseThreadKind(card), Kind::LostCause);
}

TEST(MakeRenderThread, SaysWhichOneItIs)
{
    const std::pair<Kind, const char*> lines[] = {{Kind::Paletted, "Using GLThread"},
                                                  {Kind::Nvidia, "Using NvidiaThread"},
                                                  {Kind::FragmentProgram, "Using AtiThread"},
                                                  {Kind::LostCause, "Using Lost Cause Thread"}};
    for (const auto& [kind, line] : lines) {
        const test::LogCapture log;
        test::RecordedRig rig(kind);
        EXPECT_EQ(log.lines().filter("Using "), QStringList{line});
    }
}

} // namespace
} // namespace tirn
