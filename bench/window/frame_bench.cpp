// Frames in a window of 512 x 512 pixels, beside the bare drawing of the same number of slices.

#include <benchmark/benchmark.h>

#include "base/stopwatch.h"
#include "window/benchwindow.h"

namespace tirn::bench {
namespace {

constexpr int kSlices = 64;

/// The bare limit: slices that cover the window, one texture each, a palette look-up in a fragment program,
/// and nothing else; as a thread that draws what its base class would, without a volume.
class BareQuads : public GLThread
{
public:
    using GLThread::GLThread;

    void prepare()
    {
        std::vector<std::uint8_t> texels(256 * 256);
        for (std::size_t i = 0; i < texels.size(); ++i)
            texels[i] = static_cast<std::uint8_t>((i * 3) ^ (i / 256 * 2));
        for (int i = 0; i < kSlices; ++i) {
            fillTexture(TextureCreator::Map2D8, m_textures.add(), true, GL_LUMINANCE8, {256, 256, 1},
                        texels.data());
            std::rotate(texels.begin(), texels.begin() + 77, texels.end());
        }
        m_shaders.compile("!!ARBfp1.0\nTEMP t;\nTEX t,fragment.texcoord[0],texture[0],2D;\n"
                          "TEX result.color,t,texture[1],1D;\nEND\n");
    }
    void drawSlices(GLuint palette)
    {
        gl().Viewport(0, 0, 512, 512);
        gl().MatrixMode(GL_PROJECTION);
        gl().LoadIdentity();
        gl().MatrixMode(GL_MODELVIEW);
        gl().LoadIdentity();
        gl().Disable(GL_DEPTH_TEST);
        gl().Disable(GL_ALPHA_TEST);
        gl().Enable(GL_BLEND);
        gl().BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        gl().Enable(GL_FRAGMENT_PROGRAM_ARB);
        m_shaders.bind(m_shaders.currentProgram());
        gl().ActiveTextureARB(GL_TEXTURE1_ARB);
        gl().BindTexture(GL_TEXTURE_1D, palette);
        gl().ActiveTextureARB(GL_TEXTURE0_ARB);
        gl().Clear(GL_COLOR_BUFFER_BIT);
        for (int i = 0; i < kSlices; ++i) {
            gl().BindTexture(GL_TEXTURE_2D, m_textures[static_cast<std::size_t>(i)]);
            const float z = static_cast<float>(i) / kSlices - 0.5F;
            gl().Begin(GL_QUADS);
            for (const auto& [s, t] :
                 {std::pair(0.F, 0.F), std::pair(1.F, 0.F), std::pair(1.F, 1.F), std::pair(0.F, 1.F)}) {
                gl().MultiTexCoord2fARB(GL_TEXTURE0_ARB, s, t);
                gl().Vertex3f(2 * s - 1, 2 * t - 1, z);
            }
            gl().End();
        }
        gl().BindTexture(GL_TEXTURE_2D, 0);
    }

private:
    TextureNames m_textures;
    Shaders m_shaders;
};

} // namespace

/// One frame of bare quads in the window's own context, from its start to the end of the swap.
static void bareQuads(benchmark::State& state)
{
    BenchWindow& window = benchWindow();
    window.widget().renderThread().wait();
    WindowSurface& surface = window.widget().surface();
    surface.handTo(*QThread::currentThread());
    surface.makeCurrent();
    {
        Shaders shaders;
        RenderLock lock;
        NoEvents events;
        BareQuads bare({window.scene(), shaders, lock, surface, events, RenderThreadKind::FragmentProgram});
        bare.prepare();
        const GLuint palette = window.scene().palettes.front()->glHandle();
        for (auto _ : state) {
            const Stopwatch timer;
            bare.drawSlices(palette);
            surface.swap();
            state.SetIterationTime(timer.seconds());
        }
    }
    surface.giveBack();
}
BENCHMARK(bareQuads)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(20);

/// The median frame of a turn in 36 steps; the worst as a counter.
static void turn(benchmark::State& state, GLenum blendMode, Drawing drawing)
{
    BenchWindow& window = benchWindow();
    window.show(256, 256, 64, static_cast<int>(state.range(0)));
    window.widget().setBlendMode(blendMode);
    window.scene().settings.drawing = drawing;
    window.turn();
    double worst = 0;
    for (auto _ : state) {
        const std::vector<double> seconds = window.turn();
        state.SetIterationTime(seconds[seconds.size() / 2]);
        worst = std::max(worst, seconds.back());
    }
    state.counters["worst_ms"] = worst * 1000;
    window.scene().settings.drawing = Drawing::Card;
    window.widget().setBlendMode(GL_FUNC_ADD);
    window.closeAll();
}
#define TIRN_TURN(name, blendMode, drawing)                                                                  \
    BENCHMARK_CAPTURE(turn, name, blendMode, drawing)                                                        \
        ->Arg(1)                                                                                             \
        ->Arg(3)                                                                                             \
        ->UseManualTime()                                                                                    \
        ->Unit(benchmark::kMillisecond)                                                                      \
        ->Iterations(3)
TIRN_TURN(alpha, GL_FUNC_ADD, Drawing::Card);
TIRN_TURN(alphaOnProcessor, GL_FUNC_ADD, Drawing::Processor);
TIRN_TURN(maximum, GL_MAX, Drawing::Card);
TIRN_TURN(maximumOnProcessor, GL_MAX, Drawing::Processor);

/// The first frame after a load: program, render list and picture.
static void firstFrame(benchmark::State& state)
{
    BenchWindow& window = benchWindow();
    for (auto _ : state) {
        window.show(256, 256, 64, 1);
        state.SetIterationTime(window.frame());
        window.closeAll();
    }
}
BENCHMARK(firstFrame)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(5);

/// From a palette's upload on the interface thread to the end of the next frame's swap.
static void paletteEdit(benchmark::State& state)
{
    BenchWindow& window = benchWindow();
    window.show(256, 256, 64, 1);
    window.frame();
    for (auto _ : state) {
        const Stopwatch timer;
        window.scene().palettes.front()->upload();
        window.widget().requestFrame();
        window.widget().renderThread().wait();
        state.SetIterationTime(timer.seconds());
    }
    window.closeAll();
}
BENCHMARK(paletteEdit)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(10);

/// Encoding to the 2D target: filling the slice buffers, with the driver's time apart.
static void encode2D(benchmark::State& state)
{
    BenchWindow& window = benchWindow();
    const int depth = static_cast<int>(state.range(0));
    double upload = 0;
    for (auto _ : state) {
        const VoxelArray& array = window.show(512, 512, depth, 1);
        state.SetIterationTime(array.encodeTimes().fill);
        upload += array.encodeTimes().upload;
        window.closeAll();
    }
    // What is filled: each axis' textures, padding included.
    const std::int64_t padded = 256;
    const std::int64_t bytes = 512 * padded * 512 + 512 * padded * 512 + 512LL * 512 * depth;
    state.SetBytesProcessed(bytes * static_cast<std::int64_t>(state.iterations()));
    state.counters["driver_ms"] = upload * 1000 / static_cast<double>(state.iterations());
}
BENCHMARK(encode2D)->Arg(200)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);

} // namespace tirn::bench
